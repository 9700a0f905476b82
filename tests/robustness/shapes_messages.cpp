#include "tests/robustness/shapes_messages.h"

namespace Quillmark::test {
namespace {

Octets tagged_unless_empty(std::uint8_t tag, const Octets& contents) {
    return contents.empty() ? Octets{} : wrap(tag, contents);
}

}  // namespace

Octets request_with(const Octets& rest, const Octets& hash) {
    return wrap(0x30, join({element(0x02, "01"), wrap(0x30, join({kSha256, hash})), rest}));
}

Octets tst_info_with(const Octets& rest, const Octets& gen_time) {
    return wrap(
        0x30, join({element(0x02, "01"), element(0x06, "2a 03"), sequence({kSha256, element(0x04, "aa bb")}),
                    element(0x02, "05"), gen_time, rest}));
}

Octets token_of(const Token& parts) {
    const Octets encapsulated = wrap(0x30, join({parts.type, wrap(0xa0, parts.content)}));
    const Octets signed_data =
        wrap(0x30, join({element(0x02, "03"), element(0x31, kSha256), encapsulated,
                         tagged_unless_empty(0xa0, parts.certificates),
                         tagged_unless_empty(0xa1, parts.revocation_lists), wrap(0x31, parts.signers)}));
    return wrap(0x30, join({element(0x06, "2a 86 48 86 f7 0d 01 07 02"), wrap(0xa0, signed_data)}));
}

Octets attribute_of(const Octets& values, const Octets& type) {
    return wrap(0x30, join({type, wrap(0x31, values)}));
}

Octets signer_with(const Octets& signed_attributes, const Octets& unsigned_attributes) {
    const Octets issuer_and_serial = element(0x30, "30 00 02 01 09");
    const Octets rsa_encryption = sequence({element(0x06, "2a 86 48 86 f7 0d 01 01 01"), element(0x05, "")});
    return wrap(0x30, join({element(0x02, "01"), issuer_and_serial, kSha256,
                            tagged_unless_empty(0xa0, signed_attributes), rsa_encryption,
                            element(0x04, "de ad be ef"), tagged_unless_empty(0xa1, unsigned_attributes)}));
}

Octets response_of(const Octets& token, const Octets& status) {
    return wrap(0x30, join({status, token}));
}

Octets name_around(const Octets& token) {
    const Octets type = element(0x06, "2a 86 48 86 f7 0d 01 09 10 02 0e");
    return wrap(0x30, wrap(0x31, wrap(0x30, join({type, token}))));
}

Octets tokens_in_names(std::size_t levels, Octets token) {
    for (; levels != 0; --levels) {
        const Octets authority = wrap(0xa0, wrap(0xa4, name_around(token)));
        token = token_of({.content = wrap(0x04, tst_info_with(authority))});
    }
    return token;
}

Octets certificate_of(const CertificateParts& parts) {
    const Octets time = text_element(0x17, "240102030405Z");
    const Octets to_be_signed =
        wrap(0x30, join({element(0xa0, "02 01 02"), parts.serial, kSha256, parts.issuer,
                         sequence({time, time}), element(0x30, ""), wrap(0x30, join({kSha256, parts.key})),
                         parts.extensions.empty() ? Octets{} : wrap(0xa3, wrap(0x30, parts.extensions))}));
    return wrap(0x30, join({to_be_signed, kSha256, element(0x03, "00 aa")}));
}

}  // namespace Quillmark::test
