// Queries on messages.

#include <algorithm>

#include "platform/detail/attribute_block.h"
#include "platform/detail/message.h"
#include "platform/detail/object_id.h"
#include "platform/detail/verify.h"

namespace Quillmark::platform {

namespace {

ErrorCode give_indexed(const std::vector<Octets>& elements, DWORD index, const ParamOutput& output) {
    return index < elements.size() ? output.give(elements[index]) : CRYPT_E_INVALID_INDEX;
}

ErrorCode give_text(Octets oid, const ParamOutput& output) {
    std::uint8_t* place = nullptr;
    const ErrorCode code = output.reserve(object_id_text_size(oid) + 1, place);
    if (place != nullptr) {
        write_object_id_text(oid, reinterpret_cast<char*>(place));
    }
    return code;
}

ErrorCode give_attributes(const std::optional<Element>& attributes, const ParamOutput& output) {
    if (!attributes) {
        return output.give_none(CRYPT_E_ATTRIBUTES_MISSING);
    }
    std::uint8_t* place = nullptr;
    const ErrorCode code = output.reserve(attribute_block_size(*attributes), place);
    if (place != nullptr) {
        write_attribute_block(*attributes, place);
    }
    return code;
}

// Parameters of one signer.
ErrorCode give_of_signer(const SignedData& data, DWORD type, DWORD index, const ParamOutput& output) {
    if (index >= data.signers.size()) {
        return CRYPT_E_INVALID_INDEX;
    }
    const SignerInfo& signer = data.signers[index];
    switch (type) {
        case CMSG_SIGNER_AUTH_ATTR_PARAM:
            return give_attributes(signer.signed_attributes, output);
        case CMSG_SIGNER_UNAUTH_ATTR_PARAM:
            return give_attributes(signer.unsigned_attributes, output);
        case CMSG_COMPUTED_HASH_PARAM:
            return output.give(computed_hash(data, signer));
        default:
            return output.give(signer.whole);
    }
}

}  // namespace

ErrorCode ParamOutput::reserve(std::size_t size, std::uint8_t*& place) const {
    if (size > 0xFFFFFFFFu) {
        return CRYPT_E_ASN1_LARGE;
    }
    const DWORD room = *size_;
    *size_ = static_cast<DWORD>(size);
    if (data_ == nullptr) {
        return ERROR_SUCCESS;
    }
    if (room < size) {
        return ERROR_MORE_DATA;
    }
    place = data_;
    return ERROR_SUCCESS;
}

ErrorCode ParamOutput::give(Octets value) const {
    std::uint8_t* place = nullptr;
    const ErrorCode code = reserve(value.size(), place);
    if (place != nullptr) {
        std::copy(value.begin(), value.end(), place);
    }
    return code;
}

ErrorCode ParamOutput::give_count(std::size_t count) const {
    const auto number = static_cast<DWORD>(count);  // of elements in an input whose size is a DWORD
    return give({reinterpret_cast<const std::uint8_t*>(&number), sizeof(number)});
}

ErrorCode ParamOutput::give_none(ErrorCode code) const {
    *size_ = 0;
    return code;
}

// The published interface has content, bare content, computed hash and encoded signer for a message being
// encoded. The signer count is given too, so that a message just signed can be looked at without a round
// through its encoding.
ErrorCode EncodedMessage::answer(DWORD type, DWORD index, const ParamOutput& output) const {
    switch (type) {
        case CMSG_CONTENT_PARAM:
            return output.give(encoded_->written());
        case CMSG_BARE_CONTENT_PARAM:
            return output.give(signed_data_.whole);
        case CMSG_SIGNER_COUNT_PARAM:
            return output.give_count(signed_data_.signers.size());
        case CMSG_COMPUTED_HASH_PARAM:
        case CMSG_ENCODED_SIGNER:
            return give_of_signer(signed_data_, type, index, output);
        default:
            return CRYPT_E_INVALID_MSG_TYPE;
    }
}

ErrorCode DecodedMessage::answer_plain(DWORD type, const ParamOutput& output) const {
    switch (type) {
        case CMSG_TYPE_PARAM:
            return output.give_count(CMSG_DATA);
        case CMSG_CONTENT_PARAM:
            return output.give(message_.plain_data->content);
        default:
            return CRYPT_E_INVALID_MSG_TYPE;
    }
}

ErrorCode DecodedMessage::answer(DWORD type, DWORD index, const ParamOutput& output) const {
    if (!message_.signed_data) {
        return answer_plain(type, output);
    }
    const SignedData& data = *message_.signed_data;
    switch (type) {
        case CMSG_TYPE_PARAM:
            return output.give_count(CMSG_SIGNED);
        case CMSG_CONTENT_PARAM:
            return output.give(data.content);
        case CMSG_INNER_CONTENT_TYPE_PARAM:
            return give_text(data.inner_type, output);
        case CMSG_SIGNER_COUNT_PARAM:
            return output.give_count(data.signers.size());
        case CMSG_CERT_COUNT_PARAM:
            return output.give_count(data.certificates.size());
        case CMSG_CERT_PARAM:
            return give_indexed(data.certificates, index, output);
        case CMSG_CRL_COUNT_PARAM:
            return output.give_count(data.crls.size());
        case CMSG_CRL_PARAM:
            return give_indexed(data.crls, index, output);
        case CMSG_SIGNER_AUTH_ATTR_PARAM:
        case CMSG_SIGNER_UNAUTH_ATTR_PARAM:
        case CMSG_COMPUTED_HASH_PARAM:
        case CMSG_ENCODED_SIGNER:
            return give_of_signer(data, type, index, output);
        default:
            return CRYPT_E_INVALID_MSG_TYPE;
    }
}

}  // namespace Quillmark::platform
