#pragma once

// A stamp of the Authenticode exchange over AA BB, signed with the P-256 key of the tests.

#include "tests/support/blob.h"
#include "tests/support/test_keys.h"
#include "tsp/cms_stamp.h"

namespace Quillmark::test {

inline constexpr char kSha256Oid[] = "2.16.840.1.101.3.4.2.1";

inline const CDateTime kStampTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u);

inline PKI::TSP::CMSStamp unsigned_stamp() {
    return PKI::TSP::CMSStamp(blob("04 02 aa bb"), kStampTime);
}

inline void sign(PKI::TSP::CMSStamp& stamp, HCRYPTPROV provider) {
    stamp.sign(provider, AT_SIGNATURE, certificate("tsa_p256"), ASN1::CAlgorithmIdentifierEx(kSha256Oid));
}

inline PKI::TSP::CMSStamp signed_stamp() {
    PKI::TSP::CMSStamp stamp = unsigned_stamp();
    const TestKey key("tsa_p256");
    sign(stamp, key.provider());
    return stamp;
}

inline bool verifies(const PKI::TSP::CMSStamp& stamp) {
    return stamp.verify(certificate("tsa_p256"));
}

}  // namespace Quillmark::test
