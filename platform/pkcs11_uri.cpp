#include "platform/detail/pkcs11_uri.h"

#include <algorithm>
#include <charconv>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

namespace {

constexpr std::string_view kScheme = "pkcs11:";

struct Attribute {
    std::string_view name;
    std::string_view value;
};

Attribute split(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        throw Failure{NTE_BAD_KEYSET};
    }
    return {.name = text.substr(0, equals), .value = text.substr(equals + 1)};
}

// RFC 3986 2.1
char decode_octet(std::string_view digits) {
    unsigned octet = 0;
    const char* const end = digits.data() + digits.size();
    if (digits.size() != 2 || std::from_chars(digits.data(), end, octet, 16).ptr != end || octet == 0) {
        throw Failure{NTE_BAD_KEYSET};
    }
    return static_cast<char>(octet);
}

// The room is taken at once, so that no piece of a secret stays behind in a block that was outgrown.
std::string decode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            decoded += decode_octet(text.substr(i + 1, 2));
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

SecretText decode_secret(std::string_view text) {
    std::string decoded = decode(text);
    SecretText secret(decoded);
    OPENSSL_cleanse(decoded.data(), decoded.size());
    return secret;
}

// Path attributes are separated by ';', those of the query begin with '?' and are separated by '&'.
void append(std::string& uri, char separator, std::string_view attribute) {
    if (uri.empty()) {
        uri = kScheme;
    }
    if (separator == '&' && uri.find('?') == std::string::npos) {
        separator = '?';
    }
    if (uri.size() > kScheme.size() || separator == '?') {
        uri += separator;
    }
    uri += attribute;
}

// RFC 7512 2.3: what of a key's name is that of its token.
void take_token_name(const Attribute& attribute, std::string_view text, Pkcs11Uri& uri) {
    std::optional<std::string>* const field = attribute.name == "token"    ? &uri.token_name.label
                                              : attribute.name == "serial" ? &uri.token_name.serial
                                              : attribute.name == "manufacturer"
                                                  ? &uri.token_name.manufacturer
                                              : attribute.name == "model" ? &uri.token_name.model
                                                                          : nullptr;
    if (field != nullptr) {
        *field = decode(attribute.value);
        append(uri.token, ';', text);
    }
}

void take_attribute(char separator, std::string_view text, Pkcs11Uri& uri) {
    const Attribute attribute = split(text);
    if (attribute.name == "pin-value") {
        uri.pin = decode_secret(attribute.value);
        return;
    }
    if (attribute.name == "module-path") {
        uri.module_path = decode(attribute.value);
        return;
    }
    append(uri.key, separator, text);
    take_token_name(attribute, text, uri);
}

}  // namespace

bool is_pkcs11_uri(std::string_view name) {
    return name.starts_with(kScheme);
}

Pkcs11Uri parse_pkcs11_uri(std::string_view uri) {
    Pkcs11Uri parsed;
    parsed.key = kScheme;
    std::string_view left = uri.substr(kScheme.size());
    for (char separator = ';'; !left.empty();) {
        const std::size_t end = std::min(left.find_first_of(";?&"), left.size());
        if (end > 0) {
            take_attribute(separator, left.substr(0, end), parsed);
        }
        if (end < left.size()) {
            separator = left[end] == ';' ? ';' : '&';
        }
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return parsed;
}

}  // namespace Quillmark::platform
