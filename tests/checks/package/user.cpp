// A program that has nothing but the installed library.

#include "tsp/request.h"

int main() {
    using namespace Quillmark;
    const unsigned char hash[32] = {};
    const PKI::TSP::CRequest request(ASN1::CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1"),
                                     CBlob(hash, sizeof hash), true);
    PKI::TSP::CRequest received;
    received.decode(request.encode());
    return received.get_certReq() ? 0 : 1;
}
