// Objects of an application that are made before the library's own static objects, and go after them:
// whatever the library makes at first use is there at any time.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "asn1/general_name.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "tests/support/blob.h"
#include "tests/support/hex.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"
#include "values/datetime.h"

namespace Quillmark::test {
namespace {

using namespace ASN1;

/// A line of what the library says, of everything that rests on tables, registers and constants.
std::string answers() {
    const CName name(L"CN=A+SN=B,1.2.3=#0500");
    std::string text = hex(name.encode());
    text += hex(CRelativeDistinguishedName(L"L=C").encode());
    const auto row = CATAVRegister::find("2.5.4.3");
    text += row->get_oid();
    CGeneralName general;
    general.put_iPAddress(blob("7f 00 00 01"));
    CGeneralName copy(general);
    text += hex(copy.encode());
    const CPKIFreeText none;
    const CPKIFreeTextString& empty = none;
    text += std::to_string(std::wstring(empty.get_value()).size());
    const CDateTime time(2024u, 1u, 31u, 0u, 0u, 0u, 0u, 0u);
    text += DateAddA("m", 1, time).getGeneralizedTime().c_str();
    text += (time + CDateTimeSpan::oneDay * 2 + CDateTimeSpan::OneYear()).getGeneralizedTime().c_str();
    PKI::TSP::CRequest request(CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1"), blob("aa"), true);
    text += hex(request.encode());
    // PKIStatusInfo with status rejection and a text
    PKI::TSP::CResponse response;
    response.decode(blob("30 0d 30 0b 02 01 02 30 06 0c 04 74 65 78 74"));
    text += hex(response.encode());
    // An attribute whose type the tables know
    PKI::TSP::CMSRequest stamp_request("1.2.3", CContentInfo("1.2.840.113549.1.7.1", blob("04 01 aa")));
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.840.113549.1.9.3"));
    attributes.back().add(blob("06 02 2a 03"));
    stamp_request.put_attributes(&attributes);
    text += hex(stamp_request.encode());
    PKI::TSP::CToken token;
    try {
        token.decode(blob("30 00"));
    } catch (const CAtlException& failure) {
        text += result_name(failure);
    }
    return text;
}

/// Asks in its constructor and in its destructor.
class Application {
  public:
    Application() : answers_(answers()) {}
    ~Application() {
        if (answers() != answers_) {
            std::fputs("the library answers otherwise at the end of the process\n", stderr);
            std::_Exit(1);
        }
    }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    const std::string& told() const { return answers_; }

  private:
    std::string answers_;
};

// Before all static objects without a priority of their own.
__attribute__((init_priority(101))) const Application application;

TEST(LoadOrder, IsNothingToTheLibrary) {
    EXPECT_EQ(application.told(), answers());
}

}  // namespace
}  // namespace Quillmark::test
