// Texts of INTEGERs of any size. What is read in one base is printed in each and read again as the same
// number; comparing is an order; a number is encoded and decoded as itself.

#include <array>
#include <cstring>

#include "asn1/big_integer.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "runtime/big_integer.h"

namespace Quillmark::fuzz {

namespace {

constexpr Codes kNumber = {CRYPT_E_ASN1_INTERNAL};

/// A number on the heap of a context, freed at its end.
class Number {
  public:
    explicit Number(ASN1CTXT* ctxt) : ctxt_(ctxt) { rtBigIntInit(&number_); }
    ~Number() { rtBigIntFree(ctxt_, &number_); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;

    int read(const char* text, int radix) { return rtBigIntSetStr(ctxt_, &number_, text, radix); }
    const ASN1BigInt* get() const { return &number_; }
    bool operator==(const Number& other) const {
        return number_.sign == other.number_.sign && number_.numocts == other.number_.numocts &&
               (number_.numocts == 0 ||
                std::memcmp(number_.mag, other.number_.mag, static_cast<std::size_t>(number_.numocts)) == 0);
    }

  private:
    ASN1CTXT* ctxt_;
    ASN1BigInt number_;
};

std::string print(ASN1CTXT* ctxt, const Number& number, int radix) {
    // One digit more than told: base 10 may need it. A sign and the terminator come on top.
    std::string text(static_cast<std::size_t>(rtBigIntDigitsNum(number.get(), radix)) + 3, 'x');
    require(rtBigIntToString(ctxt, number.get(), radix, text.data(), static_cast<int>(text.size())) == RT_OK,
            "a number can be printed");
    text.resize(std::strlen(text.c_str()));
    char small[1];
    require(rtBigIntToString(ctxt, number.get(), radix, small, 1) == RT_E_STROVFL,
            "a number does not fit in nothing");
    return text;
}

void check_octets(ASN1CTXT* ctxt, const Number& number) {
    const int length = rtBigIntGetDataLen(number.get());
    std::vector<std::uint8_t> octets(static_cast<std::size_t>(length));
    require(rtBigIntGetData(ctxt, number.get(), octets.data(), length) == length, "octets have their number");
    require(rtBigIntGetData(ctxt, number.get(), octets.data(), length - 1) == RT_E_STROVFL,
            "octets do not fit in less");
    require(length < 2 || !((octets[0] == 0 && octets[1] < 0x80) || (octets[0] == 0xFF && octets[1] >= 0x80)),
            "the form is the shortest");
}

void check_number(ASN1CTXT* ctxt, const std::string& text, int radix) {
    Number number(ctxt);
    const int status = number.read(text.c_str(), radix);
    if (status != RT_OK) {
        require(status == RT_E_BADVALUE, "a text that is no number is a bad value");
        require(number.get()->sign == 0 && number.get()->numocts == 0, "a failure leaves zero");
        return;
    }
    check_octets(ctxt, number);
    for (const int base : {2, 8, 10, 16}) {
        const std::string printed = print(ctxt, number, base);
        if (number.get()->sign < 0 && (base == 2 || base == 16)) {
            continue;  // no sign is read in these
        }
        Number again(ctxt);
        require(again.read(printed.c_str(), base) == RT_OK, "what was printed can be read");
        require(again == number, "what was printed is read as it was");
    }
}

void check_order(ASN1CTXT* ctxt, const std::string& one, const std::string& other) {
    require(rtBigIntStrCompare(ctxt, one.c_str(), one.c_str()) == 0, "a number equals itself");
    const int forth = rtBigIntStrCompare(ctxt, one.c_str(), other.c_str());
    const int back = rtBigIntStrCompare(ctxt, other.c_str(), one.c_str());
    require((forth < 0) == (back > 0) && (forth == 0) == (back == 0),
            "comparing the other way round is opposite");
}

void check_value(const std::string& text) {
    ASN1::CBigInteger value;
    if (attempt("StringToBigInteger", kNumber, [&] { ASN1::StringToBigInteger(text.c_str(), value); }) !=
        S_OK) {
        return;
    }
    CBlob printed;
    ASN1::BigIntegerToString(value, printed);
    ASN1::CBigInteger again;
    if (value.cbData() != 0) {
        must("reading",
             [&] { ASN1::StringToBigInteger(reinterpret_cast<const char*>(printed.pbData()), again); });
        require(static_cast<const CBlob&>(again) == value, "what was printed is read as it was");
    }
    must("encoding", [&] {
        const CBlob der = value.encode();
        again.decode(der);
        require(value.cbData() == 0 || again == value, "a number comes back");
        require(again.encode() == der, "octets come back");
    });
}

}  // namespace

void check_big_integer_text(Octets octets) {
    Input input(octets);
    const unsigned form = input.octet();
    const std::string other = input.text();
    const std::string text = input.rest_as_text();
    ASN1::ctxt_handle context;
    require(context.init(), "a context is made");
    constexpr std::array kBases = {0, 2, 8, 10, 16};
    check_number(context.get(), text, kBases[form % kBases.size()]);
    check_order(context.get(), text, other);
    check_value(text);
}

}  // namespace Quillmark::fuzz
