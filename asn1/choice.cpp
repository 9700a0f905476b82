#include "asn1/choice.h"

#include "asn1/detail/check.h"

namespace Quillmark::ASN1 {

void Choice::put(unsigned int type, const void* source) {
    const ChoiceValueTraits* traits = findTraits(type);
    detail::check_argument(traits != nullptr);
    void* value = traits->newValue(source);
    delete_value();
    value_ = value;
    type_ = type;
}

void Choice::copy_from(const Choice& source) {
    if (source.value_ != nullptr) {
        put(source.type_, source.value_);
    }
}

}  // namespace Quillmark::ASN1
