#pragma once

// The control classes: each joins a record with a message buffer. Made by tools/typegen.

#include "asn1data/records.h"
#include "runtime/bit_string.h"
#include "runtime/message_buffer.h"

namespace asn1data {

/// Reads and writes element by element
class ASN1C_ShapePoint : public ASN1CType {
  public:
    explicit ASN1C_ShapePoint(ASN1T_ShapePoint& data);
    ASN1C_ShapePoint(ASN1MessageBufferIF& buffer, ASN1T_ShapePoint& data);
    ASN1C_ShapePoint(ASN1C_ShapePoint& other);

    int EncodeTo(ASN1MessageBufferIF& buffer) override;
    int DecodeFrom(ASN1MessageBufferIF& buffer) override;

    /// Copies the record to `dst` or, with null, to one on the heap of the context. The copy takes a
    /// reference to the context unless it has one. Throws `std::bad_alloc`.
    ASN1T_ShapePoint* getCopy(ASN1T_ShapePoint* dst = nullptr);
    /// Copies the record to one made with `new`, owned by the caller.
    ASN1T_ShapePoint* newCopy();
    /// Copies the record of `other` into its own.
    ASN1C_ShapePoint& operator=(ASN1C_ShapePoint& other);

  protected:
    ASN1T_ShapePoint& msgData;

  private:
    ASN1C_ShapePoint(ASN1Context& context, ASN1T_ShapePoint& data);
};

/// ShapeFigure
class ASN1C_ShapeFigure : public ASN1CType {
  public:
    explicit ASN1C_ShapeFigure(ASN1T_ShapeFigure& data);
    ASN1C_ShapeFigure(ASN1MessageBufferIF& buffer, ASN1T_ShapeFigure& data);
    ASN1C_ShapeFigure(ASN1C_ShapeFigure& other);

    int EncodeTo(ASN1MessageBufferIF& buffer) override;
    int DecodeFrom(ASN1MessageBufferIF& buffer) override;

    /// Copies the record to `dst` or, with null, to one on the heap of the context. The copy takes a
    /// reference to the context unless it has one. Throws `std::bad_alloc`.
    ASN1T_ShapeFigure* getCopy(ASN1T_ShapeFigure* dst = nullptr);
    /// Copies the record to one made with `new`, owned by the caller.
    ASN1T_ShapeFigure* newCopy();
    /// Copies the record of `other` into its own.
    ASN1C_ShapeFigure& operator=(ASN1C_ShapeFigure& other);

  protected:
    ASN1T_ShapeFigure& msgData;

  private:
    ASN1C_ShapeFigure(ASN1Context& context, ASN1T_ShapeFigure& data);
};

/// ShapePoints
class ASN1C_ShapePoints : public ASN1CType {
  public:
    explicit ASN1C_ShapePoints(ASN1T_ShapePoints& data);
    ASN1C_ShapePoints(ASN1MessageBufferIF& buffer, ASN1T_ShapePoints& data);
    ASN1C_ShapePoints(ASN1C_ShapePoints& other);

    int EncodeTo(ASN1MessageBufferIF& buffer) override;
    int DecodeFrom(ASN1MessageBufferIF& buffer) override;

    /// Copies the record to `dst` or, with null, to one on the heap of the context. The copy takes a
    /// reference to the context unless it has one. Throws `std::bad_alloc`.
    ASN1T_ShapePoints* getCopy(ASN1T_ShapePoints* dst = nullptr);
    /// Copies the record to one made with `new`, owned by the caller.
    ASN1T_ShapePoints* newCopy();
    /// Copies the record of `other` into its own.
    ASN1C_ShapePoints& operator=(ASN1C_ShapePoints& other);

  protected:
    ASN1T_ShapePoints& msgData;

  private:
    ASN1C_ShapePoints(ASN1Context& context, ASN1T_ShapePoints& data);
};

/// ShapeOutline
class ASN1C_ShapeOutline : public ASN1C_ShapePoints {
  public:
    using ASN1C_ShapePoints::ASN1C_ShapePoints;
    using ASN1C_ShapePoints::operator=;
    ASN1C_ShapeOutline(ASN1C_ShapeOutline& other) : ASN1C_ShapePoints(other) {}

    int EncodeTo(ASN1MessageBufferIF& buffer) override;
    int DecodeFrom(ASN1MessageBufferIF& buffer) override;
};

/// ShapeDrawing
class ASN1C_ShapeDrawing : public ASN1CType {
  public:
    explicit ASN1C_ShapeDrawing(ASN1T_ShapeDrawing& data);
    ASN1C_ShapeDrawing(ASN1MessageBufferIF& buffer, ASN1T_ShapeDrawing& data);
    ASN1C_ShapeDrawing(ASN1C_ShapeDrawing& other);

    int EncodeTo(ASN1MessageBufferIF& buffer) override;
    int DecodeFrom(ASN1MessageBufferIF& buffer) override;

    /// Copies the record to `dst` or, with null, to one on the heap of the context. The copy takes a
    /// reference to the context unless it has one. Throws `std::bad_alloc`.
    ASN1T_ShapeDrawing* getCopy(ASN1T_ShapeDrawing* dst = nullptr);
    /// Copies the record to one made with `new`, owned by the caller.
    ASN1T_ShapeDrawing* newCopy();
    /// Copies the record of `other` into its own.
    ASN1C_ShapeDrawing& operator=(ASN1C_ShapeDrawing& other);

  protected:
    ASN1T_ShapeDrawing& msgData;

  private:
    ASN1C_ShapeDrawing(ASN1Context& context, ASN1T_ShapeDrawing& data);
};

}  // namespace asn1data
