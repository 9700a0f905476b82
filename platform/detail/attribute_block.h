#pragma once

// Attributes of a signer as the interface hands them out: CRYPT_ATTRIBUTES, the CRYPT_ATTRIBUTE records, the
// blobs of all values, then the values and the OID texts, all in one block of the caller with pointers into
// it.

#include "platform/detail/signed_data.h"

namespace Quillmark::platform {

/// Octets that the block takes.
std::size_t attribute_block_size(const Element& attributes);

/// Fills a block of that size. Order and values are those of the message.
void write_attribute_block(const Element& attributes, std::uint8_t* block);

}  // namespace Quillmark::platform
