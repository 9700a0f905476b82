// Blobs from and to files.

#include <gtest/gtest.h>

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/failing_new.h"
#include "tests/support/result_code.h"
#include "values/blob.h"

namespace {

using Quillmark::CBlob;

const HRESULT kNotOpened = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
const HRESULT kNotRead = HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT);

class BlobFile : public testing::Test {
  protected:
    BlobFile() { std::filesystem::create_directories(folder_); }
    ~BlobFile() override { std::filesystem::remove_all(folder_); }

    std::string path(const char* name) const { return (folder_ / name).string(); }

    std::string with_contents(const char* name, const std::string& contents) const {
        std::ofstream(path(name), std::ios::binary) << contents;
        return path(name);
    }

    static CBlob two_bytes() { return CBlob(reinterpret_cast<const unsigned char*>("\x01\x02"), 2); }

  private:
    std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                    ("blob_file_test." + std::to_string(getpid()) + "." +
                                     testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(BlobFile, ComesBackAsItWasWritten) {
    const CBlob written(reinterpret_cast<const unsigned char*>("a\0\r\n\x1A\xFF"), 6);
    written.writeToFile(path("file").c_str());
    CBlob read;
    read.readFromFile(path("file").c_str());
    EXPECT_EQ(read, written);
}

TEST_F(BlobFile, WritingTruncates) {
    const std::string name = with_contents("file", "a long old text");
    two_bytes().writeToFile(name.c_str());
    EXPECT_EQ(std::filesystem::file_size(name), 2u);
}

TEST_F(BlobFile, WritingAnEmptyBlobMakesAnEmptyFile) {
    CBlob().writeToFile(path("file").c_str());
    EXPECT_EQ(std::filesystem::file_size(path("file")), 0u);
}

TEST_F(BlobFile, MissingFileLeavesSizeZeroAndTheOldStorage) {
    CBlob blob = two_bytes();
    const unsigned char* storage = blob.pbData();
    EXPECT_CODE(kNotOpened, blob.readFromFile(path("missing").c_str()));
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), storage);
}

TEST_F(BlobFile, EmptyFileLeavesSizeZeroAndNullStorage) {
    CBlob blob = two_bytes();
    blob.readFromFile(with_contents("empty", "").c_str());
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), nullptr);
}

TEST_F(BlobFile, DirectoryCannotBeRead) {
    CBlob blob = two_bytes();
    const unsigned char* storage = blob.pbData();
    EXPECT_CODE(kNotRead, blob.readFromFile(path("").c_str()));
    EXPECT_EQ(blob.cbData(), 0u);
    EXPECT_EQ(blob.pbData(), storage);
}

TEST_F(BlobFile, FileWithoutPositionCannotBeRead) {
    // A FIFO cannot be sought in; this end is open for writing as well, so that opening does not wait.
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    std::fstream other_end(path("fifo"), std::ios::in | std::ios::out);
    CBlob blob = two_bytes();
    EXPECT_CODE(kNotRead, blob.readFromFile(path("fifo").c_str()));
    EXPECT_EQ(blob.cbData(), 0u);
}

TEST_F(BlobFile, NullPathIsAMissingFile) {
    CBlob blob;
    EXPECT_CODE(kNotOpened, blob.readFromFile(static_cast<const char*>(nullptr)));
    EXPECT_CODE(kNotOpened, blob.writeToFile(static_cast<const char*>(nullptr)));
}

TEST_F(BlobFile, CannotBeWrittenIntoAMissingFolder) {
    EXPECT_CODE(kNotOpened, two_bytes().writeToFile(path("missing/file").c_str()));
}

// Intended: a failing write is silent. Every write to this device fails for want of space.
TEST_F(BlobFile, FailingWriteIsNotReported) {
    ASSERT_TRUE(std::filesystem::exists("/dev/full"));
    EXPECT_NO_THROW(two_bytes().writeToFile("/dev/full"));
}

TEST_F(BlobFile, WidePathIsConverted) {
    const std::wstring name = std::filesystem::path(path("")).wstring() + L"\u0444\u0430\u0439\u043B";
    two_bytes().writeToFile(name.c_str());
    CBlob blob;
    blob.readFromFile(name.c_str());
    EXPECT_EQ(blob, two_bytes());
    EXPECT_TRUE(std::filesystem::exists(path("\xD1\x84\xD0\xB0\xD0\xB9\xD0\xBB")));
}

TEST_F(BlobFile, WideMissingFileIsTheSameFailure) {
    CBlob blob = two_bytes();
    EXPECT_CODE(kNotOpened, blob.readFromFile((std::filesystem::path(path("missing")).wstring()).c_str()));
    EXPECT_EQ(blob.cbData(), 0u);
}

TEST_F(BlobFile, WideNullPathIsThePlatformsFailure) {
    CBlob blob = two_bytes();
    EXPECT_CODE(E_INVALIDARG, blob.readFromFile(static_cast<const wchar_t*>(nullptr)));
    EXPECT_CODE(E_INVALIDARG, blob.writeToFile(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(blob, two_bytes());
}

TEST_F(BlobFile, ReadingKeepsTheBlobWhenMemoryRunsOut) {
    const std::string name = with_contents("file", "contents");
    CBlob blob = two_bytes();
    const std::size_t failures = Quillmark::test::for_each_failing_new(
        [&] { blob.readFromFile(name.c_str()); }, [&] { EXPECT_EQ(blob, two_bytes()); });
    EXPECT_GT(failures, 0u);
    EXPECT_EQ(blob.cbData(), 8u);
}

}  // namespace
