// XString and XStr<N>: strings of fixed capacity that are length-prefixed and terminated at once.
#pragma once

#include <veldt20/export.h>

#include <cstring>
#include <string_view>

/// What an XStr of any capacity can do. It has no fields: its bytes are those of the XStr<N> around
/// it, a length byte, the characters, and a zero byte behind the last.
///
/// Take it by reference, to accept an XStr of any capacity. It can't be made or copied by itself.
///
/// Byte 0 and the terminator agree after every call but FixCStr(int), and after the caller wrote
/// through GetCStr or GetPStr until FixCStr() or FixPStr(). A zero byte may stand inside the text:
/// IndexOfChar, ReplaceChar, StripChar and TruncateAtChar stop there, all else goes by the length.
/// Nothing here knows the capacity or reports an error: what lengthens a string past its capacity
/// overwrites what stands behind it.
///
/// Bytes are unsigned in every comparison, so that 0x80 to 0xFF stand behind ASCII; XCString has it
/// the other way round. A string belongs to one thread at a time.
class VELDT20_API XString {
  public:
    /// The terminated text.
    char* GetCStr();
    const char* GetCStr() const;
    /// The length-prefixed string.
    unsigned char* GetPStr();
    const unsigned char* GetPStr() const;
    /// The number of characters, by byte 0.
    int GetLength() const;
    /// 1 if the length is 0, else 0.
    int IsEmpty() const;

    /// After the characters were written as terminated text: sets the length, modulo 256.
    void FixCStr();
    /// Sets the length, modulo 256, and nothing else.
    void FixCStr(int length);
    /// After length and characters were written as a length-prefixed string: sets the terminator.
    void FixPStr();
    /// Sets length and terminator, for a longer text as well: what stands there comes to light.
    void Truncate(int length);

    /// -1, 0 or 1. With `exact` 0 the letters A to Z count as a to z.
    int Compare(const XString& other, int exact) const;
    /// The same with `length` bytes from `source` on. A text stands behind its own beginning.
    int DoCompare(const unsigned char* source, int length, int exact) const;

    /// The index, counted from 0, of the first or last occurrence, or -1.
    int IndexOfChar(unsigned char c) const;
    int RightIndexOfChar(unsigned char c) const;
    /// Overwrites every `oldCharacter`.
    void ReplaceChar(unsigned char oldCharacter, unsigned char newCharacter);
    /// Removes the first occurrence. Gives 1, or 0 if there is none.
    int StripChar(unsigned char c);
    /// Removes every character that stands in `set`. Always gives 0.
    int StripChars(const XString& set);
    /// Cuts the text before the first occurrence. Gives 1, or 0 if there is none.
    int TruncateAtChar(unsigned char c);

  protected:
    /// Empty. What derives from this class has at least two bytes.
    XString();
    /// For XStr<N>: by itself this class copies nothing.
    XString(const XString&) = default;
    XString& operator=(const XString&) = default;

    // The workers of XStr<N>, which hands them its capacity, at most 255. Lengths are 0 or above,
    // and any source may lie within the string itself.

    /// Makes the text the `length` bytes at `source`, or appends them, cut to what fits.
    void DoStrCopy(const unsigned char* source, int length, int capacity);
    void DoStrAppend(const unsigned char* source, int length, int capacity);
    /// The source ends at its first zero byte, or after `length` bytes.
    void DoCharArrayCopy(const unsigned char* source, int length, int capacity);
    /// Puts `source` in the place of the first `c`. What doesn't fit is cut off the source, never
    /// off the text behind `c`.
    void DoReplaceAtChar(unsigned char c, const unsigned char* source, int length, int capacity);

  private:
    void DoSetLength(int length);
    void DoSetNull(int length);
    int DoLenStrCompare(const unsigned char* source, int length, int exact) const;
};

/// A string of at most N characters, N from 1 to 255, in N + 2 bytes wherever it is declared: it
/// takes no memory, and copying it copies its bytes. What doesn't fit is dropped without report.
///
///     XStr<8> name("budget");
///     name += ".old";            // "budget.o"
///     DrawString(name.GetPStr());
///
/// For longer texts, and for copies of unlike lifetimes, take an XCString.
template <int N>
class XStr : public XString {
    static_assert(N >= 1 && N <= 255, "the length has one byte");

  public:
    XStr() {}
    /// A null text is an empty one.
    XStr(const char* text) { *this = text; }
    /// From a length-prefixed string.
    XStr(const unsigned char* source) { *this = source; }
    /// The first `length` bytes of `source`, zero bytes included.
    XStr(const char* source, int length) { Assign(source, length); }
    XStr(const unsigned char* source, int length) { Assign(source, length); }
    /// What the assignment of the same source does.
    XStr(const XString& other) { *this = other; }
    explicit XStr(std::string_view text) { *this = text; }

    /// Takes the text, cut to the capacity. A null text is an empty one, and the source may be part
    /// of this string.
    XStr& operator=(const char* text) { return *this = View(text); }
    XStr& operator=(const unsigned char* source) { return Assign(source + 1, source[0]); }
    XStr& operator=(const XString& other) { return Assign(other.GetPStr() + 1, other.GetLength()); }
    XStr& operator=(std::string_view text) { return Assign(text.data(), Clip(text.size())); }

    /// Appends what fits. The source may be part of this string.
    XStr& operator+=(char c) { return Append(&c, 1); }
    XStr& operator+=(const char* text) { return *this += View(text); }
    XStr& operator+=(const unsigned char* source) { return Append(source + 1, source[0]); }
    XStr& operator+=(const XString& other) {
        return Append(other.GetPStr() + 1, other.GetLength());
    }
    XStr& operator+=(std::string_view text) { return Append(text.data(), Clip(text.size())); }

    /// The first `length` bytes of `source`, zero bytes included.
    XStr& Assign(const unsigned char* source, int length) {
        DoStrCopy(source, length, N);
        return *this;
    }
    XStr& Assign(const char* source, int length) { return Assign(Bytes(source), length); }
    /// Appends the first `length` bytes of `source`, zero bytes included.
    XStr& Append(const unsigned char* source, int length) {
        DoStrAppend(source, length, N);
        return *this;
    }
    XStr& Append(const char* source, int length) { return Append(Bytes(source), length); }

    /// From an array of `length` characters that a zero byte ends only if there is room for one.
    XStr& AssignArray(const char* source, int length) {
        DoCharArrayCopy(Bytes(source), length, N);
        return *this;
    }

    /// XStr<8>("abc").ReplaceAtChar('b', "xyz") is "axyzc".
    XStr& ReplaceAtChar(char c, std::string_view text) {
        DoReplaceAtChar(static_cast<unsigned char>(c), Bytes(text.data()), Clip(text.size()), N);
        return *this;
    }

    /// Makes the string empty.
    void Clear() { Truncate(0); }
    /// N.
    static constexpr int GetCapacity() { return N; }
    /// 1 if another character would be dropped, else 0.
    int IsFull() const { return GetLength() == N; }

    /// `index` is 0 to GetLength() - 1.
    char& operator[](int index) { return GetCStr()[index]; }
    char operator[](int index) const { return GetCStr()[index]; }
    /// The characters, without the terminator, to be written as long as none is added.
    char* begin() { return GetCStr(); }
    char* end() { return GetCStr() + GetLength(); }
    /// The characters, without the terminator.
    const char* begin() const { return GetCStr(); }
    const char* end() const { return GetCStr() + GetLength(); }
    /// All of the text; valid until the string is written or ends.
    operator std::string_view() const { return {GetCStr(), static_cast<std::size_t>(GetLength())}; }

  private:
    static const unsigned char* Bytes(const char* text) {
        return reinterpret_cast<const unsigned char*>(text);
    }
    static std::string_view View(const char* text) {
        return text != nullptr ? std::string_view(text) : std::string_view();
    }
    /// More than 255 characters never fit, and no length is too large for an int.
    static int Clip(std::size_t length) { return length < 256 ? static_cast<int>(length) : 256; }

    unsigned char storage_[N + 2];
};

/// Exact comparison, of all characters on both sides. They give 1 or 0.
VELDT20_API int operator==(const XString& a, const XString& b);
VELDT20_API int operator==(const XString& a, const char* b);
VELDT20_API int operator==(const char* a, const XString& b);
VELDT20_API int operator!=(const XString& a, const XString& b);
VELDT20_API int operator!=(const XString& a, const char* b);
VELDT20_API int operator!=(const char* a, const XString& b);
VELDT20_API int operator<(const XString& a, const XString& b);
VELDT20_API int operator<(const XString& a, const char* b);
VELDT20_API int operator<(const char* a, const XString& b);
VELDT20_API int operator>(const XString& a, const XString& b);
VELDT20_API int operator>(const XString& a, const char* b);
VELDT20_API int operator>(const char* a, const XString& b);
VELDT20_API int operator<=(const XString& a, const XString& b);
VELDT20_API int operator<=(const XString& a, const char* b);
VELDT20_API int operator<=(const char* a, const XString& b);
VELDT20_API int operator>=(const XString& a, const XString& b);
VELDT20_API int operator>=(const XString& a, const char* b);
VELDT20_API int operator>=(const char* a, const XString& b);
