// What the modules of asn1data/modules say about every type. Made by tools/typegen, for tests alone.

#include "tests/asn1data/type_description.h"

#include <cstddef>

#include "asn1data/codecs.h"

// Records have a base class, for which offsetof is a matter of the compiler; those in use know it.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace Quillmark::test {

using namespace asn1data;

namespace {

extern const TypeDescription kShapePoint;
extern const TypeDescription kShapeFigure;
extern const TypeDescription kShapePoints;
extern const TypeDescription kShapeOutline;
extern const TypeDescription kShapeDrawing;

// What identifiers tell

constexpr uint32_t kShapes_figure[] = {1, 2, 3};
constexpr uint32_t kShapes_outline[] = {1, 2, 4};
constexpr ObjectDescription kShapes_objects[] = {
    {"figure", kShapes_figure, &kShapeFigure},
    {"outline", kShapes_outline, &kShapeOutline},
};

// Types

const TypeDescription kShapePoint__x = {
    .kind = Kind::kInteger,
    .universal = 2,
    .size = sizeof(int32_t),
    .construct = construct<int32_t>};
const TypeDescription kShapePoint__label = {
    .kind = Kind::kText,
    .universal = 12,
    .bounds = Bounds{1, 8},
    .size = sizeof(const char*),
    .construct = construct<const char*>};
const TypeDescription kShapePoint__visible = {
    .kind = Kind::kBoolean,
    .universal = 1,
    .size = sizeof(uint8_t),
    .construct = construct<uint8_t>};
const TypeDescription kShapePoint__weight = {
    .kind = Kind::kBigInteger,
    .universal = 2,
    .size = sizeof(const char*),
    .construct = construct<const char*>};
const ElementDescription kShapePoint_elements[] = {
    {.name = "x", .type = &kShapePoint__x, .offset = offsetof(ASN1T_ShapePoint, x)},
    {.name = "label", .type = &kShapePoint__label, .offset = offsetof(ASN1T_ShapePoint, label),
     .may_be_absent = true, .presence_bit = 0},
    {.name = "visible", .type = &kShapePoint__visible, .offset = offsetof(ASN1T_ShapePoint, visible),
     .may_be_absent = true, .default_number = 1},
    {.name = "weight", .type = &kShapePoint__weight, .tag = 0, .offset = offsetof(ASN1T_ShapePoint, weight),
     .may_be_absent = true, .presence_bit = 1},
};
const TypeDescription kShapePoint = {
    .name = "ShapePoint",
    .module = "Shape",
    .kind = Kind::kSequence,
    .universal = 16,
    .head = offsetof(ASN1T_ShapePoint, m),
    .elements = kShapePoint_elements,
    .size = sizeof(ASN1T_ShapePoint),
    .construct = construct<ASN1T_ShapePoint>,
    .functions = functions_of<ASN1T_ShapePoint, asn1E_ShapePoint, asn1D_ShapePoint, asn1Free_ShapePoint,
        asn1Copy_ShapePoint>()};

const ElementDescription kShapeFigure_elements[] = {
    {.name = "point", .type = &kShapePoint, .offset = offsetof(ASN1T_ShapeFigure, u.point), .indirect = true},
    {.name = "points", .type = &kShapePoints, .tag = 0, .offset = offsetof(ASN1T_ShapeFigure, u.points),
     .indirect = true},
};
const TypeDescription kShapeFigure = {
    .name = "ShapeFigure",
    .module = "Shape",
    .kind = Kind::kChoice,
    .head = offsetof(ASN1T_ShapeFigure, t),
    .elements = kShapeFigure_elements,
    .size = sizeof(ASN1T_ShapeFigure),
    .construct = construct<ASN1T_ShapeFigure>,
    .functions = functions_of<ASN1T_ShapeFigure, asn1E_ShapeFigure, asn1D_ShapeFigure, asn1Free_ShapeFigure,
        asn1Copy_ShapeFigure>()};

const TypeDescription kShapePoints = {
    .name = "ShapePoints",
    .module = "Shape",
    .kind = Kind::kList,
    .universal = 17,
    .sorted = true,
    .element = &kShapePoint,
    .bounds = Bounds{1, kNoBound},
    .size = sizeof(ASN1T_ShapePoints),
    .construct = construct<ASN1T_ShapePoints>,
    .functions = functions_of<ASN1T_ShapePoints, asn1E_ShapePoints, asn1D_ShapePoints, asn1Free_ShapePoints,
        asn1Copy_ShapePoints>()};

const TypeDescription kShapeOutline = {
    .name = "ShapeOutline",
    .module = "Shape",
    .kind = Kind::kList,
    .universal = 17,
    .sorted = true,
    .element = &kShapePoint,
    .bounds = Bounds{1, kNoBound},
    .size = sizeof(ASN1T_ShapeOutline),
    .construct = construct<ASN1T_ShapeOutline>,
    .functions = functions_of<ASN1T_ShapeOutline, asn1E_ShapeOutline, asn1D_ShapeOutline,
        asn1Free_ShapeOutline, asn1Copy_ShapeOutline>()};

const TypeDescription kShapeDrawing__id = {
    .kind = Kind::kObjectIdentifier,
    .universal = 6,
    .size = sizeof(ASN1TObjId),
    .construct = construct<ASN1TObjId>};
const TypeDescription kShapeDrawing__figure = {
    .kind = Kind::kCarried,
    .size = sizeof(Asn1TObject),
    .construct = construct<Asn1TObject>};
const ElementDescription kShapeDrawing_elements[] = {
    {.name = "id", .type = &kShapeDrawing__id, .offset = offsetof(ASN1T_ShapeDrawing, id)},
    {.name = "figure", .type = &kShapeDrawing__figure, .offset = offsetof(ASN1T_ShapeDrawing, figure),
     .identifier = 0, .objects = kShapes_objects},
};
const TypeDescription kShapeDrawing = {
    .name = "ShapeDrawing",
    .module = "Shape",
    .kind = Kind::kSequence,
    .universal = 16,
    .elements = kShapeDrawing_elements,
    .size = sizeof(ASN1T_ShapeDrawing),
    .construct = construct<ASN1T_ShapeDrawing>,
    .functions = functions_of<ASN1T_ShapeDrawing, asn1E_ShapeDrawing, asn1D_ShapeDrawing,
        asn1Free_ShapeDrawing, asn1Copy_ShapeDrawing>()};

constexpr const TypeDescription* kAll[] = {
    &kShapePoint,
    &kShapeFigure,
    &kShapePoints,
    &kShapeOutline,
    &kShapeDrawing,
};

}  // namespace

std::span<const TypeDescription* const> described_types() {
    return kAll;
}

}  // namespace Quillmark::test
