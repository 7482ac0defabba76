// The string forms as the standard library knows strings. A view of a string is valid as long as
// the string's own text is: until it is written or ends.
#pragma once

#include <veldt20/strings.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <string_view>
#include <version>
#ifdef __cpp_lib_format
#include <format>
#endif

/// All of the text, zero bytes included.
inline std::string_view XStringView(const XCString& text) noexcept {
    return {static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength())};
}
inline std::string_view XStringView(const XString& text) noexcept {
    return {text.GetCStr(), static_cast<std::size_t>(text.GetLength())};
}
/// Of a length-prefixed string.
inline std::string_view XStringView(const unsigned char* text) noexcept {
    return {reinterpret_cast<const char*>(text) + 1, text[0]};
}

/// Throws std::bad_alloc for want of memory and for a text beyond 2^31 - 2 bytes. An XStr<N> takes
/// a view by itself.
inline XCString XCStringFrom(std::string_view text) {
    constexpr std::size_t kLongest = 0x7FFFFFFE;
    if (text.size() > kLongest) throw std::bad_alloc();
    return XCString(text.data(), static_cast<int>(text.size()));
}

/// Writes the length byte and at most `limit` characters, 0 to 255, of a text that may lie in the
/// target itself. Gives `to`.
inline unsigned char* XPascalStrFrom(std::string_view text, unsigned char* to,
                                     std::size_t limit = 255) noexcept {
    const std::size_t length = text.size() < limit ? text.size() : limit;
    if (length != 0) std::memmove(to + 1, text.data(), length);
    to[0] = static_cast<unsigned char>(length);
    return to;
}

/// Each writes all of the text, by the stream's width and fill.
inline std::ostream& operator<<(std::ostream& stream, const XCString& text) {
    return stream << XStringView(text);
}
inline std::ostream& operator<<(std::ostream& stream, const XString& text) {
    return stream << XStringView(text);
}

/// Agrees with ==, which sees the text before the first zero byte.
template <>
struct std::hash<XCString> {
    /// The hash of the text before the first zero byte.
    std::size_t operator()(const XCString& text) const noexcept {
        return std::hash<std::string_view>()(static_cast<const char*>(text));
    }
};

/// Agrees with ==, which sees all of the text.
template <int N>
struct std::hash<XStr<N>> {
    /// The hash of all of the text.
    std::size_t operator()(const XStr<N>& text) const noexcept {
        return std::hash<std::string_view>()(XStringView(text));
    }
};

// Only where the standard library has <format>; g++ 12 and clang 14 come with one that has not.
#ifdef __cpp_lib_format
/// With the format options of std::string_view.
template <>
struct std::formatter<XCString> : std::formatter<std::string_view> {
    /// Writes all of the text.
    template <class Context>
    auto format(const XCString& text, Context& context) const {
        return std::formatter<std::string_view>::format(XStringView(text), context);
    }
};

/// With the format options of std::string_view.
template <int N>
struct std::formatter<XStr<N>> : std::formatter<std::string_view> {
    /// Writes all of the text.
    template <class Context>
    auto format(const XStr<N>& text, Context& context) const {
        return std::formatter<std::string_view>::format(XStringView(text), context);
    }
};
#endif
