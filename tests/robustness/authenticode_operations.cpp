// Requests and stamps of the Authenticode exchange.

#include <functional>

#include "tests/robustness/object_rows.h"
#include "tests/robustness/operations.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/blob.h"
#include "tests/support/test_keys.h"

namespace Quillmark::test {

namespace {

using namespace ASN1;
using namespace PKI::TSP;

/// A row for a `put_` of a stamp that was signed, which signs anew at once: the message is the old one or
/// that of the new field.
template <class Put>
std::function<void(Trial&)> signs_anew(Put put) {
    return [put](Trial& trial) {
        CMSStamp stamp = signed_stamp();
        const CBlob before = stamp.encode();
        const bool done = trial.call([&] { put(stamp); });
        EXPECT_EQ(stamp.encode() == before, !done);
        EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
        put(stamp);
        EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
    };
}

void sign(Trial& trial) {
    const TestKey key("tsa_p256");
    const CBlob certificate = test::certificate("tsa_p256");
    const CAlgorithmIdentifierEx algorithm(kSha256Text);
    CMSStamp stamp = small_stamp();
    trial.call([&] { stamp.sign(key.provider(), AT_SIGNATURE, certificate, algorithm); });
    EXPECT_EQ(stamp.get_content(), small_stamp().get_content());
    stamp.sign(key.provider(), AT_SIGNATURE, certificate, algorithm);
    EXPECT_TRUE(stamp.verify(certificate));
}

void verify(Trial& trial) {
    const CMSStamp stamp = signed_stamp();
    const CBlob certificate = test::certificate("tsa_p256");
    bool holds = false;
    const bool done = trial.call_that_may_do_without([&] { holds = stamp.verify(certificate); });
    // Intended: whatever keeps the service from finding the signature good, the answer is no.
    EXPECT_EQ(done && holds, !trial.refused());
    EXPECT_TRUE(stamp.verify(certificate));
}

// Each field is the old or the new one, and what a failure leaves can be read into.
void decode(Trial& trial) {
    const CMSStamp source = signed_stamp();
    const CBlob der = source.encode();
    CMSStamp stamp = small_stamp();
    stamp.put_content(blob("04 00"));
    trial.call([&] { stamp.decode(der); });
    EXPECT_TRUE(stamp.get_content() == blob("04 00") || stamp.get_content() == source.get_content());
    stamp.decode(der);
    EXPECT_EQ(stamp.get_content(), source.get_content());
    EXPECT_TRUE(stamp.get_signingTime() == source.get_signingTime());
    EXPECT_TRUE(*stamp.get_certificates() == *source.get_certificates());
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
}

CContentInfo other_content() {
    return CContentInfo("1.2.4", blob("05 00"));
}

}  // namespace

Operations authenticode_operations() {
    return {
        {"AuthenticodeRequest", makes([] { const CMSRequest request; })},
        {"AuthenticodeRequestOfFields", makes([] { (void)authenticode_request(); })},
        {"AuthenticodeRequestCopy",
         uses(authenticode_request, [](const CMSRequest& request) { const CMSRequest copy(request); })},
        {"AuthenticodeRequestAssignment",
         assigns(authenticode_request, [] { return CMSRequest("1.2.3", other_content()); })},
        {"AuthenticodeRequestCleared", makes([] {
             CMSRequest request;
             request.clear();
         })},
        {"AuthenticodeRequestEncodes",
         uses(authenticode_request, [](const CMSRequest& request) { (void)request.encode(); })},
        {"AuthenticodeRequestDecodes", decodes(authenticode_request)},
        {"AuthenticodeRequestPutsAlgorithm",
         puts(
             authenticode_request, [] { return std::string("1.3.6.1.4.1.99999.1.2.3.4.5.6.7"); },
             [](CMSRequest& request, const std::string& oid) { request.put_timeStampAlgorithm(oid.c_str()); },
             [](const CMSRequest& request) { return std::string(request.get_timeStampAlgorithm()); })},
        {"AuthenticodeRequestPutsContent",
         puts(
             authenticode_request, other_content,
             [](CMSRequest& request, const CContentInfo& content) { request.put_contentInfo(content); },
             [](const CMSRequest& request) { return request.get_contentInfo().encode(); })},
        {"AuthenticodeRequestPutsAttributes",
         puts(
             authenticode_request, other_attributes,
             [](CMSRequest& request, const CAttributes& list) { request.put_attributes(&list); },
             [](const CMSRequest& request) { return *request.get_attributes(); })},

        {"AuthenticodeStamp", makes([] { const CMSStamp stamp; })},
        {"AuthenticodeStampOfFields", makes([] { (void)small_stamp(); })},
        {"AuthenticodeStampCopy",
         uses(signed_stamp, [](const CMSStamp& stamp) { const CMSStamp copy(stamp); })},
        {"AuthenticodeStampAssignment", assigns(signed_stamp, signed_stamp)},
        {"AuthenticodeStampCleared", makes([] {
             CMSStamp stamp;
             stamp.clear();
         })},
        {"AuthenticodeStampSigns", sign},
        {"AuthenticodeStampPutsContent",
         signs_anew([](CMSStamp& stamp) { stamp.put_content(blob("04 01 cc")); })},
        {"AuthenticodeStampPutsTime",
         signs_anew([](CMSStamp& stamp) { stamp.put_signingTime(CDateTime(0L, 0)); })},
        {"AuthenticodeStampPutsCertificates", signs_anew([](CMSStamp& stamp) {
             const CBlobList list = certificate_list();
             stamp.put_certificates(&list);
         })},
        {"AuthenticodeStampVerifies", verify},
        {"AuthenticodeStampEncodes", uses(signed_stamp, [](const CMSStamp& stamp) { (void)stamp.encode(); })},
        {"AuthenticodeStampDecodes", decode},
        {"AuthenticodeStampDescribesItsSigner",
         uses(signed_stamp, [](const CMSStamp& stamp) { (void)stamp.get_signerInfo(); })},
    };
}

Operations authenticode_operations_without_memory() {
    return {
        {"AuthenticodeRequestFields",
         [](Trial& trial) {
             const CMSRequest request = authenticode_request();
             trial.call([&] {
                 EXPECT_STREQ(request.get_timeStampAlgorithm(), "1.3.6.1.4.1.311.3.2.1");
                 EXPECT_EQ(request.get_contentInfo().get_content().cbData(), 4u);
                 EXPECT_EQ(request.get_attributes()->size(), 1u);
             });
         }},
        {"AuthenticodeStampFields",
         [](Trial& trial) {
             const CMSStamp stamp = small_stamp();
             trial.call([&] {
                 EXPECT_EQ(stamp.get_content().cbData(), 4u);
                 EXPECT_EQ(stamp.get_signingTime().year(), 2024u);
                 EXPECT_EQ(stamp.get_certificates()->size(), 1u);
             });
         }},
    };
}

}  // namespace Quillmark::test
