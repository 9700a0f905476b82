#include <cstdio>

#include "platform/cryptoapi.h"
#include "tsp/token.h"

using namespace Quillmark;

int main() try {
    CBlob certificate, hash, serial;
    certificate.readFromFile("tsa.der");
    hash.readFromHexString(
        "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");  // SHA-256 of "abc"
    serial.readFromHexString("2A");
    HCRYPTPROV key = 0;
    if (!CryptAcquireContextA(&key, "tsa.key", nullptr, PROV_RSA_AES, CRYPT_SILENT)) {
        throw CAtlException(HRESULT_FROM_WIN32(GetLastError()));
    }
    const ASN1::CAlgorithmIdentifierEx sha256("2.16.840.1.101.3.4.2.1");
    const ASN1::CBigInteger number(serial.pbData(), serial.cbData());
    PKI::TSP::CToken stamp("2.999.1", sha256, hash, number, CDateTime::Now(), false);
    stamp.sign(key, AT_SIGNATURE, certificate, sha256);
    CryptReleaseContext(key, 0);

    PKI::TSP::CToken received;
    received.decode(stamp.encode());
    const bool holds = received.verify(certificate);
    std::printf("stamped %s UTC, signature %s\n", received.get_genTime().tostring().c_str(),
                holds ? "holds" : "broken");
    return holds ? 0 : 1;
} catch (const CAtlException& failure) {
    std::fprintf(stderr, "one_stamp: %s\n", result_name(failure));
    return 1;
}
