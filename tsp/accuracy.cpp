#include "tsp/accuracy.h"

#include "asn1data/records.h"
#include "tsp/detail/record.h"

namespace Quillmark::PKI::TSP {

bool operator==(const CAccuracy& left, const CAccuracy& right) {
    return left.seconds == right.seconds && left.millis == right.millis && left.micros == right.micros;
}

bool operator!=(const CAccuracy& left, const CAccuracy& right) {
    return !(left == right);
}

// Intended: presence follows the uncut value, so that 65536 milliseconds become a present 0, which the
// encoder refuses, and not an absent element.
void TSP_AccuracyToASN1T_Accuracy(ASN1CTXT* /*ctxt*/, asn1data::ASN1T_Accuracy& record,
                                  const CAccuracy& accuracy) {
    detail::zero_record(record);
    record.seconds = static_cast<std::int32_t>(accuracy.seconds);
    record.millis = static_cast<std::uint16_t>(accuracy.millis);
    record.micros = static_cast<std::uint16_t>(accuracy.micros);
    record.m.secondsPresent = accuracy.seconds != 0;
    record.m.millisPresent = accuracy.millis != 0;
    record.m.microsPresent = accuracy.micros != 0;
}

void ASN1T_AccuracyToTSP_Accuracy(CAccuracy& accuracy, const asn1data::ASN1T_Accuracy& record) {
    accuracy = CAccuracy{};
    if (record.m.secondsPresent) {
        accuracy.seconds = static_cast<std::uint32_t>(record.seconds);
    }
    if (record.m.millisPresent) {
        accuracy.millis = record.millis;
    }
    if (record.m.microsPresent) {
        accuracy.micros = record.micros;
    }
}

}  // namespace Quillmark::PKI::TSP
