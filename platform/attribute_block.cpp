#include "platform/detail/attribute_block.h"

#include <algorithm>
#include <cstring>

#include "platform/detail/object_id.h"

namespace Quillmark::platform {

namespace {

struct Counts {
    std::size_t attributes = 0;
    std::size_t values = 0;
    std::size_t octets = 0;  // of values and texts
};

Counts count(const Element& attributes) {
    Counts counts;
    for (DerWalker walker(attributes); !walker.at_end(); ++counts.attributes) {
        const Attribute attribute = read_attribute(walker);
        counts.octets += object_id_text_size(attribute.oid) + 1;
        for (DerWalker values(attribute.values); !values.at_end(); ++counts.values) {
            counts.octets += values.next().whole.size();
        }
    }
    return counts;
}

// The caller's buffer need not be aligned for the records, so they go in as octets.
template <typename Record>
void put(std::uint8_t*& place, const Record& record) {
    std::memcpy(place, &record, sizeof(Record));
    place += sizeof(Record);
}

class BlockWriter {
  public:
    BlockWriter(std::uint8_t* block, const Counts& counts)
        : header_(block),
          records_(header_ + sizeof(CRYPT_ATTRIBUTES)),
          blobs_(records_ + counts.attributes * sizeof(CRYPT_ATTRIBUTE)),
          octets_(blobs_ + counts.values * sizeof(CRYPT_ATTR_BLOB)) {
        put(header_, CRYPT_ATTRIBUTES{.cAttr = static_cast<DWORD>(counts.attributes),
                                      .rgAttr = reinterpret_cast<PCRYPT_ATTRIBUTE>(records_)});
    }

    void write(const Attribute& attribute) {
        auto* const first_blob = reinterpret_cast<PCRYPT_ATTR_BLOB>(blobs_);
        DWORD value_count = 0;
        for (DerWalker values(attribute.values); !values.at_end(); ++value_count) {
            write_value(values.next().whole);
        }
        auto* const text = reinterpret_cast<char*>(octets_);
        octets_ = reinterpret_cast<std::uint8_t*>(write_object_id_text(attribute.oid, text));
        put(records_,
            CRYPT_ATTRIBUTE{
                .pszObjId = text, .cValue = value_count, .rgValue = value_count == 0 ? nullptr : first_blob});
    }

  private:
    void write_value(Octets value) {
        put(blobs_, CRYPT_ATTR_BLOB{.cbData = static_cast<DWORD>(value.size()), .pbData = octets_});
        octets_ = std::copy(value.begin(), value.end(), octets_);
    }

    std::uint8_t* header_;
    std::uint8_t* records_;
    std::uint8_t* blobs_;
    std::uint8_t* octets_;
};

}  // namespace

std::size_t attribute_block_size(const Element& attributes) {
    const Counts counts = count(attributes);
    return sizeof(CRYPT_ATTRIBUTES) + counts.attributes * sizeof(CRYPT_ATTRIBUTE) +
           counts.values * sizeof(CRYPT_ATTR_BLOB) + counts.octets;
}

void write_attribute_block(const Element& attributes, std::uint8_t* block) {
    BlockWriter writer(block, count(attributes));
    for (DerWalker walker(attributes); !walker.at_end();) {
        writer.write(read_attribute(walker));
    }
}

}  // namespace Quillmark::platform
