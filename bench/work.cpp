#include "bench/work.h"

#include "bench/sides.h"

namespace Quillmark::bench {

const Bytes& imprint() {
    static const Bytes value = [] {
        Bytes octets(32);
        for (std::size_t i = 0; i < octets.size(); ++i) {
            octets[i] = static_cast<std::uint8_t>(0x9D + 37 * i);
        }
        return octets;
    }();
    return value;
}

const Bytes& extension_value() {
    static const Bytes value = {0x04, 0x08, 0x62, 0x65, 0x6E, 0x63, 0x68, 0x2D, 0x30, 0x31};
    return value;
}

const Bytes& nonce() {
    static const Bytes value = {0x5A, 0x11, 0x8F, 0x02, 0xC3, 0x74, 0xE6, 0xB9};
    return value;
}

const Bytes& request() {
    static const Bytes value = openssl::make_request();
    return value;
}

const Bytes& response(KeyKind kind) {
    static const Bytes p256 = openssl::answer(KeyKind::P256, request());
    static const Bytes rsa = openssl::answer(KeyKind::Rsa2048, request());
    return kind == KeyKind::P256 ? p256 : rsa;
}

}  // namespace Quillmark::bench
