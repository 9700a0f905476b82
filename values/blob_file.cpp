// Blobs from and to files.

#include "values/blob.h"

#include "values/detail/last_error.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace Quillmark {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;

// Null when the file cannot be opened.
File open_file(const char* path, const char* mode) {
    return File(std::fopen(path != nullptr ? path : "", mode));
}

// The size of the file, whose position is then its end. Nothing for what has no size to go by: a pipe, or a
// directory, which opens for reading and may claim any size.
std::optional<unsigned long> size_of(std::FILE* file) {
    struct stat status;
    if (fstat(fileno(file), &status) != 0 || S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    if (std::fseek(file, 0, SEEK_END) != 0) {
        return std::nullopt;
    }
    const long end = std::ftell(file);
    return end < 0 ? std::nullopt : std::optional<unsigned long>(end);
}

bool read_from_start(std::FILE* file, const CBlob& contents) {
    if (contents.cbData() == 0) {
        return true;
    }
    return std::fseek(file, 0, SEEK_SET) == 0 &&
           std::fread(contents.pbData(), 1, contents.cbData(), file) == contents.cbData();
}

[[noreturn]] void throw_path_conversion_failure() {
    const DWORD error = GetLastError();
    throw CAtlException(HRESULT_FROM_WIN32(error != 0 ? error : ERROR_FILE_CORRUPT));
}

std::string narrow_path(const wchar_t* path) {
    const int size = WideCharToMultiByte(CP_ACP, 0, path, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        throw_path_conversion_failure();
    }
    std::string narrow(static_cast<std::size_t>(size), '\0');
    if (WideCharToMultiByte(CP_ACP, 0, path, -1, narrow.data(), size, nullptr, nullptr) <= 0) {
        throw_path_conversion_failure();
    }
    return narrow;
}

}  // namespace

void CBlob::readFromFile(const char* path) {
    const File file = open_file(path, "rb");
    if (file == nullptr) {
        clear();
        throw CAtlException(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    }
    const std::optional<unsigned long> size = size_of(file.get());
    if (!size) {
        clear();
        throw CAtlException(HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT));
    }
    CBlob contents;
    contents.resize_to(*size);
    if (!read_from_start(file.get(), contents)) {
        clear();
        throw CAtlException(HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT));
    }
    swap(contents);
}

void CBlob::readFromFile(const wchar_t* path) {
    readFromFile(narrow_path(path).c_str());
}

void CBlob::writeToFile(const char* path) const {
    const File file = open_file(path, "wb");
    if (file == nullptr) {
        throw CAtlException(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    }
    // Intended: a failing write or close is not reported.
    if (cbData_ != 0) {
        static_cast<void>(std::fwrite(pbData(), 1, cbData_, file.get()));
    }
}

void CBlob::writeToFile(const wchar_t* path) const {
    writeToFile(narrow_path(path).c_str());
}

}  // namespace Quillmark
