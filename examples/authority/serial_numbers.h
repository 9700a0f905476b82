#pragma once

// Serial numbers of stamps (RFC 3161 2.4.2): positive, at most 160 bits, and never the same twice, whatever
// happens to the process.
//
// A number has eight random octets, drawn when the file is made so that even a lost file repeats nothing, and
// eight that count. The file says where counting goes on. It is moved ahead by a block of numbers before the
// first of them is given, so a process that dies leaves a gap and no repetition. Each of its versions is
// written beside it, brought to the disk and put in its place as a whole. The process holds a lock on it
// (flock); a second one finds the file locked under whatever name.

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "authority/descriptor.h"

namespace authority {

/// The numbers of one file. Any number of threads may ask.
class SerialNumbers {
  public:
    /// Opens the file, or makes it when there is none. Throws `example::Failure` for one that another process
    /// has open, that is damaged or that cannot be replaced.
    explicit SerialNumbers(const std::string& path);

    /// The octets of a number, most significant first. Throws `example::Failure` when no more can be reserved
    /// now; the next call tries again.
    std::vector<unsigned char> next();

  private:
    using Prefix = std::array<unsigned char, 8>;

    bool open();
    bool create();
    void read();
    std::vector<unsigned char> number(std::uint64_t count) const;
    std::string text_from(std::uint64_t count) const;
    Descriptor write_beside(const std::string& text, std::string& name) const;
    void reserve();

    std::mutex mutex_;
    std::string path_;
    Descriptor file_;  // holds the lock
    Prefix prefix_{};
    std::uint64_t next_ = 1;
    std::uint64_t reserved_ = 1;  // the first number that the file does not give away
};

}  // namespace authority
