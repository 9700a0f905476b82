#include "inspect/input.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include "inspect/element.h"
#include "inspect/text.h"
#include "support/failure.h"

namespace inspect {

namespace {

using Quillmark::CBlob;

constexpr char kBegin[] = "-----BEGIN ";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct FreeBio {
    void operator()(BIO* bio) const { BIO_free(bio); }
};

struct FreeOpenssl {
    void operator()(void* memory) const { OPENSSL_free(memory); }
};

[[noreturn]] void throw_errno() {
    throw example::Failure(std::strerror(errno));
}

std::string read_all(std::FILE* file) {
    std::string contents;
    char piece[1 << 16];
    while (const std::size_t count = std::fread(piece, 1, sizeof piece, file)) {
        contents.append(piece, count);
    }
    if (std::ferror(file) != 0) {
        throw_errno();
    }
    return contents;
}

std::string text_of(const CBlob& octets) {
    return std::string(reinterpret_cast<const char*>(octets.pbData()), octets.cbData());
}

// Of the first BEGIN at the start of a line; `npos` when there is none.
std::size_t find_begin(const std::string& text, std::size_t from) {
    for (std::size_t found = text.find(kBegin, from); found != std::string::npos;
         found = text.find(kBegin, found + 1)) {
        if (found == 0 || text[found - 1] == '\n' || text[found - 1] == '\r') {
            return found;
        }
    }
    return std::string::npos;
}

bool is_space(char character) {
    return std::strchr("\t\n\f\r", character) != nullptr && character != '\0';
}

bool is_text(const std::string& text) {
    std::string characters;
    std::remove_copy_if(text.begin(), text.end(), std::back_inserter(characters), is_space);
    return printable(characters) == characters;
}

PemBlock read_block(BIO* bio, std::size_t offset) {
    char* label = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long size = 0;
    if (PEM_read_bio(bio, &label, &header, &data, &size) != 1) {
        const char* reason = ERR_reason_error_string(ERR_peek_last_error());
        const std::string text = reason != nullptr ? reason : "unknown reason";
        ERR_clear_error();
        throw Malformed(offset, "the PEM block that begins here cannot be read: " + text);
    }
    const std::unique_ptr<char, FreeOpenssl> label_owner(label);
    const std::unique_ptr<char, FreeOpenssl> header_owner(header);
    const std::unique_ptr<unsigned char, FreeOpenssl> data_owner(data);
    return {label, *header != '\0', CBlob(data, static_cast<unsigned long>(size))};
}

}  // namespace

CBlob read_input(const std::string& path) {
    std::string contents;
    if (path == "-") {
        contents = read_all(stdin);
    } else {
        const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
        if (!file) {
            throw_errno();
        }
        contents = read_all(file.get());
    }
    return CBlob(reinterpret_cast<const unsigned char*>(contents.data()), contents.size());
}

bool is_text(const CBlob& octets) {
    return is_text(text_of(octets));
}

bool is_pem(const CBlob& octets) {
    const std::string text = text_of(octets);
    const std::size_t begin = find_begin(text, 0);
    // People put text in front of a block, but no encoding.
    return begin != std::string::npos && is_text(text.substr(0, begin));
}

std::vector<PemBlock> read_pem(const CBlob& octets) {
    const std::string text = text_of(octets);
    std::vector<PemBlock> blocks;
    for (std::size_t begin = find_begin(text, 0); begin != std::string::npos;) {
        const std::size_t next = find_begin(text, begin + 1);
        const std::string block = text.substr(begin, next == std::string::npos ? next : next - begin);
        const std::unique_ptr<BIO, FreeBio> bio(
            BIO_new_mem_buf(block.data(), static_cast<int>(block.size())));
        if (!bio) {
            throw std::bad_alloc();
        }
        blocks.push_back(read_block(bio.get(), begin));
        begin = next;
    }
    return blocks;
}

}  // namespace inspect
