#include "files.h"

#include <cstring>
#include <memory>

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include "failure.h"

namespace example {

namespace {

struct FreeBio {
    void operator()(BIO* bio) const { BIO_free(bio); }
};

// One block between a BEGIN and an END line (RFC 7468).
struct PemBlock {
    char* label = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long size = 0;

    PemBlock() = default;
    PemBlock(const PemBlock&) = delete;
    PemBlock& operator=(const PemBlock&) = delete;
    ~PemBlock() {
        OPENSSL_free(label);
        OPENSSL_free(header);
        OPENSSL_free(data);
    }

    bool read(BIO* bio) { return PEM_read_bio(bio, &label, &header, &data, &size) == 1; }
};

// A certificate is a SEQUENCE, whose first octet begins no text.
bool is_der(const Quillmark::CBlob& contents) {
    return contents.cbData() > 1 && contents.pbData()[0] == 0x30 && (contents.pbData()[1] & 0x80) != 0;
}

}  // namespace

Quillmark::CBlob read_file(const std::string& path) {
    Quillmark::CBlob contents;
    attempt("reading " + path, [&] { contents.readFromFile(path.c_str()); });
    return contents;
}

void write_file(const std::string& path, const Quillmark::CBlob& contents) {
    attempt("writing " + path, [&] { contents.writeToFile(path.c_str()); });
    if (read_file(path) != contents) {
        throw Failure("writing " + path + ": the file did not take all octets");
    }
}

Quillmark::CBlobList read_certificates(const std::string& path) {
    const std::unique_ptr<BIO, FreeBio> file(BIO_new_file(path.c_str(), "r"));
    if (!file) {
        throw Failure("reading " + path, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    }
    Quillmark::CBlobList certificates;
    for (;;) {
        PemBlock block;
        if (!block.read(file.get())) {
            break;
        }
        if (std::strcmp(block.label, PEM_STRING_X509) == 0) {
            certificates.push_back(Quillmark::CBlob(block.data, static_cast<unsigned long>(block.size)));
        }
    }
    ERR_clear_error();  // the end of the file counts as an error there
    if (certificates.empty() && is_der(read_file(path))) {
        certificates.push_back(read_file(path));
    }
    if (certificates.empty()) {
        throw Failure("reading " + path + ": no certificate in it");
    }
    return certificates;
}

}  // namespace example
