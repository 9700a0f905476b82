// Dotted texts of OBJECT IDENTIFIERs. What is read from a text is printed and read again as the same arcs.
// What can be encoded is decoded to what encodes to the same octets, and to the same arcs where X.660 allows
// them.

#include <cstring>

#include "asn1/codec.h"
#include "fuzz/input.h"
#include "fuzz/target.h"

namespace Quillmark::fuzz {

namespace {

constexpr Codes kEncode = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG};

void check_printing(const ASN1OBJID& oid) {
    const int length = rtOidToStrLen(&oid);
    std::string text(static_cast<std::size_t>(length) + 1, 'x');
    require(rtOidToStr(&oid, text.data(), static_cast<std::size_t>(length)) == 1, "a text has its length");
    require(std::strlen(text.c_str()) == static_cast<std::size_t>(length), "a text has its length");
    ASN1OBJID again;
    require(rtStrToOid(text.c_str(), &again) == 1 && again == oid, "what was printed is read as it was");
    if (length > 0) {
        require(rtOidToStr(&oid, text.data(), static_cast<std::size_t>(length) - 1) == 0,
                "a text does not fit in less");
    }
    CBlob other;
    ASN1::oid2str(other, &oid);
    require(std::strncmp(reinterpret_cast<const char*>(other.pbData()), ASN1::toOID(oid).c_str(),
                         other.cbData()) == 0,
            "both printers print the same");
}

bool is_allowed(const ASN1OBJID& oid) {
    return oid.numids >= 2 && (oid.subid[0] < 2 ? oid.subid[1] < 40 : oid.subid[0] == 2);
}

void check_encoding(const std::string& text) {
    CBlob first;
    const char* const start = text.c_str();
    if (attempt("encode", kEncode, [&] { first = ASN1::asn1Encode<ASN1::ASN1TObjId_traits>(start); }) !=
        S_OK) {
        return;
    }
    must("decode", [&] {
        CStringProxy decoded("");
        ASN1::asn1Decode<ASN1::ASN1TObjId_traits>(first, decoded);
        const char* const back = decoded.c_str();
        require(ASN1::asn1Encode<ASN1::ASN1TObjId_traits>(back) == first, "octets come back");
        const ASN1OBJID given = ASN1::toASN1OBJID(text.c_str());
        require(!is_allowed(given) || ASN1::toASN1OBJID(back) == given, "arcs come back");
    });
}

}  // namespace

void check_object_id_text(Octets octets) {
    const std::string text = Input(octets).rest_as_text();
    ASN1OBJID oid;
    if (rtStrToOid(text.c_str(), &oid) == 1 && oid.numids != 0) {
        check_printing(oid);
    }
    require(oid.numids <= ASN1_K_MAXSUBIDS, "arcs have a limit");
    if (ASN1::str2oid(text.c_str(), &oid) == 0 && oid.numids != 0) {
        check_printing(oid);
    }
    require(oid.numids <= ASN1_K_MAXSUBIDS, "arcs have a limit");
    check_encoding(text);
}

}  // namespace Quillmark::fuzz
