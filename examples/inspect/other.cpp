// What has only its outer type named.

#include "inspect/describe.h"

namespace inspect {

void describe_other(const Octets& octets, Report& report) {
    if (octets.size == 0) {
        throw Malformed(0, "there are no octets");
    }
    check_nesting(Elements(octets).next().whole);
    report.found.fact("", "type", report.title, "");
}

}  // namespace inspect
