#pragma once

// The functions of the ASN.1 types. Made by tools/typegen.
//
// `asn1E_` encodes and returns the number of octets written or a negative status, `asn1D_` decodes and
// returns 0 or a negative status; both record their failures in the context. With `ASN1EXPL` they handle
// the tag of the type themselves, with `ASN1IMPL` the caller does and gives the length of the contents.
// A record keeps what was decoded before a failure. `asn1Free_` gives back what a record holds on the heap
// of the context, `asn1Copy_` copies it to that heap and throws `std::bad_alloc`. `asn1ETC_` and
// `asn1DTC_` encode and decode the value that an identifier in the record tells the type of.

#include "asn1data/records.h"
#include "runtime/context.h"

namespace asn1data {

int asn1E_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* pvalue, ASN1TagType tagging);
int asn1D_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* pvalue, ASN1TagType tagging, int length);
void asn1Free_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* pvalue);
void asn1Copy_ShapePoint(ASN1CTXT* ctxt, ASN1T_ShapePoint* src, ASN1T_ShapePoint* dst);

int asn1E_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* pvalue, ASN1TagType tagging);
int asn1D_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* pvalue, ASN1TagType tagging, int length);
void asn1Free_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* pvalue);
void asn1Copy_ShapeFigure(ASN1CTXT* ctxt, ASN1T_ShapeFigure* src, ASN1T_ShapeFigure* dst);

int asn1E_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* pvalue, ASN1TagType tagging);
int asn1D_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* pvalue, ASN1TagType tagging, int length);
void asn1Free_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* pvalue);
void asn1Copy_ShapePoints(ASN1CTXT* ctxt, ASN1T_ShapePoints* src, ASN1T_ShapePoints* dst);

int asn1E_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* pvalue, ASN1TagType tagging);
int asn1D_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* pvalue, ASN1TagType tagging, int length);
void asn1Free_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* pvalue);
void asn1Copy_ShapeOutline(ASN1CTXT* ctxt, ASN1T_ShapeOutline* src, ASN1T_ShapeOutline* dst);

int asn1E_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue, ASN1TagType tagging);
int asn1D_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue, ASN1TagType tagging, int length);
void asn1Free_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue);
void asn1Copy_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* src, ASN1T_ShapeDrawing* dst);
int asn1ETC_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue);
int asn1DTC_ShapeDrawing(ASN1CTXT* ctxt, ASN1T_ShapeDrawing* pvalue);

}  // namespace asn1data
