// Fields of any kind, signed, read and verified. What can be signed is read with the same fields, verifies,
// and does not verify with one bit of what is signed flipped. A stamp of the other exchange alike.

#include <algorithm>

#include "asn1/name.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "platform/cryptoapi.h"
#include "tsp/cms_stamp.h"
#include "tsp/token.h"

namespace Quillmark::fuzz {

namespace {

using namespace PKI::TSP;
using namespace ASN1;

constexpr Codes kSign = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG, CRYPT_E_OID_FORMAT};

/// The test key and its certificate, opened once.
struct Authority {
    Authority() {
        certificate.readFromFile(QUILLMARK_TEST_PKI "/tsa_p256.der");
        require(CryptAcquireContextA(&provider, QUILLMARK_TEST_PKI "/tsa_p256.key", nullptr, PROV_RSA_AES,
                                     CRYPT_SILENT) != 0,
                "the test key opens");
    }
    CBlob certificate;
    HCRYPTPROV provider = 0;
};

const Authority& authority() {
    static const Authority opened;
    return opened;
}

const CAlgorithmIdentifierEx& sha256() {
    static const CAlgorithmIdentifierEx algorithm("2.16.840.1.101.3.4.2.1");
    return algorithm;
}

CAlgorithmIdentifierEx algorithm_of(Input& input) {
    if (input.flag()) {
        return sha256();
    }
    CAlgorithmIdentifierEx algorithm(input.text().c_str());
    algorithm.put_parameters(input.blob());
    return algorithm;
}

/// A time that the platform's calendar has.
CDateTime time_of(Input& input) {
    constexpr long long kFirst = -11'644'473'600;  // 1601 in Unix seconds
    constexpr long long kSpan = 265'000'000'000;   // to about the year 9998, so that the text has four digits
    const auto seconds = kFirst + static_cast<long long>(input.number64() % kSpan);
    return CDateTime(seconds, input.number(4) % 1'000'000);
}

CBigInteger integer_of(Input& input) {
    const Octets octets = input.octets();
    return CBigInteger(octets.data(), octets.size());
}

CGeneralName general_name_of(Input& input) {
    CGeneralName name;
    switch (input.octet() % 4) {
        case 0: {
            CName directory;
            directory.push_back(CRelativeDistinguishedName(L"CN=Authority"));
            name.put_directoryName(directory.encode());
            break;
        }
        case 1:
            name.put_directoryName(input.blob());
            break;
        case 2:
            name.put_iPAddress(input.blob());
            break;
        default:
            name.put_uniformResourceIdentifier(towstring(input.text().c_str()).c_str());
    }
    return name;
}

CAttributes attributes_of(Input& input) {
    CAttributes attributes;
    for (unsigned left = input.octet() % 4; left != 0; --left) {
        CAttribute attribute(input.text().c_str());
        for (unsigned values = input.octet() % 3; values != 0; --values) {
            attribute.add(input.flag() ? toOctetString(input.blob()) : input.blob());
        }
        attributes.push_back(attribute);
    }
    return attributes;
}

CToken token_of(Input& input) {
    const std::string policy = input.flag() ? "2.999.1" : input.text();
    const CAlgorithmIdentifierEx algorithm = algorithm_of(input);
    const CBlob hash = input.blob();
    const CBigInteger serial = integer_of(input);
    const CDateTime time = time_of(input);
    const unsigned options = input.octet();
    CToken token(policy.c_str(), algorithm, hash, serial, time, (options & 1) != 0);
    if ((options & 2) != 0) {
        const CAccuracy accuracy{input.number(4), input.number(2), input.number(2)};
        token.put_accuracy(&accuracy);
    }
    if ((options & 4) != 0) {
        const CBigInteger nonce = integer_of(input);
        token.put_nonce(&nonce);
    }
    if ((options & 8) != 0) {
        const CGeneralName name = general_name_of(input);
        token.put_tsa(&name);
    }
    if ((options & 16) != 0) {
        CExtensions extensions;
        extensions.push_back(CExtension(CExtValue(input.text().c_str(), input.blob()), input.flag()));
        token.put_extensions(&extensions);
    }
    if ((options & 32) != 0) {
        const CAttributes attributes = attributes_of(input);
        token.put_signedAttributes(&attributes);
    }
    if ((options & 64) != 0) {
        const CAttributes attributes = attributes_of(input);
        token.put_unsignedAttributes(&attributes);
    }
    if ((options & 128) != 0) {
        const CBlobList certificates = {authority().certificate};
        token.put_certificates(&certificates);
    }
    return token;
}

template <class Value>
bool same(const Value* one, const Value* other) {
    return (one == nullptr) == (other == nullptr) && (one == nullptr || *one == *other);
}

/// Intended: a number without octets is written as 0.
bool same_number(const CBigInteger* made, const CBigInteger* received) {
    if (made != nullptr && received != nullptr && made->cbData() == 0) {
        return *received == CBigInteger(1);
    }
    return same(made, received);
}

void require_same_fields(const CToken& made, const CToken& received) {
    require(made.get_version() == received.get_version(), "the version comes back");
    require(toASN1OBJID(made.get_policy()) == toASN1OBJID(received.get_policy()), "the policy comes back");
    require(made.get_hashedMessage() == received.get_hashedMessage(), "the hash comes back");
    require(made.get_genTime() == received.get_genTime(), "the time comes back");
    require(made.get_ordering() == received.get_ordering(), "the ordering comes back");
    require(same(made.get_accuracy(), received.get_accuracy()), "the accuracy comes back");
    require(same_number(made.get_nonce(), received.get_nonce()), "the nonce comes back");
    require((made.get_tsa() == nullptr) == (received.get_tsa() == nullptr),
            "the authority's name comes back");
    require(same_number(&made.get_serialNumber(), &received.get_serialNumber()),
            "the serial number comes back");
}

/// What is signed of a message whose content is `part`, with one bit of it flipped.
CBlob with_a_bit_flipped(const CBlob& message, const CBlob& part, Input& input) {
    CBlob flipped(message);
    std::uint8_t* const first = flipped.pbData();
    std::uint8_t* const end = first + flipped.cbData();
    std::uint8_t* const found = std::search(first, end, part.pbData(), part.pbData() + part.cbData());
    require(found != end && part.cbData() != 0, "the content is in the message");
    found[input.number(2) % part.cbData()] ^= static_cast<std::uint8_t>(1u << input.octet() % 8);
    return flipped;
}

/// Whether octets are read as a message that verifies.
template <class Message>
bool verifies(const CBlob& octets) {
    Message received;
    try {
        received.decode(octets);
        return received.verify(authority().certificate);
    } catch (const CAtlException&) {
        return false;
    }
}

/// The TSTInfo of a token: what it encodes as once a field was put after reading.
CBlob content_of(CToken token) {
    token.put_nonce(std::unique_ptr<CBigInteger>(
                        token.get_nonce() != nullptr ? new CBigInteger(*token.get_nonce()) : nullptr)
                        .get());
    return token.encode();
}

void check_token_signing(Input& input) {
    CToken token = token_of(input);
    if (attempt("sign", kSign, [&] {
            token.sign(authority().provider, AT_SIGNATURE, authority().certificate, sha256());
        }) != S_OK) {
        return;
    }
    CBlob message;
    must("encode", [&] { message = token.encode(); });
    CToken received;
    must("decoding what was signed", [&] { received.decode(message); });
    must("comparing", [&] { require_same_fields(token, received); });
    must("verify", [&] { require(received.verify(authority().certificate), "what was signed verifies"); });
    must("flipping", [&] {
        require(!verifies<CToken>(with_a_bit_flipped(message, content_of(received), input)),
                "a flipped bit does not verify");
    });
}

/// YYYYMMDDHHMMSS
std::string to_seconds(const CDateTime& time) {
    return std::string(time.getGeneralizedTime().c_str()).substr(0, 14);
}

constexpr unsigned kFirstYear = 1950;  // of a UTCTime (RFC 5280 4.1.2.5.1)

void check_stamp_signing(Input& input) {
    const CDateTime time = time_of(input);
    CBlob octets = input.blob();
    const CBlob content = input.flag() ? octets : toOctetString(octets);
    CMSStamp stamp(content, time);
    if (attempt("sign", kSign, [&] {
            stamp.sign(authority().provider, AT_SIGNATURE, authority().certificate, sha256());
        }) != S_OK) {
        return;
    }
    const CBlob message = stamp.encode();
    CMSStamp received;
    must("decoding what was signed", [&] { received.decode(message); });
    must("comparing", [&] {
        require(fromOctetString(received.get_content()) == fromOctetString(content),
                "the content comes back");
        // Intended: an earlier year is written with two digits, too.
        require(time.year() < kFirstYear || to_seconds(received.get_signingTime()) == to_seconds(time),
                "the time comes back in seconds");
    });
    must("verify", [&] { require(received.verify(authority().certificate), "what was signed verifies"); });
    const CBlob signed_octets = fromOctetString(content);
    if (signed_octets.cbData() >= 8) {  // so that they are found where they should
        must("flipping", [&] {
            require(!verifies<CMSStamp>(with_a_bit_flipped(message, signed_octets, input)),
                    "a flipped bit does not verify");
        });
    }
}

}  // namespace

void check_signing(Octets octets) {
    Input input(octets);
    if (input.flag()) {
        check_stamp_signing(input);
    } else {
        check_token_signing(input);
    }
}

}  // namespace Quillmark::fuzz
