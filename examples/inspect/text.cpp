#include "inspect/text.h"

#include "asn1/name.h"
#include "support/certificate.h"
#include "support/failure.h"

#include <cstdint>
#include <cstdio>

#include <arpa/inet.h>

namespace inspect {

namespace {

using namespace Quillmark;

// One character of UTF-8 (RFC 3629 4): its octets, 0 for octets that are none.
std::size_t read_character(const std::string& text, std::size_t position, std::uint32_t& character) {
    const unsigned char first = static_cast<unsigned char>(text[position]);
    const std::size_t size = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
    static const unsigned char kBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    if (size == 0 || size > text.size() - position) {
        return 0;
    }
    character = first & kBits[size];
    for (std::size_t i = 1; i < size; ++i) {
        const unsigned char next = static_cast<unsigned char>(text[position + i]);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | (next & 0x3F);
    }
    static const std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < kSmallest[size] || surrogate || character > 0x10FFFF ? 0 : size;
}

bool is_visible(std::uint32_t character) {
    const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool direction = character == 0x61C || character == 0x200E || character == 0x200F ||
                           (character >= 0x2028 && character <= 0x202E) ||
                           (character >= 0x2066 && character <= 0x2069);
    const bool empty =
        (character >= 0x200B && character <= 0x200D) || character == 0xFEFF || character >= 0xE0000;
    return !control && !direction && !empty;
}

std::string escape(const char* form, std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, form, static_cast<unsigned int>(value));
    return text;
}

std::string to_text(const wchar_t* wide) {
    try {
        return example::to_utf8(wide);
    } catch (const example::Failure&) {
        return "?";
    }
}

// RFC 4514 2.4
std::string quoted(const std::string& value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char character = value[i];
        const bool at_edge =
            (i == 0 && (character == ' ' || character == '#')) || (i + 1 == value.size() && character == ' ');
        if (at_edge || std::string("\"+,;<>\\").find(character) != std::string::npos) {
            text += '\\';
        }
        text += character;
    }
    return text;
}

std::string value_text(const std::string& oid, const Element& value) {
    const CBlob der = to_blob(value.whole);
    try {
        if (ASN1::CATAVRegister::find(oid.c_str()) != ASN1::CATAVRegister::registered().end()) {
            return quoted(to_text(ASN1::CATAVRegister::valueToStr(oid.c_str(), der).c_str()));
        }
        return quoted(to_text(ASN1::decodeCharString(der).c_str()));
    } catch (const CAtlException&) {
        return "#" + hex(der);
    }
}

std::string attribute_text(const Element& attribute) {
    Elements members(attribute);
    const std::string oid = object_id(members.next());
    return to_text(ASN1::CATAVRegister::typeToStr(oid.c_str()).c_str()) + "=" +
           value_text(oid, members.next());
}

std::string relative_name_text(const Element& relative_name) {
    std::string text;
    for (Elements attributes(relative_name); !attributes.at_end();) {
        text += (text.empty() ? "" : "+") + attribute_text(attributes.next());
    }
    return text;
}

// RFC 5280 4.2.1.6: four octets or sixteen.
std::string address_text(const CBlob& address) {
    char text[INET6_ADDRSTRLEN] = "";
    if (address.cbData() == sizeof(in_addr) || address.cbData() == sizeof(in6_addr)) {
        const int family = address.cbData() == sizeof(in_addr) ? AF_INET : AF_INET6;
        inet_ntop(family, address.pbData(), text, sizeof text);
        return text;
    }
    return hex(address);
}

}  // namespace

std::string printable(const std::string& text) {
    std::string shown;
    for (std::size_t position = 0; position < text.size();) {
        std::uint32_t character = 0;
        const std::size_t size = read_character(text, position, character);
        if (size == 0) {
            shown += escape("\\x%02X", static_cast<unsigned char>(text[position++]));
            continue;
        }
        shown += is_visible(character) ? text.substr(position, size) : escape("\\u{%X}", character);
        position += size;
    }
    return shown;
}

std::string hex(const CBlob& octets) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * octets.cbData());
    for (unsigned long i = 0; i < octets.cbData(); ++i) {
        text += kDigits[octets.pbData()[i] >> 4];
        text += kDigits[octets.pbData()[i] & 0x0F];
    }
    return text;
}

std::vector<std::string> grouped_hex(const CBlob& octets) {
    if (octets.cbData() == 0) {
        return {"(empty)"};
    }
    constexpr std::size_t kLine = 32 / 4 * 9;  // eight digits and a blank for each group
    const std::string digits = octets.writeToHexString(4).c_str();
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < digits.size(); start += kLine) {
        lines.push_back(digits.substr(start, kLine - 1));
    }
    return lines;
}

std::vector<std::string> short_hex(const CBlob& octets) {
    if (octets.cbData() > 64) {
        return {std::to_string(octets.cbData()) + " octets"};
    }
    return grouped_hex(octets);
}

std::string iso_text(const CDateTime& time) {
    char text[64];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", time.year(), time.month(), time.day(),
                  time.hour(), time.minute(), time.second());
    std::string shown = text;
    const unsigned int fraction = time.millisecond() * 1000 + time.microsecond();
    if (fraction != 0) {
        std::snprintf(text, sizeof text, ".%06u", fraction);
        shown += text;
        shown.erase(shown.find_last_not_of('0') + 1);
    }
    return shown + "Z";
}

std::string time_text(const CDateTime& time) {
    const std::string text = iso_text(time);
    const std::size_t separator = text.find('T');
    return text.substr(0, separator) + " " + text.substr(separator + 1, text.size() - separator - 2) + " UTC";
}

std::string generalized_time_text(const std::string& text) {
    // Without its "Z" a time is a local one, of a place that nobody knows (X.680 46.2).
    if (text.empty() || text.back() != 'Z') {
        return text;
    }
    try {
        return time_text(CDateTime(text.c_str()));
    } catch (const CAtlException&) {
        return text;
    }
}

std::string name_text(const Octets& name) {
    std::string text;
    for (Elements relative_names(Elements(name).next()); !relative_names.at_end();) {
        text += (text.empty() ? "" : ",") + relative_name_text(relative_names.next());
    }
    return text;
}

std::string name_text(const CBlob& name) {
    try {
        return name_text(octets_of(name));
    } catch (const Malformed&) {
        return "#" + hex(name);
    }
}

std::string general_name_text(const ASN1::CGeneralName& name) {
    if (name.get_rfc822Name() != nullptr) {
        return "email:" + to_text(name.get_rfc822Name());
    }
    if (name.get_dNSName() != nullptr) {
        return "DNS:" + to_text(name.get_dNSName());
    }
    if (name.get_uniformResourceIdentifier() != nullptr) {
        return "URI:" + to_text(name.get_uniformResourceIdentifier());
    }
    if (name.get_registeredID() != nullptr) {
        return "OID:" + to_text(name.get_registeredID());
    }
    if (name.get_iPAddress() != nullptr) {
        return "IP:" + address_text(*name.get_iPAddress());
    }
    return name.get_directoryName() != nullptr ? "name:" + name_text(*name.get_directoryName()) : "";
}

std::string general_name_text(const Octets& name) {
    constexpr unsigned char kDirectoryName = 0xA4;
    const Element element = Elements(name).next();
    try {
        ASN1::CGeneralName value;
        value.decode(to_blob(element.whole));
        return general_name_text(value);
    } catch (const CAtlException&) {
        // A Name can be shown though its values are not of the types that their attributes have.
        return element.tag == kDirectoryName ? "name:" + name_text(element.content)
                                             : tag_name(element.tag) + ":" + hex(to_blob(element.content));
    }
}

}  // namespace inspect
