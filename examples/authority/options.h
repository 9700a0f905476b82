#pragma once

// What the authority is told when it starts.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/hash.h"
#include "support/reply.h"
#include "tsp/accuracy.h"

namespace authority {

struct Options {
    std::string key;
    std::string password_file;
    std::string certificate;
    std::vector<std::string> chain;
    example::Terms terms;
    std::optional<Quillmark::PKI::TSP::CAccuracy> accuracy;
    const example::HashAlgorithm* signature_hash = nullptr;  // null: what goes with the key
    bool ordering = false;
    bool tsa_name = false;
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;
    unsigned int threads = 64;
    std::string serials;
    std::size_t max_request = 65536;
};

/// Null when help was asked for, and printed. Throws `example::Failure` for arguments that are wrong.
std::optional<Options> read_options(const std::vector<std::string>& arguments);

}  // namespace authority
