"""Writes information_objects.h and .cpp: object classes, objects and sets (X.681)."""

from __future__ import annotations

from . import model, names
from .template import fill, layout

_HEADER = """
    #pragma once

    // Information object classes, objects and sets: what type stands behind which identifier. Made by
    // tools/typegen. The names of the objects are plain words (`name`, `title`), so this header is for the
    // sources of the catalogue alone.

    #include <pthread.h>

    #include "asn1data/codecs.h"
    #include "asn1data/control_classes.h"
    #include "runtime/detail/object_set.h"

    namespace asn1data {

    $classes

    // The types that objects carry

    $families

    // Objects

    $objects

    // Sets

    $sets

    }  // namespace asn1data
"""

_CLASS = """
    /// An object of class $notation. One without a type keeps these operations, which do nothing.
    class $name {
      public:
        $presence
        ASN1TObjId id;

        virtual void* constructASN1T$field(ASN1CTXT* ctxt) const;
        virtual ASN1CType* constructASN1C$field(ASN1MessageBufferIF& buffer, void* record) const;
        virtual void destructASN1C$field(ASN1CType* control) const;
        virtual ~$name() {}
        virtual int encodeBER$field(ASN1CTXT* ctxt, Asn1TObject& value) const;
        virtual int decodeBER$field(ASN1CTXT* ctxt, Asn1TObject& value) const;
        virtual void copy$field(ASN1CTXT* ctxt, Asn1TObject& src, Asn1TObject& dst) const;
        virtual void free$field(ASN1CTXT* ctxt, Asn1TObject& value) const;

      protected:
        $name(std::initializer_list<uint32_t> arcs$presence_parameter);
    };

    /// An object of class $notation that carries a type, which `Operations` handle.
    template <typename Operations>
    class ${name}_carrying : public $name {
      public:
        void* constructASN1T$field(ASN1CTXT* ctxt) const override { return Operations::construct(ctxt); }
        ASN1CType* constructASN1C$field(ASN1MessageBufferIF& buffer, void* record) const override {
            return Operations::control(buffer, record);
        }
        void destructASN1C$field(ASN1CType* control) const override { control->~ASN1CType(); }
        int encodeBER$field(ASN1CTXT* ctxt, Asn1TObject& value) const override {
            return Operations::encode(ctxt, value);
        }
        int decodeBER$field(ASN1CTXT* ctxt, Asn1TObject& value) const override {
            return Operations::decode(ctxt, value);
        }
        void copy$field(ASN1CTXT* ctxt, Asn1TObject& src, Asn1TObject& dst) const override {
            Operations::copy(ctxt, src, dst);
        }
        void free$field(ASN1CTXT* ctxt, Asn1TObject& value) const override {
            Operations::release(ctxt, value);
        }

      protected:
        explicit ${name}_carrying(std::initializer_list<uint32_t> arcs)
            : $name(arcs$presence_argument) {}
    };
"""

_CLASS_SOURCE = """
    $name::$name(std::initializer_list<uint32_t> arcs$presence_parameter)
        : ${presence_member}id(static_cast<unsigned char>(arcs.size()), arcs.begin()) {}

    void* $name::constructASN1T$field(ASN1CTXT* /*ctxt*/) const {
        return nullptr;
    }

    ASN1CType* $name::constructASN1C$field(ASN1MessageBufferIF& /*buffer*/, void* /*record*/) const {
        return nullptr;
    }

    void $name::destructASN1C$field(ASN1CType* /*control*/) const {}

    int $name::encodeBER$field(ASN1CTXT* /*ctxt*/, Asn1TObject& /*value*/) const {
        return 0;
    }

    int $name::decodeBER$field(ASN1CTXT* /*ctxt*/, Asn1TObject& /*value*/) const {
        return 0;
    }

    void $name::copy$field(ASN1CTXT* /*ctxt*/, Asn1TObject& /*src*/, Asn1TObject& /*dst*/) const {}

    void $name::free$field(ASN1CTXT* /*ctxt*/, Asn1TObject& /*value*/) const {}
"""

_FAMILY = """
    struct ${name}_family {
        typedef $record Record;
        typedef $control Control;
        static constexpr auto encode = $encode;
        static constexpr auto decode = $decode;
        static constexpr auto copy = $copy;
        static constexpr auto release = $free;
    };
    typedef Quillmark::detail::Carried<${name}_family> ${name}_operations;
"""

_NULL_FAMILY = """
    typedef Quillmark::detail::CarriedNull<$control> ${name}_operations;
"""

_OBJECT = """
    /// $remark
    class $name : public $base {
      public:
        $name();
    };
"""

_SET = """
    /// $members objects of class $object_class, in the order of lookup.
    class $name : public Quillmark::detail::ObjectSet<$object_class, $count> {
      public:
        /// The one set, built at the first call. Throws `std::bad_alloc`; a later call then tries again.
        static $name* instance(ASN1CTXT* ctxt);
        explicit $name(ASN1CTXT* ctxt);

      private:
        friend void $nameOnce();
        static $name* mpInstance;
        static pthread_once_t mOnce;
    };
"""

_SET_SOURCE = """
    $name* $name::mpInstance = nullptr;
    pthread_once_t $name::mOnce = PTHREAD_ONCE_INIT;

    void $nameOnce() {
        build_set($name::mpInstance);
    }

    $name* $name::instance(ASN1CTXT* /*ctxt*/) {
        pthread_once(&mOnce, $nameOnce);
        return mpInstance;
    }

    $name::$name(ASN1CTXT* /*ctxt*/)
        : ObjectSet(Objects{$objects}) {}
"""

def _objects(catalogue: model.Catalogue) -> list[model.InformationObject]:
    return [one for module in catalogue.modules for one in module.objects]


def _classes(catalogue: model.Catalogue) -> list[model.ObjectClass]:
    return [one for module in catalogue.modules for one in module.classes]


def _sets(catalogue: model.Catalogue) -> list[model.ObjectSet]:
    return [one for module in catalogue.modules for one in module.sets]


def objects_header(catalogue: model.Catalogue) -> str:
    objects = _objects(catalogue)
    carried = sorted({one.type for one in objects if one.type}, key=str)
    text = fill(
        _HEADER, classes="\n\n".join(_class(one) for one in _classes(catalogue)),
        families="\n\n".join(_family(name, catalogue) for name in carried),
        objects="\n\n".join(_object(one, catalogue) for one in objects),
        sets="\n\n".join(_set(one) for one in _sets(catalogue)),
    )
    return layout(text) + "\n"


def _class(one: model.ObjectClass) -> str:
    return fill(
        _CLASS, notation=one.name, name=names.identifier(one.name), field=one.type_field,
        presence="uint8_t m;  ///< bit 1: carries a type" if one.type_optional else "",
        presence_parameter=", uint8_t present" if one.type_optional else "",
        presence_argument=", 0xFF" if one.type_optional else "",
    )


def _class_source(one: model.ObjectClass) -> str:
    return fill(
        _CLASS_SOURCE, name=names.identifier(one.name), field=one.type_field,
        presence_member="m(present), " if one.type_optional else "",
        presence_parameter=", uint8_t present" if one.type_optional else "",
    )


def _family(name: str, catalogue: model.Catalogue) -> str:
    is_null = isinstance(catalogue.base(model.Reference(name)), model.Null)
    holes = {"name": names.identifier(name), "control": names.control(name)}
    if not is_null:
        holes.update(
            record=names.record(name), encode=names.function("E", name), decode=names.function("D", name),
            copy=names.function("Copy", name), free=names.function("Free", name),
        )
    return fill(_NULL_FAMILY if is_null else _FAMILY, **holes)


def _object(one: model.InformationObject, catalogue: model.Catalogue) -> str:
    base = names.identifier(one.object_class)
    remark = ".".join(map(str, catalogue.arcs(one.arcs))) if one.arcs else "No identifier"
    if one.type:
        base = f"{base}_carrying<{names.identifier(one.type)}_operations>"
        remark += f": {one.type}"
    else:
        remark += ": no type"
    return fill(_OBJECT, remark=remark, name=names.identifier(one.name), base=base)


def _object_source(one: model.InformationObject, catalogue: model.Catalogue) -> str:
    name = names.identifier(one.name)
    arcs = ", ".join(map(str, catalogue.arcs(one.arcs))) if one.arcs else ""
    base = names.identifier(one.object_class)
    if one.type:
        return f"{name}::{name}() : {base}_carrying({{{arcs}}}) {{}}"
    return f"{name}::{name}() : {base}({{{arcs}}}, 0) {{}}"


def _set(one: model.ObjectSet) -> str:
    count = len(one.members)
    return fill(
        _SET, name=names.identifier(one.name),
        object_class=names.identifier(one.object_class), count=str(count), members=str(count),
    )


def _set_source(one: model.ObjectSet) -> str:
    made = ",".join(f"\n          std::make_unique<{names.identifier(name)}>()" for name in one.members)
    return fill(
        _SET_SOURCE, name=names.identifier(one.name),
        objects=made,
    )


def module_objects(module: model.Module, catalogue: model.Catalogue) -> str:
    """What a module's source defines of classes, objects and sets."""
    blocks = [_class_source(one) for one in module.classes]
    if module.objects:
        blocks.append("\n".join(_object_source(one, catalogue) for one in module.objects))
    return "\n\n".join(blocks + [_set_source(one) for one in module.sets])
