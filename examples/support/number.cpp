#include "number.h"

#include <algorithm>

#include <openssl/rand.h>

#include "failure.h"

namespace example {

Quillmark::ASN1::CBigInteger positive_number(const std::vector<unsigned char>& octets) {
    const auto first =
        std::find_if(octets.begin(), octets.end(), [](unsigned char octet) { return octet != 0; });
    std::vector<unsigned char> content(first, octets.end());
    // X.690 8.3: the top bit is the sign, and no octet more than that needs stands in front.
    if (content.empty() || (content.front() & 0x80) != 0) {
        content.insert(content.begin(), 0);
    }
    return Quillmark::ASN1::CBigInteger(content.data(), content.size());
}

std::vector<unsigned char> random_octets(std::size_t count) {
    std::vector<unsigned char> random(count);
    if (RAND_bytes(random.data(), static_cast<int>(count)) != 1) {
        throw Failure("libcrypto gave no random octets");
    }
    return random;
}

Quillmark::ASN1::CBigInteger random_number(unsigned int octets) {
    return positive_number(random_octets(octets));
}

}  // namespace example
