// Blobs from and to hexadecimal text.

#include "values/blob.h"

#include <cstring>
#include <string>

#include "values/detail/hex_text.h"

namespace Quillmark {

void CBlob::readFromHexString(const char* text) {
    if (text == nullptr) {
        text = "";
    }
    const unsigned long most = std::strlen(text) / 2;
    if (cbData_ <= most) {
        resize_to(most + 1);
    }
    cbData_ = 0;
    detail::for_each_hex_octet(text, [this](unsigned char octet) { pbData_[cbData_++] = octet; });
}

CStringProxy CBlob::writeToHexString(unsigned long group) const {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned long i = 0; i < cbData_; ++i) {
        if (group != 0 && i != 0 && i % group == 0) {
            text += ' ';
        }
        text += kDigits[pbData_[i] >> 4];
        text += kDigits[pbData_[i] & 0x0F];
    }
    return CStringProxy(text.c_str());
}

}  // namespace Quillmark
