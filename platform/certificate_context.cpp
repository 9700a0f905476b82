// Certificate contexts: one walk over the certificate (RFC 5280 4.1) and one heap block that holds context,
// CERT_INFO, extensions, a copy of the encoding that the blobs point into, and the texts of the OIDs.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "platform/detail/border.h"
#include "platform/detail/der_fields.h"
#include "platform/detail/file_time.h"
#include "platform/detail/object_id.h"

namespace Quillmark::platform {

namespace {

struct Extension {
    Octets oid;
    bool critical = false;
    Octets value = {};
};

struct Certificate {
    DWORD version = 0;
    Octets serial_number;
    AlgorithmIdentifier signature_algorithm;
    Octets issuer;
    FILETIME not_before{};
    FILETIME not_after{};
    Octets subject;
    PublicKeyInfo public_key;
    BitString issuer_unique_id;
    BitString subject_unique_id;
    std::vector<Extension> extensions;
};

bool is_digit(std::uint8_t octet) {
    return octet >= '0' && octet <= '9';
}

unsigned two_digits(Octets text, std::size_t at) {
    return (text[at] - '0') * 10u + (text[at + 1] - '0');
}

// RFC 5280 4.1.2.5: YYMMDDHHMMSSZ (years 1950 to 2049) or YYYYMMDDHHMMSSZ.
FILETIME read_time(const Element& element) {
    const bool utc = element.tag == kUtcTime;
    if (!utc && element.tag != kGeneralizedTime) {
        throw Failure{CRYPT_E_ASN1_BADTAG};
    }
    const Octets text = element.content;
    const std::size_t digits = utc ? 12 : 14;
    if (text.size() != digits + 1 || text.back() != 'Z' ||
        !std::all_of(text.begin(), text.end() - 1, is_digit)) {
        return {};  // a time that cannot be read is no reason to refuse the certificate
    }
    const unsigned year = utc ? two_digits(text, 0) + (text[0] < '5' ? 2000 : 1900)
                              : two_digits(text, 0) * 100 + two_digits(text, 2);
    const std::size_t month = digits - 10;
    const SYSTEMTIME time{.wYear = static_cast<WORD>(year),
                          .wMonth = static_cast<WORD>(two_digits(text, month)),
                          .wDayOfWeek = 0,
                          .wDay = static_cast<WORD>(two_digits(text, month + 2)),
                          .wHour = static_cast<WORD>(two_digits(text, month + 4)),
                          .wMinute = static_cast<WORD>(two_digits(text, month + 6)),
                          .wSecond = static_cast<WORD>(two_digits(text, month + 8)),
                          .wMilliseconds = 0};
    return file_time(ticks_of(time).value_or(0));
}

// Version ::= INTEGER { v1(0), v2(1), v3(2) }, under [0] EXPLICIT
DWORD read_version(const Element& tagged) {
    DerWalker fields(tagged);
    const Octets version = fields.next(kInteger).content;
    fields.expect_end();
    if (version.size() != 1 || version[0] > 2) {
        throw Failure{CRYPT_E_ASN1_CORRUPT};
    }
    return version[0];
}

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
Extension read_extension(DerWalker& walker) {
    DerWalker fields(walker.next(kSequence));
    Extension extension{.oid = next_object_id(fields)};
    if (const auto critical = fields.next_if(kBoolean)) {
        if (critical->content.size() != 1) {
            throw Failure{CRYPT_E_ASN1_CORRUPT};
        }
        extension.critical = critical->content[0] != 0;
    }
    extension.value = fields.next(kOctetString).content;
    fields.expect_end();
    return extension;
}

// Extensions ::= SEQUENCE OF Extension, under [3] EXPLICIT
std::vector<Extension> read_extensions(const Element& tagged) {
    DerWalker outer(tagged);
    DerWalker list(outer.next(kSequence));
    outer.expect_end();
    std::vector<Extension> extensions;
    while (!list.at_end()) {
        extensions.push_back(read_extension(list));
    }
    return extensions;
}

Octets read_serial_number(DerWalker& fields) {
    const Octets content = fields.next(kInteger).content;
    if (content.empty()) {
        throw Failure{CRYPT_E_ASN1_CORRUPT};
    }
    return content;
}

// TBSCertificate ::= SEQUENCE {                                 -- RFC 5280 4.1
//     version [0] EXPLICIT Version DEFAULT v1, serialNumber, signature, issuer, validity, subject,
//     subjectPublicKeyInfo, issuerUniqueID [1] OPTIONAL, subjectUniqueID [2] OPTIONAL,
//     extensions [3] EXPLICIT Extensions OPTIONAL }
Certificate read_tbs_certificate(const Element& tbs) {
    DerWalker fields(tbs);
    Certificate certificate;
    if (const auto version = fields.next_if(constructed_context(0))) {
        certificate.version = read_version(*version);
    }
    certificate.serial_number = read_serial_number(fields);
    certificate.signature_algorithm = read_algorithm(fields);
    certificate.issuer = fields.next(kSequence).whole;
    DerWalker validity(fields.next(kSequence));
    certificate.not_before = read_time(validity.next());
    certificate.not_after = read_time(validity.next());
    validity.expect_end();
    certificate.subject = fields.next(kSequence).whole;
    certificate.public_key = read_public_key_info(fields);
    if (const auto id = fields.next_if(context(1))) {
        certificate.issuer_unique_id = read_bit_string(*id);
    }
    if (const auto id = fields.next_if(context(2))) {
        certificate.subject_unique_id = read_bit_string(*id);
    }
    if (const auto extensions = fields.next_if(constructed_context(3))) {
        certificate.extensions = read_extensions(*extensions);
    }
    fields.expect_end();
    return certificate;
}

// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue BIT STRING }
Certificate read_certificate(Octets encoded) {
    DerWalker outer(encoded);
    DerWalker fields(outer.next(kSequence));
    outer.expect_end();
    const Element tbs = fields.next(kSequence);
    read_algorithm(fields);
    read_bit_string(fields.next(kBitString));
    fields.expect_end();
    return read_tbs_certificate(tbs);
}

struct Block {
    std::atomic<std::uint32_t> references;
    CERT_CONTEXT context;
    CERT_INFO info;
    // Behind it: CERT_EXTENSION records, the encoding, the serial number reversed, OID texts.
};
static_assert(std::is_trivially_destructible_v<Block>, "a block goes by one free");
static_assert(sizeof(Block) % alignof(CERT_EXTENSION) == 0);

Block* block_of(PCCERT_CONTEXT context) {
    const auto address = reinterpret_cast<std::uintptr_t>(context) - offsetof(Block, context);
    return reinterpret_cast<Block*>(address);
}

std::size_t texts_size(const Certificate& certificate) {
    std::size_t size = object_id_text_size(certificate.signature_algorithm.oid) + 1 +
                       object_id_text_size(certificate.public_key.algorithm.oid) + 1;
    for (const Extension& extension : certificate.extensions) {
        size += object_id_text_size(extension.oid) + 1;
    }
    return size;
}

// Fills a block whose size was computed from the same certificate.
class BlockFiller {
  public:
    BlockFiller(Octets encoded, std::uint8_t* copy, char* texts)
        : encoded_(encoded), copy_(copy), texts_(texts) {}

    // The same octets in the copy that the block holds.
    CRYPT_DATA_BLOB blob(Octets octets) const {
        if (octets.empty()) {
            return {};
        }
        return {.cbData = static_cast<DWORD>(octets.size()),
                .pbData = copy_ + (octets.data() - encoded_.data())};
    }

    CRYPT_BIT_BLOB bits(const BitString& string) const {
        const CRYPT_DATA_BLOB octets = blob(string.octets);
        return {.cbData = octets.cbData, .pbData = octets.pbData, .cUnusedBits = string.unused_bits};
    }

    LPSTR text(Octets oid) {
        const LPSTR begin = texts_;
        texts_ = write_object_id_text(oid, texts_);
        return begin;
    }

    CRYPT_ALGORITHM_IDENTIFIER algorithm(const AlgorithmIdentifier& value) {
        return {.pszObjId = text(value.oid), .Parameters = blob(value.parameters)};
    }

  private:
    Octets encoded_;
    std::uint8_t* copy_;
    char* texts_;
};

PCERT_EXTENSION fill_extensions(const std::vector<Extension>& extensions, BlockFiller& filler,
                                std::uint8_t* room) {
    if (extensions.empty()) {
        return nullptr;
    }
    auto* const records = reinterpret_cast<PCERT_EXTENSION>(room);
    for (std::size_t i = 0; i < extensions.size(); ++i) {
        new (records + i) CERT_EXTENSION{.pszObjId = filler.text(extensions[i].oid),
                                         .fCritical = extensions[i].critical ? 1 : 0,
                                         .Value = filler.blob(extensions[i].value)};
    }
    return records;
}

PCCERT_CONTEXT make_context(DWORD encoding_type, Octets encoded) {
    const Certificate certificate = read_certificate(encoded);
    const std::size_t records_size = certificate.extensions.size() * sizeof(CERT_EXTENSION);
    const std::size_t serial_size = certificate.serial_number.size();
    void* const memory =
        std::malloc(sizeof(Block) + records_size + encoded.size() + serial_size + texts_size(certificate));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto* const records = static_cast<std::uint8_t*>(memory) + sizeof(Block);
    std::uint8_t* const copy = records + records_size;
    std::uint8_t* const serial = copy + encoded.size();
    std::memcpy(copy, encoded.data(), encoded.size());
    std::ranges::reverse_copy(certificate.serial_number, serial);

    BlockFiller filler(encoded, copy, reinterpret_cast<char*>(serial + serial_size));
    auto* const block = new (memory) Block{};
    block->references.store(1, std::memory_order_relaxed);
    block->info = {.dwVersion = certificate.version,
                   .SerialNumber = {.cbData = static_cast<DWORD>(serial_size), .pbData = serial},
                   .SignatureAlgorithm = filler.algorithm(certificate.signature_algorithm),
                   .Issuer = filler.blob(certificate.issuer),
                   .NotBefore = certificate.not_before,
                   .NotAfter = certificate.not_after,
                   .Subject = filler.blob(certificate.subject),
                   .SubjectPublicKeyInfo = {.Algorithm = filler.algorithm(certificate.public_key.algorithm),
                                            .PublicKey = filler.bits(certificate.public_key.key)},
                   .IssuerUniqueId = filler.bits(certificate.issuer_unique_id),
                   .SubjectUniqueId = filler.bits(certificate.subject_unique_id),
                   .cExtension = static_cast<DWORD>(certificate.extensions.size()),
                   .rgExtension = fill_extensions(certificate.extensions, filler, records)};
    block->context = {.dwCertEncodingType = encoding_type,
                      .pbCertEncoded = copy,
                      .cbCertEncoded = static_cast<DWORD>(encoded.size()),
                      .pCertInfo = &block->info,
                      .hCertStore = nullptr};
    return &block->context;
}

}  // namespace

}  // namespace Quillmark::platform

using namespace Quillmark::platform;

PCCERT_CONTEXT CertCreateCertificateContext(DWORD dwCertEncodingType, const BYTE* pbCertEncoded,
                                            DWORD cbCertEncoded) {
    PCCERT_CONTEXT context = nullptr;
    answer([&] {
        if ((dwCertEncodingType & X509_ASN_ENCODING) == 0 ||
            (pbCertEncoded == nullptr && cbCertEncoded != 0)) {
            return E_INVALIDARG;
        }
        context = make_context(dwCertEncodingType, {pbCertEncoded, cbCertEncoded});
        return ERROR_SUCCESS;
    });
    return context;
}

PCCERT_CONTEXT CertDuplicateCertificateContext(PCCERT_CONTEXT pCertContext) {
    if (pCertContext != nullptr) {
        block_of(pCertContext)->references.fetch_add(1, std::memory_order_relaxed);
    }
    return pCertContext;
}

BOOL CertFreeCertificateContext(PCCERT_CONTEXT pCertContext) {
    if (pCertContext != nullptr &&
        block_of(pCertContext)->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        std::free(block_of(pCertContext));
    }
    return 1;
}
