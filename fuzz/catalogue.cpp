// Every type of the catalogue; the first two octets choose it. What is decoded can be encoded; that encoding
// is decoded to a record which encodes to the same octets; and so does a copy on another heap. What is
// refused can be freed all the same.

#include <memory>

#include "fuzz/ber_form.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "tests/asn1data/catalogue_type.h"

namespace Quillmark::fuzz {

namespace {

using test::AnyRecord;
using test::CatalogueType;

class Decoded {
  public:
    Decoded(const CatalogueType& type, Octets octets)
        : octets_(octets.begin(), octets.end()),
          buffer_(octets_.data(), static_cast<int>(octets_.size())),
          record_(type),
          control_(control_of(type, buffer_, record_.get())),
          status_(control_->Decode()) {}

    int status() const { return status_; }
    void* record() const { return record_.get(); }
    ASN1CTXT* context() { return buffer_.getCtxtPtr(); }

  private:
    std::vector<std::uint8_t> octets_;  // of exactly its size
    ASN1BERDecodeBuffer buffer_;
    AnyRecord record_;
    std::unique_ptr<ASN1CType> control_;
    int status_;
};

struct Encoded {
    int status;
    std::vector<std::uint8_t> octets;
};

Encoded encode(const CatalogueType& type, void* record) {
    ASN1BEREncodeBuffer buffer;
    const int length = control_of(type, buffer, record)->Encode();
    if (length < 0) {
        return {length, {}};
    }
    return {length, std::vector<std::uint8_t>(buffer.getMsgPtr(), buffer.getMsgPtr() + length)};
}

void check_copy(const CatalogueType& type, Decoded& decoded, const Encoded& first) {
    ASN1BEREncodeBuffer other;
    const AnyRecord copy(type);
    type.copy(other.getCtxtPtr(), decoded.record(), copy.get());
    const Encoded of_copy = encode(type, copy.get());
    require(of_copy.status == first.status && of_copy.octets == first.octets, "a copy encodes as its source");
    type.free(other.getCtxtPtr(), copy.get());
}

void require_of(const CatalogueType& type, bool holds, const char* law, int status) {
    if (!holds) {
        broken(std::string(type.name) + ": " + law + ", status " + std::to_string(status));
    }
}

/// Intended: of RSASSA-PSS-params numbers that are absent are left as they were, and a new record has 0
/// there, which is written. So what is left out as a default does not come back.
bool fills_in_defaults(const CatalogueType& type) {
    return type.name != std::string("RSASSA_PSS_params");
}

}  // namespace

std::vector<std::string> catalogue_choices() {
    std::vector<std::string> names;
    for (const CatalogueType& type : test::catalogue_types()) {
        names.emplace_back(type.name);
    }
    return names;
}

void check_catalogue(Octets octets) {
    Input input(octets);
    const auto types = test::catalogue_types();
    const CatalogueType& type = types[input.choice(types.size())];
    const Octets ber = input.rest();
    Decoded decoded(type, ber);
    require(decoded.status() <= 0, "a decoder returns 0 or a negative status");
    if (decoded.status() != RT_OK) {
        type.free(decoded.context(), decoded.record());
        return;
    }
    const Encoded first = encode(type, decoded.record());
    check_copy(type, decoded, first);
    type.free(decoded.context(), decoded.record());
    const bool whole = is_whole(ber);
    if (first.status < 0) {
        require_of(type, !whole, "what was decoded can be encoded", first.status);
        return;
    }
    Decoded again(type, first.octets);
    if (whole) {
        require_of(type, again.status() == RT_OK, "what was encoded can be decoded", again.status());
        require_of(type, encode(type, again.record()).octets == first.octets || !fills_in_defaults(type),
                   "what was encoded is encoded as before", 0);
    }
}

}  // namespace Quillmark::fuzz
