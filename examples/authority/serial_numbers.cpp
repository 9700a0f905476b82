#include "authority/serial_numbers.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "authority/text.h"
#include "support/failure.h"
#include "support/hash.h"
#include "support/number.h"

namespace authority {

namespace {

using example::Failure;

constexpr char kHead[] =
    "Serial numbers of a time-stamp authority. Not to be edited, copied or put back.\nnext ";
constexpr std::size_t kDigits = 32;

// Large enough that the disk is not what limits stamping, small enough that gaps do not matter.
constexpr std::uint64_t kBlock = 4096;

[[noreturn]] void fail(const std::string& doing, int reason = errno) {
    throw Failure(doing + ": " + std::strerror(reason));
}

std::string real_path(const std::string& path) {
    // Links are followed here once and for all: what is replaced later must be the file and no link to it.
    std::error_code reason;
    const std::filesystem::path real =
        std::filesystem::weakly_canonical(std::filesystem::absolute(path, reason), reason);
    if (reason || real.filename().empty() || std::filesystem::is_symlink(real)) {
        throw Failure("opening the serial numbers " + path + ": no file can be there");
    }
    return real.string();
}

std::string contents_of(int file) {
    char contents[1024];  // several times what is written
    const ssize_t size = pread(file, contents, sizeof contents, 0);
    return std::string(contents, size > 0 ? static_cast<std::size_t>(size) : 0);
}

// A name that has just come about, or that stands for another file now, survives a power failure only
// when its folder is on the disk too.
void sync_folder(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor || fsync(descriptor.get()) != 0) {
        fail("writing the folder " + folder);
    }
}

bool is_same_file(const struct stat& left, const struct stat& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

void write_all(int file, const std::string& text, const std::string& name) {
    if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) || fsync(file) != 0) {
        fail("writing " + name);
    }
}

}  // namespace

SerialNumbers::SerialNumbers(const std::string& path) : path_(real_path(path)) {
    // Between finding no file and making one, or opening it and locking it, another process can have done
    // either; then the answer of the second look counts.
    for (int attempt = 0; !open() && !create(); ++attempt) {
        if (attempt == 10) {
            throw Failure("opening the serial numbers " + path_ + ": others replace the file all the time");
        }
    }
    read();
    reserve();
}

// Whether there is a file, which then is locked.
bool SerialNumbers::open() {
    Descriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno == ENOENT) {
        return false;
    }
    if (!file) {
        fail("opening the serial numbers " + path_);
    }
    struct stat opened = {};
    if (fstat(file.get(), &opened) != 0 || !S_ISREG(opened.st_mode) || opened.st_nlink > 1) {
        throw Failure("opening the serial numbers " + path_ + ": not a file, or one with several names");
    }
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        fail("another process gives the serial numbers of " + path_);
    }
    struct stat named = {};
    if (stat(path_.c_str(), &named) != 0 || !is_same_file(opened, named)) {
        return false;
    }
    file_ = std::move(file);
    return true;
}

// Whether this process has made the file.
bool SerialNumbers::create() {
    const std::vector<unsigned char> random = example::random_octets(prefix_.size());
    std::copy(random.begin(), random.end(), prefix_.begin());
    prefix_[0] = static_cast<unsigned char>((prefix_[0] & 0x3F) | 0x40);  // positive, and all of one length
    std::string name;
    Descriptor file = write_beside(text_from(1), name);
    // Unlike rename, link leaves a file alone that another process has made meanwhile.
    const bool made = link(name.c_str(), path_.c_str()) == 0;
    const int reason = errno;
    unlink(name.c_str());
    if (!made && reason != EEXIST) {
        fail("making " + path_, reason);
    }
    if (made) {
        sync_folder(path_);
        file_ = std::move(file);
    }
    return made;
}

void SerialNumbers::read() {
    const std::string contents = contents_of(file_.get());
    const std::size_t head = sizeof kHead - 1;
    const auto number = from_hex(contents.substr(std::min(head, contents.size()), kDigits));
    if (number && number->size() == kDigits / 2) {
        std::copy_n(number->begin(), prefix_.size(), prefix_.begin());
        std::for_each(number->begin() + prefix_.size(), number->end(),
                      [&](unsigned char octet) { next_ = next_ << 8 | octet; });
    }
    // What is not as it was written, to the last octet, may give numbers twice.
    if (contents != text_from(next_)) {
        throw Failure("the file of serial numbers " + path_ + " is damaged");
    }
    reserved_ = next_;
}

std::vector<unsigned char> SerialNumbers::number(std::uint64_t count) const {
    std::vector<unsigned char> octets(prefix_.begin(), prefix_.end());
    for (int shift = 56; shift >= 0; shift -= 8) {
        octets.push_back(static_cast<unsigned char>(count >> shift));
    }
    return octets;
}

std::string SerialNumbers::text_from(std::uint64_t count) const {
    const std::vector<unsigned char> octets = number(count);
    const std::string text = kHead + to_hex(octets.data(), octets.size()) + "\n";
    const Quillmark::CBlob hash =
        example::hash_of(example::sha256(),
                         Quillmark::CBlob(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
    return text + "sha256 " + to_hex(hash.pbData(), hash.cbData()) + "\n";
}

// A new file in the same folder, on the disk and locked.
Descriptor SerialNumbers::write_beside(const std::string& text, std::string& name) const {
    name = path_ + ".XXXXXX";
    Descriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (!file) {
        fail("making a file beside " + path_);
    }
    try {
        struct stat old = {};
        if (file_ && fstat(file_.get(), &old) == 0 && fchmod(file.get(), old.st_mode & 07777) != 0) {
            fail("writing " + name);
        }
        if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
            fail("locking " + name);
        }
        write_all(file.get(), text, name);
    } catch (...) {
        unlink(name.c_str());
        throw;
    }
    return file;
}

// Takes the next block out of the file. The numbers are given only when all of it is on the disk.
void SerialNumbers::reserve() {
    if (reserved_ > std::numeric_limits<std::uint64_t>::max() - kBlock) {
        throw Failure("the serial numbers of " + path_ + " are used up");
    }
    std::string name;
    Descriptor file = write_beside(text_from(reserved_ + kBlock), name);
    if (rename(name.c_str(), path_.c_str()) != 0) {
        const int reason = errno;
        unlink(name.c_str());
        fail("replacing " + path_, reason);
    }
    file_ = std::move(file);
    sync_folder(path_);
    reserved_ += kBlock;
}

std::vector<unsigned char> SerialNumbers::next() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (next_ == reserved_) {
        reserve();
    }
    return number(next_++);
}

}  // namespace authority
