#include "fuzz/target.h"

#include "fuzz/memory.h"

namespace Quillmark::fuzz {

namespace {

/// An empty element of a list of CertificatePair or ACPathData, of two octets, has a record with room for all
/// that certificates have. No message leads to these lists.
constexpr std::size_t kRoomForCertificates = 4096;

constexpr Target kTargets[] = {
    {"catalogue", check_catalogue, catalogue_choices, kRoomForCertificates},
    {"objects", check_objects, object_choices},
    {"service_message", check_service_message, nullptr},
    {"service_certificate", check_service_certificate, nullptr},
    {"request", check_request, nullptr},
    {"response", check_response, nullptr},
    {"token", check_token, nullptr},
    {"cms_request", check_cms_request, nullptr},
    {"cms_stamp", check_cms_stamp, nullptr},
    {"signing", check_signing, nullptr},
    {"time_text", check_time_text, nullptr},
    {"object_id_text", check_object_id_text, nullptr},
    {"big_integer_text", check_big_integer_text, nullptr},
    {"name_text", check_name_text, nullptr},
    {"hexadecimal_text", check_hexadecimal_text, nullptr},
    {"character_text", check_character_text, nullptr},
};

}  // namespace

std::span<const Target> targets() {
    return kTargets;
}

const Target& target_named(std::string_view name) {
    for (const Target& target : kTargets) {
        if (name == target.name) {
            return target;
        }
    }
    broken("there is no target " + std::string(name));
}

std::size_t run(const Target& target, Octets input) {
    const MemoryUse memory;
    target.check(input);
    require(memory.codec_blocks() == 0, "nothing of the codec's heap stays in use");
    if (memory.peak() > kFixedMemory + target.memory_factor * input.size()) {
        broken("memory is in proportion to the input: " + std::to_string(memory.peak()) + " octets for " +
               std::to_string(input.size()));
    }
    return memory.peak();
}

}  // namespace Quillmark::fuzz
