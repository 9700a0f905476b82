#pragma once

// A message handle's object. One update fills it; before that nothing can be asked, and after it the message
// never changes, so that any number of calls may run on it at once.

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include "platform/detail/handle_table.h"
#include "platform/detail/signed_data.h"
#include "platform/detail/signed_data_encode.h"

namespace Quillmark::platform {

/// Where a query writes: `CryptMsgGetParam`'s last two arguments.
class ParamOutput {
  public:
    ParamOutput(void* data, DWORD* size) : data_(static_cast<std::uint8_t*>(data)), size_(size) {}

    ErrorCode give(Octets value) const;
    ErrorCode give_count(std::size_t count) const;
    /// Nothing is there: a size of 0 with `code`.
    ErrorCode give_none(ErrorCode code) const;
    /// Announces `size` octets and gives the place for them in `place`, null when they are not to be written.
    /// The result is the answer of the query.
    ErrorCode reserve(std::size_t size, std::uint8_t*& place) const;

  private:
    std::uint8_t* data_;
    DWORD* size_;
};

class Message {
  public:
    Message() = default;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    /// Releases the provider handles that it holds.
    virtual ~Message();

    /// Provider handles of which one reference each goes with the message.
    void hold(std::vector<HCRYPTPROV> providers) { held_providers_ = std::move(providers); }

    /// All of the data at once, exactly one time.
    ErrorCode update(Octets data);
    ErrorCode get_param(DWORD type, DWORD index, const ParamOutput& output) const;
    ErrorCode verify(const CERT_INFO& certificate) const;

  private:
    enum class State { kOpen, kUpdating, kReady, kFailed };

    /// Makes the message of the data. A code other than success that is returned leaves a message that can be
    /// asked all the same; what is thrown leaves one that cannot.
    virtual ErrorCode take(Octets data) = 0;
    virtual ErrorCode answer(DWORD type, DWORD index, const ParamOutput& output) const = 0;
    /// Null in a message without signatures.
    virtual const SignedData* signed_data() const = 0;

    bool is_ready() const { return state_.load(std::memory_order_acquire) == State::kReady; }

    std::atomic<State> state_{State::kOpen};
    std::vector<HCRYPTPROV> held_providers_;
};

/// A SignedData that is being made, and the finished one.
class EncodedMessage final : public Message {
  public:
    explicit EncodedMessage(SignedDataEncoder encoder) : encoder_(std::move(encoder)) {}

  private:
    ErrorCode take(Octets data) override;
    ErrorCode answer(DWORD type, DWORD index, const ParamOutput& output) const override;
    const SignedData* signed_data() const override { return &signed_data_; }

    std::optional<SignedDataEncoder> encoder_;  // until the update
    std::optional<DerWriter> encoded_;
    SignedData signed_data_;  // points into `encoded_`
};

/// A message that was received.
class DecodedMessage final : public Message {
  private:
    ErrorCode take(Octets data) override;
    ErrorCode answer(DWORD type, DWORD index, const ParamOutput& output) const override;
    ErrorCode answer_plain(DWORD type, const ParamOutput& output) const;
    const SignedData* signed_data() const override {
        return message_.signed_data ? &*message_.signed_data : nullptr;
    }

    Bytes received_;
    ReadMessage message_;  // points into `received_`
};

/// The message handles.
extern HandleTable<Message> messages;

}  // namespace Quillmark::platform
