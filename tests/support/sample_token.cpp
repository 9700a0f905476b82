#include "tests/support/sample_token.h"

namespace Quillmark::test {

namespace {

Octets optional_element(std::uint8_t tag, const Octets& contents) {
    return contents.empty() ? Octets{} : element(tag, contents);
}

/// CN=A, serial 7.
Octets sample_issuer_and_serial() {
    const Octets attribute = sequence({element(0x06, "55 04 03"), text_element(0x0c, "A")});
    return sequence({sequence({element(0x31, attribute)}), element(0x02, "07")});
}

}  // namespace

Octets sample_signer(const TokenParts& parts) {
    const Octets rsa_encryption = sequence({element(0x06, "2a 86 48 86 f7 0d 01 01 01"), element(0x05, "")});
    return sequence({element(0x02, "01"),
                     parts.signer_identifier.empty() ? sample_issuer_and_serial() : parts.signer_identifier,
                     parts.digest_algorithm, optional_element(0xa0, parts.signed_attributes), rsa_encryption,
                     element(0x04, "de ad be ef"), optional_element(0xa1, parts.unsigned_attributes)});
}

Octets sample_tst_info(const Octets& optional) {
    return sequence({element(0x02, "01"), element(0x06, "2a 03"), sequence({kSha256, element(0x04, "aa bb")}),
                     element(0x02, "05"), text_element(0x18, "20240102030405.5Z"), optional});
}

Octets sample_token(const TokenParts& parts) {
    Octets signers;
    for (int i = 0; i < parts.signer_count; ++i) {
        signers = join({signers, sample_signer(parts)});
    }
    const Octets content = parts.with_content ? element(0xa0, element(0x04, parts.tst_info)) : Octets{};
    const Octets signed_data = sequence({element(0x02, "03"), element(0x31, parts.digest_algorithm),
                                         sequence({parts.content_type, content}),
                                         optional_element(0xa0, parts.certificates), element(0x31, signers)});
    const Octets signed_data_type = element(0x06, "2a 86 48 86 f7 0d 01 07 02");
    return sequence({signed_data_type, element(0xa0, signed_data)});
}

Octets sample_certificate(std::string_view contents) {
    return sequence({element(0x30, contents), kSha256, element(0x03, "00 de ad")});
}

}  // namespace Quillmark::test
