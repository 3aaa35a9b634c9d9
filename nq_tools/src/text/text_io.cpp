// Encoding conversions and UTF-8 output of UTF-16 text.
//
// Output goes through the byte functions of the C streams only: a stream used once with the
// wide functions would refuse the byte ones ever after, and the console takes UTF-8 anyway.
#include <climits>
#include <cstdio>

#include "plat_utf.h"
#include "text_format_internal.h"

namespace nqt {

std::string to_utf8(const wchar *s) { return nqplat::utf16_to_utf8(s); }

std::string to_utf8(std::u16string_view s) { return nqplat::utf16_to_utf8(s.data(), s.size()); }

std::u16string from_utf8(std::string_view bytes) { return nqplat::utf8_to_utf16(bytes); }

std::u16string from_bytes(std::string_view bytes) {
    std::u16string out;
    out.reserve(bytes.size());
    for (const char b : bytes) out.push_back(static_cast<unsigned char>(b));
    return out;
}

std::string to_bytes(const wchar *s) {
    std::string out;
    if (!s) return out;
    for (; *s; ++s) out.push_back(*s <= 0xFF ? static_cast<char>(*s) : '?');
    return out;
}

namespace {

bool write_utf8(std::FILE *stream, std::u16string_view text) {
    const std::string bytes = to_utf8(text);
    return bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

}  // namespace

int vfprint(std::FILE *stream, const wchar *fmt, va_list args) {
    if (!stream || !fmt) return -1;
    std::u16string text;
    const int n = detail::format_append(text, fmt, args);
    if (n < 0) return -1;
    return write_utf8(stream, text) ? n : -1;
}

int fprint(std::FILE *stream, const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int n = vfprint(stream, fmt, args);
    va_end(args);
    return n;
}

int vprint(const wchar *fmt, va_list args) { return vfprint(stdout, fmt, args); }

int print(const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int n = vfprint(stdout, fmt, args);
    va_end(args);
    return n;
}

int put(const wchar *s, std::FILE *stream) {
    if (!s || !stream) return -1;
    const std::size_t n = len(s);
    if (!write_utf8(stream, std::u16string_view(s, n))) return -1;
    return n > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(n);
}

}  // namespace nqt
