#include "tests/asn1data/catalogue_type.h"

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"

namespace Quillmark::test {
namespace {

// There are hundreds of these, so they are as plain as can be.
template <typename Record, typename Control, void (*Copy)(ASN1CTXT*, Record*, Record*),
          void (*Free)(ASN1CTXT*, Record*)>
struct Family {
    static void* make() { return new Record{}; }
    static void destroy(void* record) { delete static_cast<Record*>(record); }
    static ASN1CType* control(ASN1MessageBufferIF& buffer, void* record) {
        return new Control(buffer, *static_cast<Record*>(record));
    }
    static void* get_copy(ASN1CType& control, void* target) {
        return static_cast<Control&>(control).getCopy(static_cast<Record*>(target));
    }
    static void* new_copy(ASN1CType& control) { return static_cast<Control&>(control).newCopy(); }
    static void copy(ASN1CTXT* context, void* source, void* target) {
        Copy(context, static_cast<Record*>(source), static_cast<Record*>(target));
    }
    static void free(ASN1CTXT* context, void* record) { Free(context, static_cast<Record*>(record)); }
};

template <typename Control, void (*Copy)(ASN1CTXT*, void*, void*), void (*Free)(ASN1CTXT*, void*)>
struct NullFamily {
    static void* make() { return nullptr; }
    static void destroy(void* /*record*/) {}
    static ASN1CType* control(ASN1MessageBufferIF& buffer, void* record) {
        return new Control(buffer, record);
    }
    static void* get_copy(ASN1CType& /*control*/, void* target) { return target; }
    static void* new_copy(ASN1CType& /*control*/) { return nullptr; }
    static void copy(ASN1CTXT* context, void* source, void* target) { Copy(context, source, target); }
    static void free(ASN1CTXT* context, void* record) { Free(context, record); }
};

template <typename One>
constexpr CatalogueType type_of(const char* module, const char* name) {
    return {module,        name,          One::make, One::destroy, One::control,
            One::get_copy, One::new_copy, One::copy, One::free};
}

using namespace asn1data;

#define QUILLMARK_TYPE(module, name) \
    type_of<Family<ASN1T_##name, ASN1C_##name, asn1Copy_##name, asn1Free_##name>>(#module, #name),
#define QUILLMARK_NULL(module, name) \
    type_of<NullFamily<ASN1C_##name, asn1Copy_##name, asn1Free_##name>>(#module, #name),
constexpr CatalogueType kAll[] = {
#include "type_list.inc"
};
#undef QUILLMARK_TYPE
#undef QUILLMARK_NULL

}  // namespace

std::span<const CatalogueType> catalogue_types() {
    return kAll;
}

}  // namespace Quillmark::test
