// Hexadecimal texts. What was read is printed, in groups of any size, and read again as the same octets.

#include "fuzz/input.h"
#include "fuzz/target.h"

namespace Quillmark::fuzz {

void check_hexadecimal_text(Octets octets) {
    Input input(octets);
    const unsigned long group = input.octet();
    const std::string text = input.rest_as_text();
    CBlob blob;
    must("readFromHexString", [&] { blob.readFromHexString(text.c_str()); });
    require(blob.cbData() <= text.size() / 2, "an octet takes two digits");
    CBlob again;
    must("readFromHexString", [&] { again.readFromHexString(blob.writeToHexString(group).c_str()); });
    require(again == blob, "what was printed is read as it was");
}

}  // namespace Quillmark::fuzz
