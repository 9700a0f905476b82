#pragma once

// Statuses of the ASN.1 run-time. Encoders return the number of octets written or a negative
// status, decoders 0 or a negative status. The first status of a call chain stays in
// `ASN1CTXT::errInfo` (see `rtErrSetData`).

/// Every status.
enum : int {
    RT_OK = 0,             ///< success
    RT_E_BUFOVFL = -1,     ///< a fixed encode buffer is too small
    RT_E_ENDOFBUF = -2,    ///< the decode position reached the end of the buffer
    RT_E_IDNOTFOUND = -3,  ///< the expected tag is not there
    RT_E_INVOBJID = -4,    ///< OBJECT IDENTIFIER not encodable, or more than 128 arcs
    RT_E_INVLEN = -5,      ///< length invalid, beyond the buffer, or indefinite on a primitive element
    RT_E_INVENUM = -6,     ///< ENUMERATED value outside the type
    RT_E_SETDUP = -7,      ///< element repeated in a SET
    RT_E_SETMISSING = -8,  ///< required element missing
    RT_E_NOTINSET = -9,    ///< element not in the SET
    RT_E_SEQOVFL = -10,    ///< more elements than the SEQUENCE has
    RT_E_INVOPT = -11,     ///< no CHOICE alternative fits
    RT_E_NOMEM = -12,      ///< allocation failed
    RT_E_STROVFL = -17,    ///< destination too small for a string or number
    RT_E_BADVALUE = -18,   ///< a null value pointer, or a value that cannot be encoded
    RT_E_BADTAG = -21,     ///< tag number above 0x1FFFFFFF or too many tag octets
    RT_E_CONSVIO = -23,    ///< size or value constraint violated
    RT_E_RANGE = -24,      ///< bit range reversed
    RT_E_INVUTF8 = -26,    ///< malformed UTF-8
    RT_E_CONCMODF = -27,   ///< list changed behind an iterator
    RT_E_ILLSTATE = -28,   ///< iterator has no current element
    RT_E_OUTOFBND = -29,   ///< bit index beyond the string
    RT_E_INVPARAM = -30,   ///< null or unusable argument
    RT_E_INVFORMAT = -31,  ///< malformed time string
    RT_E_NOTINIT = -32,    ///< context not initialised, or stream lacks a write operation
    RT_E_TOOBIG = -33,     ///< integer value too large for the target
    RT_E_NOTSUPP = -99,    ///< operation not available in this form, or nesting too deep
};
