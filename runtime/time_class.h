#pragma once

// GeneralizedTime and UTCTime texts (X.680 46 and 47) as objects with fields.
//
// An object works on a text pointer of the caller's, which it reads when a field is first asked for and
// which it renews when a field is set:
//
//     const char* text = nullptr;
//     ASN1CUTCTime time(buffer, text, 1);
//     time.clear();
//     time.setYear(2024); time.setMonth(2); time.setDay(29);
//     time.setHour(12); time.setMinute(0); time.setSecond(0);   // text is now "240229120000Z"

#include <cstdint>

#include "runtime/message_buffer.h"
#include "runtime/time_string.h"

/// What both kinds of time share.
///
/// Getters read the text first where that has not been done; a text that is malformed makes them return
/// `RT_E_INVFORMAT`. Setters return 0, or `RT_E_INVFORMAT` for a value that their rule refuses; the text is
/// renewed once year, month, day and hour are there, and a text that cannot be read is replaced. Failures
/// are recorded where there is a context.
///
/// A renewed text lies in the caller's own buffer where the object was given one of 30 octets or more, else
/// in the object: the caller's pointer then must not be used after the object's end.
class QUILLMARK_API ASN1CTime : public ASN1CType {
  public:
    virtual int getYear() const;
    virtual int getMonth() const;
    virtual int getDay() const;
    virtual int getHour() const;
    virtual int getMinute() const;
    virtual int getSecond() const;
    /// The digits behind the point as a number. Intended: ".05" and ".5" are both 5.
    virtual int getFraction() const;
    virtual int getDiffHour() const;
    virtual int getDiffMinute() const;
    /// Offset from UTC in minutes.
    virtual int getDiff() const;
    /// 1 when the text ends in "Z".
    virtual int getUTC() const;
    /// Seconds since 1970-01-01 UTC; a time without "Z" and offset is taken in the local zone.
    virtual long getTime() const;

    /// Ends the text in "Z" or not; without effect on an object that was made for UTC alone.
    virtual int setUTC(int flag);
    virtual int setYear(int value);
    virtual int setMonth(int value);
    virtual int setDay(int value);
    virtual int setHour(int value);
    virtual int setMinute(int value);
    virtual int setSecond(int value);
    virtual int setFraction(int value);
    /// Sets all fields: in UTC when the object's flag says so, else in the local zone, with its offset from
    /// UTC unless `diffTime` is 0.
    virtual int setTime(long time, unsigned char diffTime) = 0;
    virtual int setDiffHour(int hours);
    /// The minutes take the sign of the hours.
    virtual int setDiff(int hours, int minutes);
    virtual int setDiff(int minutes);

    /// Takes the fields from `text`, and renews the object's text when that is another one. After a failure
    /// the fields are as they were.
    virtual int parseString(const char* text) = 0;
    /// Unsets all fields and empties the text.
    virtual void clear();

    /// The difference in days or, within one date, in milliseconds less the offset. Intended: dates are
    /// compared as written, and a fraction counts in tenths of a second. A side that cannot be read counts
    /// with unset fields.
    virtual long equals(const ASN1CTime& other) const;
    virtual bool operator==(const ASN1CTime& other) const;
    virtual bool operator!=(const ASN1CTime& other) const;
    virtual bool operator>(const ASN1CTime& other) const;
    virtual bool operator<(const ASN1CTime& other) const;
    virtual bool operator>=(const ASN1CTime& other) const;
    virtual bool operator<=(const ASN1CTime& other) const;

    /// Renews the text from the fields. Returns 0, `RT_E_INVFORMAT` while year, month, day or hour is unset,
    /// or `RT_E_STROVFL` for a caller's buffer that is too small.
    virtual int compileString() = 0;

    ~ASN1CTime() override;
    ASN1CTime(const ASN1CTime&) = delete;
    ASN1CTime& operator=(const ASN1CTime&) = delete;

    /// Length of the text.
    int getTimeStringLen() const;
    /// Copies the text with its terminator; null when `size` is not above its length.
    char* getTimeString(char* buf, int size) const;

    /// 1 when the day is in the month. Unset values pass: a day or month below 1, and a negative year has a
    /// February 29.
    static int checkDate(int day, int month, int year);
    /// Move a date or time in place, forwards or backwards, through months and years; nothing moves when the
    /// year would leave 0 to 32767. `secFraction` counts tenths of a second.
    static void addDays(int days, int16_t& year, int16_t& month, int16_t& day);
    static void addMilliseconds(long milliseconds, int16_t& year, int16_t& month, int16_t& day, int16_t& hour,
                                int16_t& minute, int16_t& second, int32_t& secFraction);
    /// Days of the months, index 1 to 12, outside leap years.
    static const int16_t daysInMonth[13];

  protected:
    ASN1CTime(char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CTime(const char*& buffer, unsigned char useDerivedUTC);
    ASN1CTime(ASN1MessageBufferIF& msgBuf, char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CTime(ASN1MessageBufferIF& msgBuf, const char*& buffer, unsigned char useDerivedUTC);
    ASN1CTime(ASN1Context& context, char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CTime(ASN1Context& context, const char*& buffer, unsigned char useDerivedUTC);

    /// Records in the context, where there is one, and returns `status`.
    int fail(int status) const;
    /// The context, or null.
    ASN1CTXT* context() const;
    /// Reads the text unless the fields already reflect it.
    int ensureParsed() const;
    /// What each setter does first and last: the fields are complete before one of them changes, and the
    /// text follows.
    void prepareSet();
    int finishSet();
    void unsetFields();
    /// Takes over what a parser found in `source`.
    int takeFields(const ASN1TimeRecord& record, const char* source);
    /// Puts a compiled text in place.
    int storeText(const char* text, int length);
    int setFieldsFromTime(long time, unsigned char diffTime);
    long getDaysNum() const;
    long long getMillisNum() const;

    mutable int16_t year;  ///< -3 when unset, as month, day and hour
    mutable int16_t month;
    mutable int16_t day;
    mutable int16_t hour;
    mutable int16_t minute;
    mutable int16_t second;
    mutable int16_t diffHour;
    mutable int16_t diffMinute;
    mutable int32_t secFraction;
    mutable uint8_t utc;
    mutable uint8_t parsed;  ///< the fields reflect the text
    uint8_t derivedUTC;      ///< made for UTC alone

  private:
    void start(const char** pointer, int size, unsigned char useDerivedUTC);

    const char** textPointer;
    int32_t room;  ///< of the caller's buffer; below 30 `ownBuffer` is in use
    char ownBuffer[64];
};

/// GeneralizedTime (X.680 46), with a year of four digits and a fraction of the second.
class QUILLMARK_API ASN1CGeneralizedTime : public ASN1CTime {
  public:
    /// On the caller's buffer of `size` octets. `useDerivedUTC` 1 makes times that end in "Z".
    ASN1CGeneralizedTime(char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CGeneralizedTime(const char*& buffer, unsigned char useDerivedUTC = 0);
    ASN1CGeneralizedTime(ASN1MessageBufferIF& msgBuf, char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CGeneralizedTime(ASN1MessageBufferIF& msgBuf, const char*& buffer, unsigned char useDerivedUTC = 0);
    ASN1CGeneralizedTime(ASN1Context& context, char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CGeneralizedTime(ASN1Context& context, const char*& buffer, unsigned char useDerivedUTC = 0);

    int setTime(long time, unsigned char diffTime) override;
    int parseString(const char* text) override;
    int compileString() override;

    /// The year without its last two digits.
    int getCentury() const;
    /// Replaces those digits; `century` below 100.
    int setCentury(int century);
};

/// UTCTime (X.680 47), with a year of two digits: below 50 it is 20xx, else 19xx.
class QUILLMARK_API ASN1CUTCTime : public ASN1CTime {
  public:
    /// On the caller's buffer of `size` octets. `useDerivedUTC` 1 makes times that end in "Z".
    ASN1CUTCTime(char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CUTCTime(const char*& buffer, unsigned char useDerivedUTC = 0);
    ASN1CUTCTime(ASN1MessageBufferIF& msgBuf, char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CUTCTime(ASN1MessageBufferIF& msgBuf, const char*& buffer, unsigned char useDerivedUTC = 0);
    ASN1CUTCTime(ASN1Context& context, char*& buffer, int size, unsigned char useDerivedUTC);
    ASN1CUTCTime(ASN1Context& context, const char*& buffer, unsigned char useDerivedUTC = 0);

    /// A UTCTime has no fraction: always 0.
    int getFraction() const override;
    /// Has no effect for a zero flag and a zero offset, as a UTCTime must end in one or the other.
    int setUTC(int flag) override;
    /// Years up to 99 are those of 1950 to 2049; of others the text keeps the last two digits.
    int setYear(int value) override;
    /// Fails with `RT_E_NOTSUPP`.
    int setFraction(int value) override;
    int setTime(long time, unsigned char diffTime) override;
    int parseString(const char* text) override;
    void clear() override;
    int compileString() override;
};
