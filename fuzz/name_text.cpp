// Texts of distinguished names. A name that is read from a text and can be encoded is decoded, printed, read
// again and encoded to the same octets.

#include <algorithm>
#include <stdexcept>

#include "asn1/name.h"
#include "fuzz/ber_form.h"
#include "fuzz/input.h"
#include "fuzz/target.h"

namespace Quillmark::fuzz {

namespace {

using namespace ASN1;

constexpr Codes kText = {E_INVALIDARG, CRYPT_E_ASN1_INTERNAL};

bool has_whole_values(const CRelativeDistinguishedName& name) {
    return std::ranges::all_of(name, [](const CAttributeTypeAndValue& pair) {
        const CBlob value = pair.get_value();
        return is_whole(view(value));
    });
}

bool has_whole_values(const CName& name) {
    return std::ranges::all_of(name,
                               [](const CRelativeDistinguishedName& part) { return has_whole_values(part); });
}

template <class Name>
void check_name(const std::wstring& text) {
    Name name;
    CBlob first;
    const HRESULT code = attempt("reading and encoding", kText, [&] {
        try {
            name = Name(text.c_str());
        } catch (const std::out_of_range&) {  // Intended: for an empty value of an unregistered type
            throw CAtlException(E_INVALIDARG);
        }
        first = name.encode();
    });
    if (code != S_OK || !has_whole_values(name)) {
        return;
    }
    Name decoded;
    must("decoding what was encoded", [&] { decoded.decode(first); });
    const std::wstring printed = decoded.toString();
    if (decoded.empty()) {
        return;  // an empty text is no name to read
    }
    must("what was printed comes back", [&] {
        require(Name(printed.c_str()).encode() == first, "what was printed is read as the same name");
    });
}

}  // namespace

void check_name_text(Octets octets) {
    Input input(octets);
    const bool is_relative = input.flag();
    // A text that is no UTF-8 becomes one with U+FFFD, by the rule of the conversion.
    const std::wstring text = towstring(input.rest_as_text().c_str());
    if (is_relative) {
        check_name<CRelativeDistinguishedName>(text);
    } else {
        check_name<CName>(text);
    }
}

}  // namespace Quillmark::fuzz
