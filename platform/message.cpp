// The functions of the interface on message handles.

#include "platform/detail/message.h"

#include "platform/detail/border.h"
#include "platform/detail/crypto_pointer.h"
#include "platform/detail/verify.h"

namespace Quillmark::platform {

namespace {

constexpr std::uint64_t kMessageHandle = 1;

}  // namespace

constinit HandleTable<Message> messages{kMessageHandle};

Message::~Message() {
    for (const HCRYPTPROV handle : held_providers_) {
        key_containers.release(handle);
    }
}

ErrorCode Message::update(Octets data) {
    State expected = State::kOpen;
    if (!state_.compare_exchange_strong(expected, State::kUpdating, std::memory_order_acq_rel)) {
        return CRYPT_E_MSG_ERROR;
    }
    bool taken = false;
    const ErrorCode code = outcome([&] {
        const ErrorCode result = take(data);
        taken = true;
        return result;
    });
    state_.store(taken ? State::kReady : State::kFailed, std::memory_order_release);
    return code;
}

ErrorCode Message::get_param(DWORD type, DWORD index, const ParamOutput& output) const {
    return is_ready() ? answer(type, index, output) : CRYPT_E_MSG_ERROR;
}

ErrorCode Message::verify(const CERT_INFO& certificate) const {
    if (!is_ready()) {
        return CRYPT_E_MSG_ERROR;
    }
    if (signed_data() == nullptr) {
        return CRYPT_E_INVALID_MSG_TYPE;
    }
    verify_signature(*signed_data(), certificate);
    return ERROR_SUCCESS;
}

ErrorCode EncodedMessage::take(Octets data) {
    const std::optional<SignedDataEncoder> encoder = std::exchange(encoder_, std::nullopt);
    const LibcryptoScope scope;
    encoded_ = encoder->build(data);
    if (encoded_->size() > 0xFFFFFFFFu) {
        throw Failure{CRYPT_E_ASN1_LARGE};
    }
    signed_data_ = *read_message(encoded_->written()).signed_data;
    return ERROR_SUCCESS;
}

ErrorCode DecodedMessage::take(Octets data) {
    received_.assign(data.begin(), data.end());
    message_ = read_message(received_);
    if (message_.signed_data) {
        for (const SignerInfo& signer : message_.signed_data->signers) {
            if (!find_digest(signer.digest_algorithm.oid)) {
                // Only this signer cannot be verified; the message can be read.
                return CRYPT_E_UNKNOWN_ALGO;
            }
        }
    }
    return ERROR_SUCCESS;
}

namespace {

std::uint64_t number(HCRYPTMSG handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

HCRYPTMSG handle_of(std::uint64_t number) {
    return reinterpret_cast<HCRYPTMSG>(static_cast<std::uintptr_t>(number));
}

// The caller keeps its provider references when opening fails, so the message gets them when nothing can fail
// any more.
HCRYPTMSG add_message(const std::shared_ptr<Message>& message, std::vector<HCRYPTPROV> providers) {
    const std::uint64_t handle = messages.add(message);
    message->hold(std::move(providers));
    return handle_of(handle);
}

void check_encoding_type(DWORD encoding_type) {
    if ((encoding_type & PKCS_7_ASN_ENCODING) == 0) {
        throw Failure{E_INVALIDARG};
    }
}

// Flags that are not known are ignored here.
void check_open_to_encode(DWORD encoding_type, DWORD flags, DWORD type, const void* info,
                          const void* stream) {
    check_encoding_type(encoding_type);
    if (type != CMSG_SIGNED) {
        throw Failure{CRYPT_E_INVALID_MSG_TYPE};
    }
    if ((flags & CMSG_DETACHED_FLAG) != 0) {
        throw Failure{E_NOTIMPL};
    }
    if (info == nullptr || stream != nullptr) {
        throw Failure{E_INVALIDARG};
    }
}

void check_open_to_decode(DWORD encoding_type, DWORD flags, DWORD type, const void* recipient,
                          const void* stream) {
    check_encoding_type(encoding_type);
    if ((flags & CMSG_DETACHED_FLAG) != 0) {
        throw Failure{E_NOTIMPL};
    }
    if ((flags & ~CMSG_CRYPT_RELEASE_CONTEXT_FLAG) != 0) {
        throw Failure{NTE_BAD_FLAGS};
    }
    if (type > CMSG_SIGNED) {
        throw Failure{CRYPT_E_INVALID_MSG_TYPE};
    }
    if (recipient != nullptr || stream != nullptr) {
        throw Failure{E_INVALIDARG};
    }
}

std::vector<HCRYPTPROV> providers_of(const CMSG_SIGNED_ENCODE_INFO& info) {
    std::vector<HCRYPTPROV> handles;
    const CMSG_SIGNER_ENCODE_INFO* signer = info.rgSigners;
    for (DWORD i = 0; i < info.cSigners; ++i, signer = next_record(signer)) {
        handles.push_back(signer->hCryptProv);
    }
    return handles;
}

}  // namespace

}  // namespace Quillmark::platform

using namespace Quillmark::platform;

HCRYPTMSG CryptMsgOpenToEncode(DWORD dwMsgEncodingType, DWORD dwFlags, DWORD dwMsgType,
                               const void* pvMsgEncodeInfo, LPSTR pszInnerContentObjID,
                               PCMSG_STREAM_INFO pStreamInfo) {
    HCRYPTMSG handle = nullptr;
    answer([&] {
        check_open_to_encode(dwMsgEncodingType, dwFlags, dwMsgType, pvMsgEncodeInfo, pStreamInfo);
        const auto& info = *static_cast<const CMSG_SIGNED_ENCODE_INFO*>(pvMsgEncodeInfo);
        const LibcryptoScope scope;
        auto message =
            std::make_shared<EncodedMessage>(SignedDataEncoder(dwFlags, info, pszInnerContentObjID));
        const bool release = (dwFlags & CMSG_CRYPT_RELEASE_CONTEXT_FLAG) != 0;
        handle = add_message(message, release ? providers_of(info) : std::vector<HCRYPTPROV>{});
        return ERROR_SUCCESS;
    });
    return handle;
}

HCRYPTMSG CryptMsgOpenToDecode(DWORD dwMsgEncodingType, DWORD dwFlags, DWORD dwMsgType, HCRYPTPROV hCryptProv,
                               PCERT_INFO pRecipientInfo, PCMSG_STREAM_INFO pStreamInfo) {
    HCRYPTMSG handle = nullptr;
    answer([&] {
        check_open_to_decode(dwMsgEncodingType, dwFlags, dwMsgType, pRecipientInfo, pStreamInfo);
        const bool release = (dwFlags & CMSG_CRYPT_RELEASE_CONTEXT_FLAG) != 0 && hCryptProv != 0;
        handle = add_message(std::make_shared<DecodedMessage>(),
                             release ? std::vector{hCryptProv} : std::vector<HCRYPTPROV>{});
        return ERROR_SUCCESS;
    });
    return handle;
}

BOOL CryptMsgUpdate(HCRYPTMSG hCryptMsg, const BYTE* pbData, DWORD cbData, BOOL fFinal) {
    return answer([&] {
        const auto message = messages.pin(number(hCryptMsg));
        if (!message) {
            return ERROR_INVALID_HANDLE;
        }
        if (pbData == nullptr && cbData != 0) {
            return E_INVALIDARG;
        }
        return fFinal == 0 ? CRYPT_E_MSG_ERROR : message->update({pbData, cbData});
    });
}

BOOL CryptMsgGetParam(HCRYPTMSG hCryptMsg, DWORD dwParamType, DWORD dwIndex, void* pvData, DWORD* pcbData) {
    return answer([&] {
        const auto message = messages.pin(number(hCryptMsg));
        if (!message) {
            return ERROR_INVALID_HANDLE;
        }
        if (pcbData == nullptr) {
            return E_INVALIDARG;
        }
        return message->get_param(dwParamType, dwIndex, ParamOutput(pvData, pcbData));
    });
}

BOOL CryptMsgControl(HCRYPTMSG hCryptMsg, DWORD, DWORD dwCtrlType, const void* pvCtrlPara) {
    return answer([&] {
        const auto message = messages.pin(number(hCryptMsg));
        if (!message) {
            return ERROR_INVALID_HANDLE;
        }
        if (dwCtrlType != CMSG_CTRL_VERIFY_SIGNATURE) {
            return CRYPT_E_CONTROL_TYPE;
        }
        if (pvCtrlPara == nullptr) {
            return E_INVALIDARG;
        }
        return message->verify(*static_cast<const CERT_INFO*>(pvCtrlPara));
    });
}

HCRYPTMSG CryptMsgDuplicate(HCRYPTMSG hCryptMsg) {
    HCRYPTMSG handle = nullptr;
    answer([&] {
        const auto message = messages.pin(number(hCryptMsg));
        if (!message) {
            return ERROR_INVALID_HANDLE;
        }
        // Intended: not the same handle once more, so that a holder that closes twice does not take the
        // message from another.
        handle = handle_of(messages.add(message.shared()));
        return ERROR_SUCCESS;
    });
    return handle;
}

BOOL CryptMsgClose(HCRYPTMSG hCryptMsg) {
    return hCryptMsg == nullptr ? 1 : answer([&] { return messages.release(number(hCryptMsg)); });
}
