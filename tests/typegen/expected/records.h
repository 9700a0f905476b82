#pragma once

// The records of the ASN.1 types. Made by tools/typegen from the modules of asn1data/modules.
//
// A record owns nothing but a reference to a context, and only when `mpContext` is set does its destructor
// free what its pointers hold. `m` tells which OPTIONAL elements are there.

#include <cstdint>

#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"

namespace asn1data {

struct ASN1T_ShapePoint;
class ASN1C_ShapePoint;
struct ASN1T_ShapeFigure;
class ASN1C_ShapeFigure;
struct ASN1T_ShapePoints;
class ASN1C_ShapePoints;
struct ASN1T_ShapeDrawing;
class ASN1C_ShapeDrawing;

/// Reads and writes element by element
struct ASN1T_ShapePoint : ASN1TPDU {
    struct {
        unsigned labelPresent : 1;
        unsigned weightPresent : 1;
    } m;
    int32_t x = 0;
    const char* label = nullptr;
    uint8_t visible = 1;
    const char* weight = nullptr;

    ASN1T_ShapePoint();
    explicit ASN1T_ShapePoint(ASN1C_ShapePoint& source);
    ASN1T_ShapePoint(const ASN1T_ShapePoint&) = delete;
    ASN1T_ShapePoint& operator=(const ASN1T_ShapePoint&) = default;
    ~ASN1T_ShapePoint();
};

enum : uint32_t {
    T_ShapeFigure_point = 1,
    T_ShapeFigure_points
};

/// ShapeFigure of Shape
struct ASN1T_ShapeFigure : ASN1TPDU {
    uint32_t t = 0;  ///< a `T_ShapeFigure` selector, 0 for none
    union {
        ASN1T_ShapePoint* point;
        ASN1T_ShapePoints* points;
    } u{};

    ASN1T_ShapeFigure() {}
    explicit ASN1T_ShapeFigure(ASN1C_ShapeFigure& source);
    ASN1T_ShapeFigure(const ASN1T_ShapeFigure&) = delete;
    ASN1T_ShapeFigure& operator=(const ASN1T_ShapeFigure&) = default;
    ~ASN1T_ShapeFigure();
};

/// ShapePoints of Shape
struct ASN1T_ShapePoints : ASN1TPDUSeqOfList {
    ASN1T_ShapePoints() {}
    explicit ASN1T_ShapePoints(ASN1C_ShapePoints& source);
    ASN1T_ShapePoints(const ASN1T_ShapePoints&) = delete;
    ASN1T_ShapePoints& operator=(const ASN1T_ShapePoints&) = default;
    ~ASN1T_ShapePoints();
};

/// ShapeOutline of Shape
typedef ASN1T_ShapePoints ASN1T_ShapeOutline;

/// ShapeDrawing of Shape
struct ASN1T_ShapeDrawing : ASN1TPDU {
    ASN1TObjId id;
    Asn1TObject figure;

    ASN1T_ShapeDrawing();
    explicit ASN1T_ShapeDrawing(ASN1C_ShapeDrawing& source);
    ASN1T_ShapeDrawing(const ASN1T_ShapeDrawing&) = delete;
    ASN1T_ShapeDrawing& operator=(const ASN1T_ShapeDrawing&) = default;
    ~ASN1T_ShapeDrawing();
};

}  // namespace asn1data
