// The values: blobs, texts and times.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/robustness/operations.h"
#include "tests/support/blob.h"
#include "values/blob.h"
#include "values/datetime.h"
#include "values/string_proxy.h"

namespace Quillmark::test {

namespace {

// Longer than what a string keeps in itself.
constexpr char kText[] = "text that is longer than a string object";
constexpr wchar_t kWideText[] = L"text that is longer than a string object";

CBlob old_blob() {
    return blob("0a 0b 0c");
}

CDateTime some_time() {
    return CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 6u, 7u);
}

/// A file for one run.
class TemporaryFile {
  public:
    TemporaryFile() : path_("/tmp/quillmark_robustness_XXXXXX") { close(mkstemp(path_.data())); }
    ~TemporaryFile() { std::remove(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* path() const { return path_.c_str(); }
    std::wstring wide_path() const { return std::wstring(path_.begin(), path_.end()); }

  private:
    std::string path_;
};

/// A row for a change of a blob, which leaves the old octets or has all of the new ones.
template <class Change>
std::function<void(Trial&)> changes_blob(Change change, const char* result) {
    return [change, result](Trial& trial) {
        CBlob subject = old_blob();
        const bool done = trial.call([&] { change(subject); });
        EXPECT_EQ(hex(subject), hex(done ? blob(result) : old_blob()));
        change(subject);
    };
}

/// A row for something that is made and goes.
template <class Make>
std::function<void(Trial&)> makes(Make make) {
    return [make](Trial& trial) { trial.call([&] { (void)make(); }); };
}

}  // namespace

Operations value_operations() {
    return {
        {"BlobOfOctets",
         [](Trial& trial) {
             const CBlob source = old_blob();
             trial.call([&] { EXPECT_EQ(CBlob(source.pbData(), source.cbData()), source); });
         }},
        {"BlobOfSize", makes([] { return CBlob(3); })},
        {"BlobCopy",
         [](Trial& trial) {
             const CBlob source = old_blob();
             trial.call([&] { const CBlob copy(source); });
             EXPECT_EQ(source, old_blob());
         }},
        {"BlobAssignment", changes_blob(
                               [](CBlob& subject) {
                                   const CBlob* const other = new CBlob(1);
                                   const std::unique_ptr<const CBlob> owner(other);
                                   subject = *other;
                               },
                               "00")},
        {"BlobAssign",
         changes_blob([](CBlob& subject) { subject.assign(subject.pbData() + subject.cbData() - 1, 1); },
                      "0c")},
        {"BlobResize",
         [](Trial& trial) {
             CBlob subject = old_blob();
             const bool done = trial.call([&] { subject.resize_to(5); });
             EXPECT_EQ(subject.cbData(), done ? 5u : 3u);
             subject.resize_to(3);
             EXPECT_EQ(subject, old_blob());
         }},
        {"BlobAppends", changes_blob([](CBlob& subject) { subject += CBlob(1); }, "0a 0b 0c 00")},
        {"BlobAppendsItself",
         [](Trial& trial) {
             CBlob subject = old_blob();
             const bool done = trial.call([&] { subject += subject; });
             EXPECT_EQ(subject.cbData(), done ? 6u : 3u);
         }},
        {"BlobReadsFile",
         [](Trial& trial) {
             const TemporaryFile file;
             blob("01 02").writeToFile(file.path());
             CBlob subject = old_blob();
             const bool done = trial.call([&] { subject.readFromFile(file.path()); });
             EXPECT_EQ(hex(subject), hex(done ? blob("01 02") : old_blob()));
         }},
        {"BlobReadsFileByWideName",
         [](Trial& trial) {
             const TemporaryFile file;
             blob("01 02").writeToFile(file.path());
             const std::wstring path = file.wide_path();
             CBlob subject = old_blob();
             const bool done = trial.call([&] { subject.readFromFile(path.c_str()); });
             EXPECT_EQ(hex(subject), hex(done ? blob("01 02") : old_blob()));
         }},
        {"BlobWritesFileByWideName",
         [](Trial& trial) {
             const TemporaryFile file;
             const std::wstring path = file.wide_path();
             const CBlob subject = old_blob();
             if (trial.call([&] { subject.writeToFile(path.c_str()); })) {
                 CBlob written;
                 written.readFromFile(file.path());
                 EXPECT_EQ(written, subject);
             }
         }},
        {"BlobReadsHexadecimalText",
         changes_blob([](CBlob& subject) { subject.readFromHexString("01 02 03 04"); }, "01 02 03 04")},
        {"BlobWritesHexadecimalText",
         [](Trial& trial) {
             const CBlob subject = blob("00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10");
             trial.call([&] { (void)subject.writeToHexString(1); });
         }},
        {"Text", makes([] { return CStringProxy(kText); })},
        {"TextCopy",
         [](Trial& trial) {
             const CStringProxy source(kText);
             trial.call([&] { EXPECT_STREQ(CStringProxy(source).c_str(), kText); });
         }},
        {"TextAssignment",
         [](Trial& trial) {
             const CStringProxy source(kText);
             CStringProxy subject("old");
             const bool done = trial.call([&] { subject = source; });
             EXPECT_STREQ(subject.c_str(), done ? kText : "old");
         }},
        {"WideText", makes([] { return CWStringProxy(kWideText); })},
        {"WideTextCopy",
         [](Trial& trial) {
             const CWStringProxy source(kWideText);
             trial.call([&] { EXPECT_STREQ(CWStringProxy(source).c_str(), kWideText); });
         }},
        {"WideTextAssignment",
         [](Trial& trial) {
             const CWStringProxy source(kWideText);
             CWStringProxy subject(L"old");
             const bool done = trial.call([&] { subject = source; });
             EXPECT_STREQ(subject.c_str(), done ? kWideText : L"old");
         }},
        {"TimeAsGeneralizedTime", makes([] { return some_time().getGeneralizedTime(); })},
        {"TimeForDisplay", makes([] { return some_time().getGeneralizedTimeTrimMicroseconds(); })},
        {"TimeAsText", makes([] { return some_time().tostring(); })},
        {"TimeAsWideText", makes([] { return some_time().towstring(); })},
        {"TimeFromText", makes([] { return CDateTime("20240102030405.006007Z"); })},
        {"TimeFromXmlText",
         makes([] { return fromXsdDateTimeString("2024-01-02T03:04:05.123456789012345678+00:00"); })},
        {"TimeAsXmlText", makes([] { return toXsdDateTimeString(some_time()); })},
        {"SpanAsGeneralizedTime", makes([] { return CDateTimeSpan(5, 6).getGeneralizedTime(); })},
        {"SpanAsText", makes([] { return CDateTimeSpan(5, 6).tostring(); })},
        {"SpanAsWideText", makes([] { return CDateTimeSpan(5, 6).towstring(); })},
    };
}

Operations value_operations_without_memory() {
    return {
        {"Blob",
         [](Trial& trial) {
             CBlob subject = old_blob();
             CBlob other = old_blob();
             trial.call([&] {
                 const CBlob empty;
                 EXPECT_EQ(empty.cbData(), 0u);
                 EXPECT_NE(subject.pbData(), nullptr);
                 subject.swap(other);
                 subject.reverse();
                 EXPECT_TRUE(subject != other);
                 EXPECT_TRUE(other < subject);
                 EXPECT_TRUE(other <= subject);
                 EXPECT_TRUE(subject > other);
                 EXPECT_TRUE(subject >= other);
                 EXPECT_FALSE(subject == other);
                 subject.clear();
             });
         }},
        {"BlobWritesFile",
         [](Trial& trial) {
             const TemporaryFile file;
             const CBlob subject = old_blob();
             trial.call([&] { subject.writeToFile(file.path()); });
         }},
        {"Texts",
         [](Trial& trial) {
             const CStringProxy text(kText);
             const CWStringProxy wide(kWideText);
             trial.call([&] {
                 EXPECT_STREQ(text.c_str(), kText);
                 EXPECT_STREQ(wide.c_str(), kWideText);
             });
         }},
        {"TimeFromItsForms",
         [](Trial& trial) {
             trial.call([] {
                 const CDateTime time = some_time();
                 EXPECT_EQ(CDateTime(time.getFileTime()), time);
                 EXPECT_LT(CDateTime(time.getSystemTime()), time);
                 EXPECT_LT(CDateTime(static_cast<long>(time.getTime()), 0u), time);
                 EXPECT_LT(CDateTime(static_cast<long long>(time.getTime()), 0u), time);
                 EXPECT_GT(CDateTime::Now(), time);
             });
         }},
        {"TimeFields",
         [](Trial& trial) {
             trial.call([] {
                 const CDateTime time = some_time();
                 EXPECT_EQ(time.year(), 2024u);
                 EXPECT_EQ(time.month(), 1u);
                 EXPECT_EQ(time.day(), 2u);
                 EXPECT_EQ(time.hour(), 3u);
                 EXPECT_EQ(time.minute(), 4u);
                 EXPECT_EQ(time.second(), 5u);
                 EXPECT_EQ(time.millisecond(), 6u);
                 EXPECT_EQ(time.microsecond(), 7u);
             });
         }},
        {"TimeArithmetic",
         [](Trial& trial) {
             trial.call([] {
                 CDateTime time = some_time();
                 CDateTime later = time + CDateTimeSpan::OneDay();
                 EXPECT_TRUE(later > time);
                 EXPECT_TRUE(later >= time);
                 EXPECT_TRUE(time < later);
                 EXPECT_TRUE(time <= later);
                 EXPECT_TRUE(time != later);
                 EXPECT_FALSE(time == later);
                 EXPECT_TRUE(later - time == CDateTimeSpan::oneDay);
                 EXPECT_TRUE(later - CDateTimeSpan::OneDay() == time);
                 later -= CDateTimeSpan::OneHour();
                 later += CDateTimeSpan::OneMinute();
                 later.swap(time);
                 EXPECT_TRUE(DateAddA("m", 1, time) > DateAddW(L"d", 1, time));
                 (void)time.utcToLocal();
                 (void)time.localToUtc();
             });
         }},
        {"Spans",
         [](Trial& trial) {
             trial.call([] {
                 CDateTimeSpan span("00000000000005Z");
                 CDateTimeSpan other = CDateTimeSpan::OneYear() + CDateTimeSpan::OneMonth();
                 EXPECT_TRUE(span == CDateTimeSpan(5, 0));
                 EXPECT_TRUE(span != other);
                 EXPECT_TRUE(span < other);
                 EXPECT_TRUE(span <= other);
                 EXPECT_TRUE(other > span);
                 EXPECT_TRUE(other >= span);
                 EXPECT_EQ(span.getHighPart(), 0u);
                 EXPECT_EQ(span.getLowPart(), 50'000'000u);
                 span += CDateTimeSpan::OneSecond() * 2;
                 span -= CDateTimeSpan::OneMillisecond();
                 span *= 6;
                 span /= 2;
                 span %= 1000;
                 EXPECT_TRUE(other - span > span % 7);
                 EXPECT_TRUE(other / 5 > span % CDateTimeSpan::OneMinute());
                 EXPECT_GT(other / CDateTimeSpan::OneHour(), 0u);
                 span.swap(other);
             });
         }},
    };
}

}  // namespace Quillmark::test
