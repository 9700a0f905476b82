#include "platform/detail/der_fields.h"

#include "platform/detail/object_id.h"

namespace Quillmark::platform {

AlgorithmIdentifier read_algorithm(DerWalker& walker) {
    DerWalker fields(walker.next(kSequence));
    AlgorithmIdentifier algorithm{.oid = next_object_id(fields), .parameters = {}};
    if (!fields.at_end()) {
        algorithm.parameters = fields.next().whole;
    }
    fields.expect_end();
    return algorithm;
}

BitString read_bit_string(const Element& element) {
    const Octets content = element.content;
    // X.690 8.6.2: the first octet counts 0 to 7 unused bits, 0 when no other octet follows.
    if (content.empty() || content[0] > 7 || (content.size() == 1 && content[0] != 0)) {
        throw Failure{CRYPT_E_ASN1_CORRUPT};
    }
    return {.octets = content.subspan(1), .unused_bits = content[0]};
}

PublicKeyInfo read_public_key_info(DerWalker& walker) {
    DerWalker fields(walker.next(kSequence));
    PublicKeyInfo info;
    info.algorithm = read_algorithm(fields);
    info.key = read_bit_string(fields.next(kBitString));
    fields.expect_end();
    return info;
}

}  // namespace Quillmark::platform
