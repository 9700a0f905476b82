#pragma once

// Information object classes, objects and sets: what type stands behind which identifier. Made by
// tools/typegen. The names of the objects are plain words (`name`, `title`), so this header is for the
// sources of the catalogue alone.

#include <pthread.h>

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "runtime/detail/object_set.h"

namespace asn1data {

/// An object of class SHAPE. One without a type keeps these operations, which do nothing.
class SHAPE {
  public:
    ASN1TObjId id;

    virtual void* constructASN1TType(ASN1CTXT* ctxt) const;
    virtual ASN1CType* constructASN1CType(ASN1MessageBufferIF& buffer, void* record) const;
    virtual void destructASN1CType(ASN1CType* control) const;
    virtual ~SHAPE() {}
    virtual int encodeBERType(ASN1CTXT* ctxt, Asn1TObject& value) const;
    virtual int decodeBERType(ASN1CTXT* ctxt, Asn1TObject& value) const;
    virtual void copyType(ASN1CTXT* ctxt, Asn1TObject& src, Asn1TObject& dst) const;
    virtual void freeType(ASN1CTXT* ctxt, Asn1TObject& value) const;

  protected:
    SHAPE(std::initializer_list<uint32_t> arcs);
};

/// An object of class SHAPE that carries a type, which `Operations` handle.
template <typename Operations>
class SHAPE_carrying : public SHAPE {
  public:
    void* constructASN1TType(ASN1CTXT* ctxt) const override { return Operations::construct(ctxt); }
    ASN1CType* constructASN1CType(ASN1MessageBufferIF& buffer, void* record) const override {
        return Operations::control(buffer, record);
    }
    void destructASN1CType(ASN1CType* control) const override { control->~ASN1CType(); }
    int encodeBERType(ASN1CTXT* ctxt, Asn1TObject& value) const override {
        return Operations::encode(ctxt, value);
    }
    int decodeBERType(ASN1CTXT* ctxt, Asn1TObject& value) const override {
        return Operations::decode(ctxt, value);
    }
    void copyType(ASN1CTXT* ctxt, Asn1TObject& src, Asn1TObject& dst) const override {
        Operations::copy(ctxt, src, dst);
    }
    void freeType(ASN1CTXT* ctxt, Asn1TObject& value) const override {
        Operations::release(ctxt, value);
    }

  protected:
    explicit SHAPE_carrying(std::initializer_list<uint32_t> arcs)
        : SHAPE(arcs) {}
};

// The types that objects carry

struct ShapeFigure_family {
    typedef ASN1T_ShapeFigure Record;
    typedef ASN1C_ShapeFigure Control;
    static constexpr auto encode = asn1E_ShapeFigure;
    static constexpr auto decode = asn1D_ShapeFigure;
    static constexpr auto copy = asn1Copy_ShapeFigure;
    static constexpr auto release = asn1Free_ShapeFigure;
};
typedef Quillmark::detail::Carried<ShapeFigure_family> ShapeFigure_operations;

struct ShapeOutline_family {
    typedef ASN1T_ShapeOutline Record;
    typedef ASN1C_ShapeOutline Control;
    static constexpr auto encode = asn1E_ShapeOutline;
    static constexpr auto decode = asn1D_ShapeOutline;
    static constexpr auto copy = asn1Copy_ShapeOutline;
    static constexpr auto release = asn1Free_ShapeOutline;
};
typedef Quillmark::detail::Carried<ShapeOutline_family> ShapeOutline_operations;

// Objects

/// 1.2.3: ShapeFigure
class figure : public SHAPE_carrying<ShapeFigure_operations> {
  public:
    figure();
};

/// 1.2.4: ShapeOutline
class outline : public SHAPE_carrying<ShapeOutline_operations> {
  public:
    outline();
};

// Sets

/// 2 objects of class SHAPE, in the order of lookup.
class Shapes : public Quillmark::detail::ObjectSet<SHAPE, 2> {
  public:
    /// The one set, built at the first call. Throws `std::bad_alloc`; a later call then tries again.
    static Shapes* instance(ASN1CTXT* ctxt);
    explicit Shapes(ASN1CTXT* ctxt);

  private:
    friend void ShapesOnce();
    static Shapes* mpInstance;
    static pthread_once_t mOnce;
};

}  // namespace asn1data
