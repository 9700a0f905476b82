#pragma once

// The fuzz targets. Each drives one part of the library with octets of any kind and holds it to laws; the
// source that defines it says which.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/law.h"

namespace Quillmark::fuzz {

struct Target {
    const char* name;
    void (*check)(Octets input);
    /// What the first two octets of an input choose from, in order; null when they choose nothing.
    std::vector<std::string> (*choices)();
    /// Octets of memory for each octet of the input, see `run`.
    std::size_t memory_factor = 1024;
};

std::span<const Target> targets();
/// Ends the program when there is none of that name.
const Target& target_named(std::string_view name);

/// Runs a target, and holds it to what is law for all of them: nothing of the codec's heap stays in use, and
/// the memory used at one time is no more than `kFixedMemory` and the target's factor for each octet of the
/// input. Returns the octets used.
std::size_t run(const Target& target, Octets input);

constexpr std::size_t kFixedMemory = 256 * 1024;

void check_request(Octets input);
void check_response(Octets input);
void check_token(Octets input);
void check_cms_request(Octets input);
void check_cms_stamp(Octets input);
void check_signing(Octets input);
void check_catalogue(Octets input);
std::vector<std::string> catalogue_choices();
void check_objects(Octets input);
std::vector<std::string> object_choices();
void check_service_message(Octets input);
void check_service_certificate(Octets input);
void check_time_text(Octets input);
void check_object_id_text(Octets input);
void check_big_integer_text(Octets input);
void check_name_text(Octets input);
void check_hexadecimal_text(Octets input);
void check_character_text(Octets input);

}  // namespace Quillmark::fuzz
