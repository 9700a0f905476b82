// Applications see these records, so their shape does not change by accident.

#include <cstddef>

#include "runtime/big_integer.h"
#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/memory_buffer.h"
#include "runtime/object_id.h"
#include "runtime/time_string.h"
#include "runtime/value_types.h"

static_assert(sizeof(rtMemHeap) == 32);
static_assert(offsetof(rtMemHeap, blockSize) == 8 && offsetof(rtMemHeap, refCount) == 12);
static_assert(offsetof(rtMemHeap, heapFlags) == 16 && offsetof(rtMemHeap, memContext) == 24);

static_assert(sizeof(ASN1BUFFER) == 24);
static_assert(offsetof(ASN1BUFFER, byteIndex) == 8 && offsetof(ASN1BUFFER, size) == 12);
static_assert(offsetof(ASN1BUFFER, bitOffset) == 16 && offsetof(ASN1BUFFER, dynamic) == 18);

static_assert(sizeof(ASN1BUFSAVE) == 8);
static_assert(offsetof(ASN1BUFSAVE, bitOffset) == 4 && offsetof(ASN1BUFSAVE, flags) == 6);

static_assert(offsetof(ASN1CTXT, msgHeap) == 0 && offsetof(ASN1CTXT, typeHeap) == 8);
static_assert(offsetof(ASN1CTXT, buffer) == 16 && offsetof(ASN1CTXT, stream) == 40);
static_assert(offsetof(ASN1CTXT, savedState) == 48 && offsetof(ASN1CTXT, errInfo) == 56);
static_assert(offsetof(ASN1ErrInfo, status) == 0);

static_assert(sizeof(rtSList) == 32);
static_assert(offsetof(rtSList, head) == 8 && offsetof(rtSList, tail) == 16 &&
              offsetof(rtSList, owner) == 24);
static_assert(sizeof(rtSListNode) == 16 && offsetof(rtSListNode, next) == 8);

static_assert(sizeof(_Asn1RTDList) == 24);
static_assert(offsetof(_Asn1RTDList, head) == 8 && offsetof(_Asn1RTDList, tail) == 16);
static_assert(sizeof(_Asn1RTDListNode) == 24);
static_assert(offsetof(_Asn1RTDListNode, next) == 8 && offsetof(_Asn1RTDListNode, prev) == 16);
static_assert(sizeof(ASN1TPDU) == 8 && sizeof(ASN1TPDUSeqOfList) == 32);

static_assert(sizeof(ASN1OBJID) == 516 && alignof(ASN1OBJID) == 4 && offsetof(ASN1OBJID, subid) == 4);
static_assert(sizeof(ASN1OID64) == 1032 && offsetof(ASN1OID64, subid) == 8);
static_assert(sizeof(ASN1TObjId) == sizeof(ASN1OBJID) && sizeof(ASN1TObjId64) == sizeof(ASN1OID64));

static_assert(sizeof(ASN1TDynOctStr) == 16 && offsetof(ASN1TDynOctStr, data) == 8);
static_assert(sizeof(ASN1TDynBitStr) == 16 && offsetof(ASN1TDynBitStr, data) == 8);
static_assert(sizeof(ASN1_16BITCHARSTRING) == 16 && offsetof(ASN1_16BITCHARSTRING, data) == 8);
static_assert(sizeof(ASN1_32BITCHARSTRING) == 16 && offsetof(ASN1_32BITCHARSTRING, data) == 8);
static_assert(sizeof(ASN1OpenType) == 16 && sizeof(ASN1TOpenType) == 16);
static_assert(sizeof(Asn1Object) == 24 && sizeof(Asn1TObject) == 24);

static_assert(sizeof(ASN1BigInt) == 32 && offsetof(ASN1BigInt, mag) == 8);
static_assert(offsetof(ASN1BigInt, sign) == 16 && offsetof(ASN1BigInt, dynamic) == 24);
static_assert(sizeof(ASN1MemBuf) == 48 && offsetof(ASN1MemBuf, segSize) == 8);
static_assert(offsetof(ASN1MemBuf, bitOffset) == 24 && offsetof(ASN1MemBuf, buffer) == 32);
static_assert(sizeof(ASN1TimeRecord) == 38);
static_assert(offsetof(ASN1TimeRecord, fraction) == 16 && offsetof(ASN1TimeRecord, utc) == 37);
