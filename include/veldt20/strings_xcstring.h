// XCString: a reference-counted, copy-on-write byte string.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

struct HINSTANCE__;

/// The header of a buffer. It stands directly before the characters, in the same block.
struct XCStringData {
    std::int32_t
        refCount;         ///< strings on this buffer; -1 for a locked one and the shared empty one
    std::int32_t length;  ///< characters in use, the terminator not counted
    std::int32_t allocLength;  ///< room for characters, the terminator not counted
};

/// A string of bytes in the process's ANSI code page, passed, returned and stored like a `char*`.
///
/// What it is for: texts that are copied more often than they are changed. Copying takes a few
/// nanoseconds whatever the length, because copies share one buffer until one of them is written.
/// A buffer is always exactly as large as was asked for: a loop that appends reserves room first,
///
///     XCString line;
///     line.GetBuffer(200);      // room for 200 characters, still empty
///     line.ReleaseBuffer(0);
///     line += "no block is taken here";
///
/// and a text of at most 255 bytes that never leaves its function is better off in an XStr<N>.
///
/// A text may hold zero bytes, and GetLength counts them. What takes a terminated text sees the
/// part before the first: Compare and the operators on it, CompareNoCase, Find, SpanExcluding,
/// ReplaceChar, MakeLower, ReleaseBuffer(-1), and the copy of a locked string.
///
/// Errors: indexes are not tested. When `operator new` throws std::bad_alloc, or a result would be
/// longer than 2^31 - 2 characters (std::bad_alloc too), the exception leaves the string, its
/// capacity, lock and sharers as they were.
///
/// Threads: counts are not atomic. A string and all its copies belong to one thread at a time. The
/// empty buffer that all empty strings share is never written, so it ties no threads together.
class VELDT20_API XCString {
  public:
    /// Empty, without a block of its own.
    XCString();
    /// Shares the buffer of `source`. A locked source is copied, up to its first zero byte.
    XCString(const XCString& source);
    /// From terminated 16-bit text. What the code page lacks becomes its default character.
    XCString(unsigned short* source);
    /// The first `count` bytes of `source`, zero bytes included; -1 stands for all up to the
    /// terminator, and then `source` may be null, which is the empty text.
    XCString(const char* source, int count = -1);
    ~XCString();

    /// The terminated text. It is valid until the string is written.
    operator const char*() const;
    /// The number of bytes, zero bytes included, the terminator not.
    int GetLength() const;
    /// The characters that the present buffer has room for.
    int GetAllocLength() const;
    /// 1 if the length is 0, else 0.
    int IsEmpty() const;
    /// The byte at `index`, 0 to GetLength().
    char operator[](int index) const;
    char GetAt(int index) const;

    /// The index of the first occurrence, or -1. The character 0 is found at the first zero byte.
    [[gnu::pure]] int Find(char character) const;
    /// The index of the first occurrence, or -1. An empty text is found at 0.
    [[gnu::pure]] int Find(const char* text) const;
    /// The first or last `count` characters, held to 0 and GetLength(), in a buffer of their own.
    XCString Left(int count) const;
    XCString Right(int count) const;
    /// The part before the first byte that stands in `set`; all of it when none does.
    XCString SpanExcluding(const char* set) const;
    /// -1, 0 or 1 in the order of signed bytes, so that 0x80 to 0xFF stand before ASCII.
    /// XCString("\xE9").Compare("a") gives -1.
    [[gnu::pure]] int Compare(const char* text) const;
    /// 0 if the texts agree but for the case of A to Z; otherwise the difference of the first two
    /// signed bytes that don't, in lower case. XCString("ABD").CompareNoCase("abb") gives 2.
    [[gnu::pure]] int CompareNoCase(const char* text) const;
    /// A new 16-bit string that the caller frees with XSysFreeString, or null when there is no
    /// room.
    unsigned short* AllocSysString() const;

    /// Empties the string and gives up its buffer; a locked one stays, and stays locked.
    void Empty();
    /// `index` is 0 to GetLength() - 1.
    void SetAt(int index, char character);
    /// Overwrites every `oldCharacter` before the first zero byte. Double-byte characters of the
    /// code page are left alone, also one whose second byte equals `oldCharacter`.
    void ReplaceChar(char oldCharacter, char newCharacter);
    /// Turns A to Z into a to z, byte by byte as CompareNoCase does: it knows no double-byte
    /// characters. A text without capitals stays shared.
    void MakeLower();
    /// Take off ASCII white space (0x09 to 0x0D, 0x20). The capacity stays.
    void TrimLeft();
    void TrimRight();

    /// Shares the buffer of `source`, unless either of the two is locked: then the text is copied.
    const XCString& operator=(const XCString& source);
    /// A text of one character, also of the character 0.
    const XCString& operator=(char character);
    /// The source may be null, which is the empty text, and may be a part of this string.
    const XCString& operator=(const char* source);
    /// From terminated 16-bit text, as the constructor does.
    const XCString& operator=(unsigned short* source);
    /// From a length-prefixed string.
    const XCString& operator=(const unsigned char* source);

    /// Append in place while the text fits and isn't shared, otherwise in a new buffer of exactly
    /// the size needed. Appending nothing changes nothing. A part of this string may be appended.
    const XCString& operator+=(const XCString& source);
    const XCString& operator+=(char character);
    const XCString& operator+=(const char* source);
    const XCString& operator+=(const unsigned char* source);

    /// Loads the string resource `id` of `module`. Gives 1, or 0 with the string empty if the text
    /// is missing or empty. Texts of 255 characters and more leave some capacity unused.
    int LoadStringA(HINSTANCE__* module, unsigned int id);

    /// Room for `minimum` characters, to be written by the caller up to the next call that can
    /// replace the buffer; the text so far is in it. ReleaseBuffer sets the new length. At 0 it can
    /// be the shared empty buffer, where only a zero byte may be written.
    char* GetBuffer(int minimum);
    /// Ends the writing: the text is now `length` bytes long, at most GetAllocLength(), or with -1
    /// as long as its terminator says.
    void ReleaseBuffer(int length = -1);
    /// GetBuffer, and the text is `length` bytes long at once.
    char* GetBufferSetLength(int length);
    /// Gives up the capacity beyond the length, and any lock with it.
    void FreeExtra();
    /// A private buffer that copies of this string don't share, so that the caller may keep writing
    /// it. The lock lasts until UnlockBuffer or until the text needs a larger buffer.
    char* LockBuffer();
    /// Belongs to a LockBuffer before it: on a shared buffer it would overwrite the count.
    void UnlockBuffer();

  protected:
    /// The empty string, without a look at the buffer so far.
    void Init();
    /// The header of the buffer.
    XCStringData* GetData() const;
    /// A buffer of `length` characters, unset but for the terminator; 0 gives the shared empty one.
    /// The buffer so far is not released.
    void AllocBuffer(int length);
    /// `target`, whose buffer is not released, gets `copyLength` characters of this string from
    /// `copyIndex` on and `extraLength` unset ones.
    void AllocCopy(XCString& target, int copyLength, int copyIndex, int extraLength) const;
    /// Makes the text the `length` bytes at `source`, which may lie in this string.
    void AssignCopy(int length, const char* source);
    /// A buffer with both texts, one behind the other; the buffer so far is not released. Nothing
    /// changes if both are empty.
    void ConcatCopy(int length1, const char* source1, int length2, const char* source2);
    /// Appends `length` bytes, in place where they fit and the buffer isn't shared.
    void ConcatInPlace(int length, const char* source);
    /// Makes a shared buffer private, text and all.
    void CopyBeforeWrite();
    /// Makes the buffer private with room for `length` characters; the text may be lost.
    void AllocBeforeWrite(int length);
    /// Gives up the buffer: the string is empty.
    void Release();
    /// Takes one owner off the buffer, and frees it with the last.
    static void Release(XCStringData* data);
    /// 0 for null.
    static int SafeStrlen(const char* text);
    /// What the platform's call gives; a missing text leaves `buffer` an empty one.
    int LoadStringA(HINSTANCE__* module, unsigned int id, char* buffer, int size);

  private:
    char* characters_;
};

/// The one empty string, for functions that return a reference.
VELDT20_API const XCString& XGetEmptyString();
/// Frees what AllocSysString gave; null is allowed.
VELDT20_API void XSysFreeString(unsigned short* string);

/// Each is one Compare: signed bytes, up to the first zero byte. They give 1 or 0.
[[gnu::pure]] VELDT20_API int operator==(const XCString& a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator==(const XCString& a, const char* b);
[[gnu::pure]] VELDT20_API int operator==(const char* a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator!=(const XCString& a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator!=(const XCString& a, const char* b);
[[gnu::pure]] VELDT20_API int operator!=(const char* a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator<(const XCString& a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator<(const XCString& a, const char* b);
[[gnu::pure]] VELDT20_API int operator<(const char* a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator>(const XCString& a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator>(const XCString& a, const char* b);
[[gnu::pure]] VELDT20_API int operator>(const char* a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator<=(const XCString& a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator<=(const XCString& a, const char* b);
[[gnu::pure]] VELDT20_API int operator<=(const char* a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator>=(const XCString& a, const XCString& b);
[[gnu::pure]] VELDT20_API int operator>=(const XCString& a, const char* b);
[[gnu::pure]] VELDT20_API int operator>=(const char* a, const XCString& b);

namespace veldt::strings {
/// What stands under Compare: the difference of the two signed bytes at the first place where the
/// texts differ or both end. `shorter` is the lesser of their lengths.
[[gnu::pure]] VELDT20_API int DifferenceOf(const char* a, const char* b, int shorter);
}  // namespace veldt::strings

#include <veldt20/strings_xcstring_in_place.h>
