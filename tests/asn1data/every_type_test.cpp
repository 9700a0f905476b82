// Laws that every type of the catalogue obeys, over values of each of them.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "tests/asn1data/catalogue_type.h"
#include "tests/asn1data/type_vectors.h"
#include "tests/support/codec_heap.h"
#include "tests/support/hex.h"

namespace Quillmark::test {
namespace {

using Octets = std::vector<std::uint8_t>;

const CatalogueType& type_named(const std::string& name) {
    static const auto by_name = [] {
        std::map<std::string, const CatalogueType*> made;
        for (const CatalogueType& type : catalogue_types()) {
            made.emplace(type.name, &type);
        }
        return made;
    }();
    return *by_name.at(name);
}

/// A record decoded from octets by its control class.
class Decoded {
  public:
    Decoded(const CatalogueType& type, const Octets& octets)
        : octets_(octets),
          buffer_(octets_.data(), static_cast<int>(octets_.size())),
          record_(type),
          control_(control_of(type, buffer_, record_.get())),
          status_(control_->Decode()) {}

    int status() const { return status_; }
    void* record() { return record_.get(); }
    ASN1CType& control() { return *control_; }
    ASN1CTXT* context() { return buffer_.getCtxtPtr(); }

  private:
    Octets octets_;  // of exactly its size, so that a sanitizer sees a read behind it
    ASN1BERDecodeBuffer buffer_;
    AnyRecord record_;
    std::unique_ptr<ASN1CType> control_;
    int status_;
};

Octets encode(const CatalogueType& type, void* record) {
    ASN1BEREncodeBuffer buffer;
    const int length = control_of(type, buffer, record)->Encode();
    return length < 0 ? Octets() : Octets(buffer.getMsgPtr(), buffer.getMsgPtr() + length);
}

int decode_and_free(const CatalogueType& type, const Octets& ber) {
    Decoded decoded(type, ber);
    type.free(decoded.context(), decoded.record());
    return decoded.status();
}

/// Whether the allocation with number `n` was refused on the way through decoder, copy and encoder.
bool survives_failing_allocation(const CatalogueType& type, const Octets& der, std::size_t n) {
    CodecHeap heap;
    heap.fail_after(n);
    try {
        Decoded decoded(type, der);
        if (decoded.status() == RT_OK) {
            const AnyRecord copy(type);
            ASN1BEREncodeBuffer other;
            type.copy(other.getCtxtPtr(), decoded.record(), copy.get());
            encode(type, copy.get());
        }
    } catch (const std::bad_alloc&) {
    } catch (const ASN1MessageBuffer::RTLError&) {
    }
    EXPECT_EQ(heap.live_blocks(), 0u);
    return heap.failed();
}

const std::vector<TypeVector>& vectors() {
    static const std::vector<TypeVector> rows = [] {
        std::vector<TypeVector> all = load_type_vectors(QUILLMARK_TEST_DATA "/asn1data/types.txt");
        for (const char* file : {"types_by_hand.txt", "types_by_pyasn1.txt", "types_by_openssl.txt"}) {
            const auto more = load_type_vectors(std::string(QUILLMARK_TEST_DATA "/asn1data/") + file);
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    }();
    return rows;
}

/// The types of one module.
class EveryType : public testing::TestWithParam<std::string> {
  protected:
    template <typename Law>
    void for_each_value(Law law) {
        for (const TypeVector& row : vectors()) {
            const CatalogueType& type = type_named(row.type);
            if (type.module == GetParam()) {
                SCOPED_TRACE(row.type + " " + row.name);
                law(type, row.der);
            }
        }
    }
};

TEST_P(EveryType, ComesBackFromDecodingAsItWas) {
    for_each_value([](const CatalogueType& type, const Octets& der) {
        Decoded decoded(type, der);
        EXPECT_EQ(decoded.status(), RT_OK);
        EXPECT_EQ(to_hex(encode(type, decoded.record())), to_hex(der));
    });
}

TEST_P(EveryType, IsCopiedToAnotherContext) {
    for_each_value([](const CatalogueType& type, const Octets& der) {
        ASN1BEREncodeBuffer other;
        const AnyRecord copy(type);
        {
            Decoded decoded(type, der);
            type.copy(other.getCtxtPtr(), decoded.record(), copy.get());
            type.copy(other.getCtxtPtr(), copy.get(), copy.get());
        }
        if (copy.get() != nullptr) {
            EXPECT_EQ(to_hex(encode(type, copy.get())), to_hex(der));
        }
        type.free(other.getCtxtPtr(), copy.get());
    });
}

TEST_P(EveryType, IsCopiedByItsControlClass) {
    for_each_value([](const CatalogueType& type, const Octets& der) {
        Decoded decoded(type, der);
        const AnyRecord copy(type);
        EXPECT_EQ(type.get_copy(decoded.control(), copy.get()), copy.get());
        EXPECT_EQ(type.get_copy(decoded.control(), decoded.record()), decoded.record());
        EXPECT_EQ(to_hex(encode(type, copy.get())), to_hex(der));
        const AnyRecord own(type, type.new_copy(decoded.control()));
        EXPECT_EQ(to_hex(encode(type, own.get())), to_hex(der));
    });
}

// What stands behind the value of a type of indefinite length (X.690 8.1.5): its decoder takes the
// end-of-contents octets, or leaves them to whoever reads on.

const std::set<std::string> kTakesItsEnd = {"ArchiveTimeStampToken",
                                            "AuthenticatedData",
                                            "CertificateChoices",
                                            "CertificateChoicesRaw",
                                            "ContentInfo",
                                            "ContentInfoLegacy",
                                            "ContentTimestamp",
                                            "ESCTimeStampToken",
                                            "EncapsulatedContentInfo",
                                            "KeyAgreeRecipientIdentifier",
                                            "OriginatorIdentifierOrKey",
                                            "OriginatorInfo",
                                            "PBKDF2_params_salt",
                                            "PasswordRecipientInfo",
                                            "RSAES_OAEP_params",
                                            "RSASSA_PSS_params",
                                            "RecipientIdentifier",
                                            "RecipientInfo",
                                            "RevocationInfoChoice",
                                            "SharedInfo",
                                            "SignatureTimeStampToken",
                                            "SignerIdentifier",
                                            "TR34EncryptedData",
                                            "TimeStampToken",
                                            "TimestampedCertsCRLs"};
const std::set<std::string> kIsKeptWhole = {"CertificateList"};

/// The octets of `der` with an indefinite length, without the end-of-contents octets.
Octets opened(const Octets& der) {
    const std::size_t header = der[1] < 0x80 ? 2 : 2 + (der[1] & 0x7F);
    Octets ber = {der[0], 0x80};
    ber.insert(ber.end(), der.begin() + static_cast<std::ptrdiff_t>(header), der.end());
    return ber;
}

TEST_P(EveryType, TakesTheEndOfAnIndefiniteLengthOrLeavesItUnread) {
    // Intended: only the few types above take it.
    for_each_value([](const CatalogueType& type, const Octets& der) {
        if ((der[0] & 0x20) == 0) {
            return;
        }
        Octets ber = opened(der);
        const bool takes = kTakesItsEnd.contains(type.name);
        if (!kIsKeptWhole.contains(type.name)) {
            EXPECT_EQ(decode_and_free(type, ber), takes ? RT_E_INVLEN : RT_OK);
        }
        ber.insert(ber.end(), {0x00, 0x00});
        Decoded decoded(type, ber);
        EXPECT_EQ(decoded.status(), RT_OK);
        const bool reads = takes || kIsKeptWhole.contains(type.name);
        EXPECT_EQ(decoded.context()->buffer.byteIndex, reads ? ber.size() : ber.size() - 2);
        if (!kIsKeptWhole.contains(type.name)) {
            EXPECT_EQ(to_hex(encode(type, decoded.record())), to_hex(der));
        }
    });
}

TEST_P(EveryType, IsDecodedSafelyWhereverItIsCut) {
    for_each_value([](const CatalogueType& type, const Octets& der) {
        for (std::size_t size = 0; size < der.size(); ++size) {
            decode_and_free(type, Octets(der.begin(), der.begin() + static_cast<std::ptrdiff_t>(size)));
        }
    });
}

/// What an octet is changed to. The time goes with the square of the size, so there are fewer for long
/// values.
std::vector<std::uint8_t> wrong_octets(std::size_t size) {
    if (size > 512) {
        return {0x80, 0xFF};
    }
    return {0x00, 0x01, 0x7F, 0x80, 0x84, 0xFF};
}

TEST_P(EveryType, IsDecodedSafelyWhateverOctetIsChanged) {
    for_each_value([](const CatalogueType& type, const Octets& der) {
        for (std::size_t i = 0; i < der.size(); ++i) {
            for (const std::uint8_t value : wrong_octets(der.size())) {
                Octets changed = der;
                changed[i] = value;
                decode_and_free(type, changed);
            }
        }
    });
}

TEST_P(EveryType, LeavesNothingBehindWhateverAllocationFails) {
    for_each_value([](const CatalogueType& type, const Octets& der) {
        for (std::size_t n = 0; survives_failing_allocation(type, der, n); ++n) {
        }
    });
}

std::vector<std::string> modules() {
    std::vector<std::string> names;
    for (const CatalogueType& type : catalogue_types()) {
        if (names.empty() || names.back() != type.module) {
            names.push_back(type.module);
        }
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Modules, EveryType, testing::ValuesIn(modules()),
                         [](const auto& row) { return row.param; });

TEST(SetOf, OfAnEncoderThatDoesNotSortComesBackSorted) {
    // The one difference to what other encoders write (X.690 11.6).
    std::set<std::string> types;
    for (const TypeVector& row : load_type_vectors(QUILLMARK_TEST_DATA "/asn1data/types_not_sorted.txt")) {
        SCOPED_TRACE(row.type);
        const CatalogueType& type = type_named(row.type);
        Decoded decoded(type, row.ber);
        EXPECT_EQ(decoded.status(), RT_OK);
        EXPECT_NE(to_hex(row.ber), to_hex(row.der));
        EXPECT_EQ(to_hex(encode(type, decoded.record())), to_hex(row.der));
        types.insert(row.type);
    }
    EXPECT_EQ(types.size(), 23u);
}

TEST(Catalogue, HasEveryTypeOnce) {
    // 531 types of the published list, and the string of two attributes
    std::set<std::string> seen;
    for (const CatalogueType& type : catalogue_types()) {
        EXPECT_TRUE(seen.insert(type.name).second) << type.name;
    }
    EXPECT_EQ(seen.size(), 532u);
}

TEST(TypeVectors, HoldAValueOfEveryType) {
    std::set<std::string> seen;
    for (const TypeVector& row : vectors()) {
        seen.insert(row.type);
    }
    for (const CatalogueType& type : catalogue_types()) {
        EXPECT_TRUE(seen.contains(type.name)) << type.name;
    }
}

}  // namespace
}  // namespace Quillmark::test
