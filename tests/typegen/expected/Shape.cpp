// Made by tools/typegen from asn1data/modules/Shape.asn1.

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/information_objects.h"
#include "runtime/detail/codec_support.h"

namespace asn1data {

using namespace Quillmark::detail;

// Reads and writes element by element
// ShapePoint ::= SEQUENCE {
//     x           INTEGER,
//     label       UTF8String (SIZE (1..8)) OPTIONAL,
//     visible     BOOLEAN DEFAULT TRUE,
//     weight  [0] INTEGER OPTIONAL }

int asn1E_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* pvalue, ASN1TagType tagging) {
    ContentEncoder out(ctxt);
    if (pvalue->m.weightPresent) {
        out.add_tagged(context_primitive(0), xe_bigint(ctxt, pvalue->weight, ASN1IMPL));
    }
    if (out.good() && pvalue->visible != 1) {
        out.add(xe_boolean(ctxt, &pvalue->visible, ASN1EXPL));
    }
    if (out.good() && pvalue->m.labelPresent &&
        out.check_range(utf8_length(pvalue->label), 1, 8, "pvalue->label")) {
        out.add(xe_charstr(ctxt, pvalue->label, ASN1EXPL, 12));
    }
    if (out.good()) {
        out.add(xe_integer(ctxt, &pvalue->x, ASN1EXPL));
    }
    return out.finish(kSequence, tagging);
}

int asn1D_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* pvalue, ASN1TagType tagging, int length) {
    SequenceDecoder in(ctxt, kSequence, tagging, length);
    pvalue->m = {};
    pvalue->visible = 1;
    if (in.more()) {
        in.required(xd_integer(ctxt, &pvalue->x, ASN1EXPL, 0));
    }
    if (in.more()) {
        pvalue->m.labelPresent = in.optional(xd_charstr(ctxt, text_cell(pvalue->label), ASN1EXPL, 12, 0)) &&
            in.check_range(utf8_length(pvalue->label), 1, 8, "pvalue->label");
    }
    if (in.more()) {
        in.optional(xd_boolean(ctxt, &pvalue->visible, ASN1EXPL, 0));
    }
    if (in.tagged(0)) {
        pvalue->m.weightPresent = in.taken(xd_bigint(ctxt, text_cell(pvalue->weight), ASN1IMPL, in.length()));
    }
    return in.finish(1);
}

void asn1Free_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* pvalue) {
    if (pvalue->m.labelPresent) {
        free_pointer(ctxt, pvalue->label);
    }
    if (pvalue->m.weightPresent) {
        free_pointer(ctxt, pvalue->weight);
    }
}

void asn1Copy_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* src, ASN1T_ShapePoint* dst) {
    if (src == dst) {
        return;
    }
    dst->m = src->m;
    dst->x = src->x;
    if (src->m.labelPresent) {
        copy_text(ctxt, src->label, dst->label);
    }
    dst->visible = src->visible;
    if (src->m.weightPresent) {
        copy_text(ctxt, src->weight, dst->weight);
    }
}

ASN1T_ShapePoint::ASN1T_ShapePoint() {
    m.labelPresent = 0;
    m.weightPresent = 0;
}

ASN1T_ShapePoint::ASN1T_ShapePoint(ASN1C_ShapePoint& source) : ASN1T_ShapePoint() {
    source.getCopy(this);
}

ASN1T_ShapePoint::~ASN1T_ShapePoint() {
    if (!mpContext.isNull()) {
        asn1Free_ShapePoint(mpContext, this);
    }
}

ASN1C_ShapePoint::ASN1C_ShapePoint(ASN1Context& context, ASN1T_ShapePoint& data)
    : ASN1CType(context), msgData(data) {}

ASN1C_ShapePoint::ASN1C_ShapePoint(ASN1T_ShapePoint& data) : ASN1C_ShapePoint(new_context(), data) {}

ASN1C_ShapePoint::ASN1C_ShapePoint(ASN1MessageBufferIF& buffer, ASN1T_ShapePoint& data)
    : ASN1CType(buffer), msgData(data) {}

ASN1C_ShapePoint::ASN1C_ShapePoint(ASN1C_ShapePoint& other)
    : ASN1C_ShapePoint(*other.mpContext,
                       copy_for_control(*other.mpContext, other.msgData, asn1Copy_ShapePoint)) {
    mpMsgBuf = other.mpMsgBuf;
}

int ASN1C_ShapePoint::EncodeTo(ASN1MessageBufferIF& buffer) {
    return asn1E_ShapePoint(start_message(*this, buffer), &msgData, ASN1EXPL);
}

int ASN1C_ShapePoint::DecodeFrom(ASN1MessageBufferIF& buffer) {
    return asn1D_ShapePoint(start_message(*this, buffer), &msgData, ASN1EXPL, 0);
}

ASN1T_ShapePoint* ASN1C_ShapePoint::getCopy(ASN1T_ShapePoint* dst) {
    return copy_record(*mpContext, msgData, dst, asn1Copy_ShapePoint);
}

ASN1T_ShapePoint* ASN1C_ShapePoint::newCopy() {
    return new_copy(*mpContext, msgData, asn1Copy_ShapePoint);
}

ASN1C_ShapePoint& ASN1C_ShapePoint::operator=(ASN1C_ShapePoint& other) {
    other.getCopy(&msgData);
    return *this;
}

// ShapeFigure ::= CHOICE {
//     point       ShapePoint,
//     points  [0] ShapePoints }

int asn1E_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* pvalue, ASN1TagType /*tagging*/) {
    ContentEncoder out(ctxt);
    switch (pvalue->t) {
        case T_ShapeFigure_point:
            if (out.given(pvalue->u.point)) {
                out.add(asn1E_ShapePoint(ctxt, pvalue->u.point, ASN1EXPL));
            }
            break;
        case T_ShapeFigure_points:
            if (out.given(pvalue->u.points)) {
                out.add_tagged(context_constructed(0), asn1E_ShapePoints(ctxt, pvalue->u.points, ASN1IMPL));
            }
            break;
        default:
            out.add(RT_E_INVOPT);
            break;
    }
    return out.result();
}

int asn1D_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* pvalue, ASN1TagType /*tagging*/, int /*length*/) {
    pvalue->t = 0;
    ChoiceDecoder in(ctxt);
    switch (in.tag()) {
        case kSequence:
            if (in.allocate(pvalue->u.point) &&
                in.taken(asn1D_ShapePoint(ctxt, pvalue->u.point, ASN1IMPL, in.length()))) {
                pvalue->t = T_ShapeFigure_point;
            }
            break;
        case context_constructed(0):
            if (in.allocate(pvalue->u.points) &&
                in.taken(asn1D_ShapePoints(ctxt, pvalue->u.points, ASN1IMPL, in.length()))) {
                pvalue->t = T_ShapeFigure_points;
            }
            break;
        default:
            return in.unknown();
    }
    return in.status();
}

void asn1Free_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* pvalue) {
    switch (pvalue->t) {
        case T_ShapeFigure_point:
            if (pvalue->u.point != nullptr) {
                asn1Free_ShapePoint(ctxt, pvalue->u.point);
            }
            free_pointer(ctxt, pvalue->u.point);
            break;
        case T_ShapeFigure_points:
            if (pvalue->u.points != nullptr) {
                asn1Free_ShapePoints(ctxt, pvalue->u.points);
            }
            free_pointer(ctxt, pvalue->u.points);
            break;
        default:
            break;
    }
}

void asn1Copy_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* src, ASN1T_ShapeFigure* dst) {
    if (src == dst) {
        return;
    }
    dst->t = 0;
    switch (src->t) {
        case T_ShapeFigure_point:
            dst->u.point = copy_alternative(ctxt, src->u.point, asn1Copy_ShapePoint);
            break;
        case T_ShapeFigure_points:
            dst->u.points = copy_alternative(ctxt, src->u.points, asn1Copy_ShapePoints);
            break;
        default:
            break;
    }
    dst->t = src->t;
}

ASN1T_ShapeFigure::ASN1T_ShapeFigure(ASN1C_ShapeFigure& source) : ASN1T_ShapeFigure() {
    source.getCopy(this);
}

ASN1T_ShapeFigure::~ASN1T_ShapeFigure() {
    if (!mpContext.isNull()) {
        asn1Free_ShapeFigure(mpContext, this);
    }
}

ASN1C_ShapeFigure::ASN1C_ShapeFigure(ASN1Context& context, ASN1T_ShapeFigure& data)
    : ASN1CType(context), msgData(data) {}

ASN1C_ShapeFigure::ASN1C_ShapeFigure(ASN1T_ShapeFigure& data) : ASN1C_ShapeFigure(new_context(), data) {}

ASN1C_ShapeFigure::ASN1C_ShapeFigure(ASN1MessageBufferIF& buffer, ASN1T_ShapeFigure& data)
    : ASN1CType(buffer), msgData(data) {}

ASN1C_ShapeFigure::ASN1C_ShapeFigure(ASN1C_ShapeFigure& other)
    : ASN1C_ShapeFigure(*other.mpContext,
                        copy_for_control(*other.mpContext, other.msgData, asn1Copy_ShapeFigure)) {
    mpMsgBuf = other.mpMsgBuf;
}

int ASN1C_ShapeFigure::EncodeTo(ASN1MessageBufferIF& buffer) {
    return asn1E_ShapeFigure(start_message(*this, buffer), &msgData, ASN1EXPL);
}

int ASN1C_ShapeFigure::DecodeFrom(ASN1MessageBufferIF& buffer) {
    return asn1D_ShapeFigure(start_message(*this, buffer), &msgData, ASN1EXPL, 0);
}

ASN1T_ShapeFigure* ASN1C_ShapeFigure::getCopy(ASN1T_ShapeFigure* dst) {
    return copy_record(*mpContext, msgData, dst, asn1Copy_ShapeFigure);
}

ASN1T_ShapeFigure* ASN1C_ShapeFigure::newCopy() {
    return new_copy(*mpContext, msgData, asn1Copy_ShapeFigure);
}

ASN1C_ShapeFigure& ASN1C_ShapeFigure::operator=(ASN1C_ShapeFigure& other) {
    other.getCopy(&msgData);
    return *this;
}

// ShapePoints ::= SET SIZE (1..MAX) OF ShapePoint

int asn1E_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* pvalue, ASN1TagType tagging) {
    if (check_minimum(ctxt, pvalue->count, 1, "pvalue->count") != RT_OK) {
        return RT_E_CONSVIO;
    }
    return encode_sorted_list(ctxt, *pvalue, asn1E_ShapePoint, kSet, tagging);
}

int asn1D_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* pvalue, ASN1TagType tagging, int length) {
    const int status = decode_list(ctxt, *pvalue, asn1D_ShapePoint, kSet, tagging, length);
    if (status != RT_OK) {
        return status;
    }
    return check_minimum(ctxt, pvalue->count, 1, "pvalue->count");
}

void asn1Free_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* pvalue) {
    free_list(ctxt, *pvalue, asn1Free_ShapePoint);
}

void asn1Copy_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* src, ASN1T_ShapePoints* dst) {
    if (src == dst) {
        return;
    }
    copy_list(ctxt, *src, *dst, asn1Copy_ShapePoint);
}

ASN1T_ShapePoints::ASN1T_ShapePoints(ASN1C_ShapePoints& source) : ASN1T_ShapePoints() {
    source.getCopy(this);
}

ASN1T_ShapePoints::~ASN1T_ShapePoints() {
    if (!mpContext.isNull()) {
        asn1Free_ShapePoints(mpContext, this);
    }
}

ASN1C_ShapePoints::ASN1C_ShapePoints(ASN1Context& context, ASN1T_ShapePoints& data)
    : ASN1CType(context), msgData(data) {}

ASN1C_ShapePoints::ASN1C_ShapePoints(ASN1T_ShapePoints& data) : ASN1C_ShapePoints(new_context(), data) {}

ASN1C_ShapePoints::ASN1C_ShapePoints(ASN1MessageBufferIF& buffer, ASN1T_ShapePoints& data)
    : ASN1CType(buffer), msgData(data) {}

ASN1C_ShapePoints::ASN1C_ShapePoints(ASN1C_ShapePoints& other)
    : ASN1C_ShapePoints(*other.mpContext,
                        copy_for_control(*other.mpContext, other.msgData, asn1Copy_ShapePoints)) {
    mpMsgBuf = other.mpMsgBuf;
}

int ASN1C_ShapePoints::EncodeTo(ASN1MessageBufferIF& buffer) {
    return asn1E_ShapePoints(start_message(*this, buffer), &msgData, ASN1EXPL);
}

int ASN1C_ShapePoints::DecodeFrom(ASN1MessageBufferIF& buffer) {
    return asn1D_ShapePoints(start_message(*this, buffer), &msgData, ASN1EXPL, 0);
}

ASN1T_ShapePoints* ASN1C_ShapePoints::getCopy(ASN1T_ShapePoints* dst) {
    return copy_record(*mpContext, msgData, dst, asn1Copy_ShapePoints);
}

ASN1T_ShapePoints* ASN1C_ShapePoints::newCopy() {
    return new_copy(*mpContext, msgData, asn1Copy_ShapePoints);
}

ASN1C_ShapePoints& ASN1C_ShapePoints::operator=(ASN1C_ShapePoints& other) {
    other.getCopy(&msgData);
    return *this;
}

// ShapeOutline ::= ShapePoints

int asn1E_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* pvalue, ASN1TagType tagging) {
    return asn1E_ShapePoints(ctxt, pvalue, tagging);
}

int asn1D_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* pvalue, ASN1TagType tagging, int length) {
    return asn1D_ShapePoints(ctxt, pvalue, tagging, length);
}

void asn1Free_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* pvalue) {
    asn1Free_ShapePoints(ctxt, pvalue);
}

void asn1Copy_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* src, ASN1T_ShapeOutline* dst) {
    asn1Copy_ShapePoints(ctxt, src, dst);
}

int ASN1C_ShapeOutline::EncodeTo(ASN1MessageBufferIF& buffer) {
    return asn1E_ShapeOutline(start_message(*this, buffer), &msgData, ASN1EXPL);
}

int ASN1C_ShapeOutline::DecodeFrom(ASN1MessageBufferIF& buffer) {
    return asn1D_ShapeOutline(start_message(*this, buffer), &msgData, ASN1EXPL, 0);
}

// ShapeDrawing ::= SEQUENCE {
//     id          OBJECT IDENTIFIER,
//     figure      SHAPE.&Type ({Shapes}{@id}) }

int asn1ETC_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue) {
    return encode_carried(ctxt, Shapes::instance(ctxt)->lookupObject(pvalue->id), &SHAPE::encodeBERType,
                          pvalue->figure);
}

int asn1DTC_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue) {
    return decode_carried(ctxt, Shapes::instance(ctxt)->lookupObject(pvalue->id), &SHAPE::decodeBERType,
                          pvalue->figure);
}

int asn1E_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue, ASN1TagType tagging) {
    ContentEncoder out(ctxt);
    out.add(encode_open(ctxt, Shapes::instance(ctxt)->lookupObject(pvalue->id), &SHAPE::encodeBERType,
                        pvalue->figure));
    if (out.good()) {
        out.add(xe_objid(ctxt, &pvalue->id, ASN1EXPL));
    }
    return out.finish(kSequence, tagging);
}

int asn1D_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue, ASN1TagType tagging, int length) {
    SequenceDecoder in(ctxt, kSequence, tagging, length);
    if (in.more()) {
        in.required(xd_objid(ctxt, &pvalue->id, ASN1EXPL, 0));
    }
    if (in.more()) {
        in.required(decode_open(ctxt, pvalue->figure));
    }
    if (in.finish(2) != RT_OK) {
        return in.status();
    }
    const BufferSnapshot message(ctxt);
    return asn1DTC_ShapeDrawing(ctxt, pvalue);
}

void asn1Free_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue) {
    free_carried(ctxt, Shapes::instance(ctxt)->lookupObject(pvalue->id), &SHAPE::freeType, pvalue->figure);
    free_pointer(ctxt, pvalue->figure.data);
}

void asn1Copy_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* src, ASN1T_ShapeDrawing* dst) {
    if (src == dst) {
        return;
    }
    dst->id = src->id;
    copy_carried(ctxt, Shapes::instance(ctxt)->lookupObject(src->id), &SHAPE::copyType, src->figure,
                 dst->figure);
    copy_value(ctxt, src->figure, dst->figure);
}

ASN1T_ShapeDrawing::ASN1T_ShapeDrawing() {}

ASN1T_ShapeDrawing::ASN1T_ShapeDrawing(ASN1C_ShapeDrawing& source) : ASN1T_ShapeDrawing() {
    source.getCopy(this);
}

ASN1T_ShapeDrawing::~ASN1T_ShapeDrawing() {
    if (!mpContext.isNull()) {
        asn1Free_ShapeDrawing(mpContext, this);
    }
}

ASN1C_ShapeDrawing::ASN1C_ShapeDrawing(ASN1Context& context, ASN1T_ShapeDrawing& data)
    : ASN1CType(context), msgData(data) {}

ASN1C_ShapeDrawing::ASN1C_ShapeDrawing(ASN1T_ShapeDrawing& data) : ASN1C_ShapeDrawing(new_context(), data) {}

ASN1C_ShapeDrawing::ASN1C_ShapeDrawing(ASN1MessageBufferIF& buffer, ASN1T_ShapeDrawing& data)
    : ASN1CType(buffer), msgData(data) {}

ASN1C_ShapeDrawing::ASN1C_ShapeDrawing(ASN1C_ShapeDrawing& other)
    : ASN1C_ShapeDrawing(*other.mpContext,
                         copy_for_control(*other.mpContext, other.msgData, asn1Copy_ShapeDrawing)) {
    mpMsgBuf = other.mpMsgBuf;
}

int ASN1C_ShapeDrawing::EncodeTo(ASN1MessageBufferIF& buffer) {
    return asn1E_ShapeDrawing(start_message(*this, buffer), &msgData, ASN1EXPL);
}

int ASN1C_ShapeDrawing::DecodeFrom(ASN1MessageBufferIF& buffer) {
    return asn1D_ShapeDrawing(start_message(*this, buffer), &msgData, ASN1EXPL, 0);
}

ASN1T_ShapeDrawing* ASN1C_ShapeDrawing::getCopy(ASN1T_ShapeDrawing* dst) {
    return copy_record(*mpContext, msgData, dst, asn1Copy_ShapeDrawing);
}

ASN1T_ShapeDrawing* ASN1C_ShapeDrawing::newCopy() {
    return new_copy(*mpContext, msgData, asn1Copy_ShapeDrawing);
}

ASN1C_ShapeDrawing& ASN1C_ShapeDrawing::operator=(ASN1C_ShapeDrawing& other) {
    other.getCopy(&msgData);
    return *this;
}

SHAPE::SHAPE(std::initializer_list<uint32_t> arcs)
    : id(static_cast<unsigned char>(arcs.size()), arcs.begin()) {}

void* SHAPE::constructASN1TType(ASN1CTXT* /*ctxt*/) const {
    return nullptr;
}

ASN1CType* SHAPE::constructASN1CType(ASN1MessageBufferIF& /*buffer*/, void* /*record*/) const {
    return nullptr;
}

void SHAPE::destructASN1CType(ASN1CType* /*control*/) const {}

int SHAPE::encodeBERType(ASN1CTXT* /*ctxt*/, Asn1TObject& /*value*/) const {
    return 0;
}

int SHAPE::decodeBERType(ASN1CTXT* /*ctxt*/, Asn1TObject& /*value*/) const {
    return 0;
}

void SHAPE::copyType(ASN1CTXT* /*ctxt*/, Asn1TObject& /*src*/, Asn1TObject& /*dst*/) const {}

void SHAPE::freeType(ASN1CTXT* /*ctxt*/, Asn1TObject& /*value*/) const {}

figure::figure() : SHAPE_carrying({1, 2, 3}) {}
outline::outline() : SHAPE_carrying({1, 2, 4}) {}

Shapes* Shapes::mpInstance = nullptr;
pthread_once_t Shapes::mOnce = PTHREAD_ONCE_INIT;

void ShapesOnce() {
    build_set(Shapes::mpInstance);
}

Shapes* Shapes::instance(ASN1CTXT* /*ctxt*/) {
    pthread_once(&mOnce, ShapesOnce);
    return mpInstance;
}

Shapes::Shapes(ASN1CTXT* /*ctxt*/)
    : ObjectSet(Objects{
          std::make_unique<figure>(),
          std::make_unique<outline>()}) {}

}  // namespace asn1data
