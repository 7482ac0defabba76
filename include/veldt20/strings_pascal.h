// Length-prefixed strings: a plain byte array whose byte 0 holds the length, 0 to 255, with the
// characters, any byte values, behind it. No terminator follows them.
//
// A function that writes such a string takes no capacity unless it says so: give it 256 bytes, or
// as many as it can write. What doesn't fit is dropped without report. Source and target may
// overlap anywhere. The functions keep no state: threads may use them at once on buffers of their
// own.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

class XCString;

/// Makes the string empty.
VELDT20_API void XPascalStrInit(unsigned char* text);
/// The number of characters.
VELDT20_API unsigned char XPascalStrLen(const unsigned char* text);
/// 1 or 0.
VELDT20_API unsigned char XPascalStrIsEmpty(const unsigned char* text);
/// The bits for the values `first` to `last`, bit 0 for `base`: (3, 5, 0) gives 0x38. Bit numbers
/// count modulo 32, and 32 values give 0.
VELDT20_API std::uint32_t XPascalSetRange(int first, int last, int base);

// Copying. Each returns `to`.

/// The whole string.
VELDT20_API unsigned char* XPascalStrCpy(unsigned char* to, const unsigned char* from);
/// At most `limit` characters, 0 to 255, of a terminated text, whose length counts modulo 65536.
VELDT20_API unsigned char* XPascalStrCpy(unsigned char* to, const char* from, int limit);
/// At most `count` bytes from byte `first` on, where 1 is the first character and 0 the length
/// byte: of "abcdef", 5 and 10 give "ef", and 7 gives the empty string.
VELDT20_API unsigned char* XPascalStrCpy(unsigned char* to, const unsigned char* from,
                                         unsigned char first, unsigned char count);
/// Appends what fits into 255 characters.
VELDT20_API unsigned char* XPascalStrCat(unsigned char* to, const unsigned char* from);

// Searching.

/// Where `pattern` first occurs in `text`, counted from 1; 0 for nowhere and for an empty pattern.
VELDT20_API unsigned char XPascalStrPos(const unsigned char* pattern, const unsigned char* text);
/// The last occurrence of `c` among the characters, or null.
VELDT20_API const unsigned char* XPascalStrRScan(const unsigned char* text, unsigned char c);
/// Overwrites every `from` with `to` and gives their number.
VELDT20_API unsigned char XPascalStrReplace(unsigned char* text, unsigned char from,
                                            unsigned char to);

// Comparing.

/// As unsigned bytes: the difference of the first two that differ, a's minus b's, and between a
/// text and its beginning the difference of the lengths.
VELDT20_API int XPascalStrCmp(const unsigned char* a, const unsigned char* b);
VELDT20_API int XPascalStrCmp(const char* a, const unsigned char* b);
VELDT20_API int XPascalStrCmp(const unsigned char* a, const char* b);
VELDT20_API int XCompareBytes(const unsigned char* a, const unsigned char* b, int lengthA,
                              int lengthB);

// Converting between string forms.

/// Writes at most `limit` characters and a zero byte: `to` holds limit + 1 bytes. Gives `to`, or
/// null with nothing written if either pointer is null. `limit` is 0 or above.
VELDT20_API char* PStr2CStr(const unsigned char* from, char* to, std::int16_t limit);
/// Writes the length byte and at most `limit` characters, 0 to 255, of a text below 32768 bytes,
/// and no terminator. Gives `to`, or null with nothing written if either pointer is null.
VELDT20_API unsigned char* CStr2PStr(const char* from, unsigned char* to, std::int16_t limit);
/// The terminated text of `from` in `to`, or with `to` null in `from` itself. Gives where the text
/// is; null for a null `from`.
VELDT20_API char* _PtoCstr(unsigned char* from, char* to);
/// The reverse; a text's length counts modulo 256. No terminator is written.
VELDT20_API char* _CtoPstr(char* from, unsigned char* to);
/// At most size - 1 characters and no terminator: `size`, 1 to 256, counts the length byte too.
VELDT20_API void XCStringToPStr(const XCString& from, unsigned char* to, int size);

// Converting numbers.

/// The decimal digits, with a minus sign for what is below 0, and a zero byte behind them: at most
/// 13 bytes with the length.
VELDT20_API void XNumToString(std::int32_t number, unsigned char* to);
/// Skips ASCII white space, takes a sign and digits, and stops at the first other byte: "12ab" is
/// 12 and "" is 0. A number beyond 32 bits becomes the largest or smallest there is.
VELDT20_API void XStringToNum(const unsigned char* from, std::int32_t* result);
VELDT20_API void XStringToNum(const char* from, std::int32_t* result);
