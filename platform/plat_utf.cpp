#include "plat_utf.h"

#include <cwctype>

namespace nqplat {

static void put_utf8(std::string &out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

std::string utf16_to_utf8(const char16_t *text, std::size_t length) {
    std::string out;
    if (!text) return out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        char32_t u = text[i];
        if (u >= 0xD800 && u <= 0xDBFF && i + 1 < length && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            u = 0x10000 + ((u - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        }
        put_utf8(out, u);
    }
    return out;
}

std::string utf16_to_utf8(const char16_t *text) {
    if (!text) return {};
    std::size_t n = 0;
    while (text[n]) ++n;
    return utf16_to_utf8(text, n);
}

std::u16string utf8_to_utf16(std::string_view bytes) {
    std::u16string out;
    out.reserve(bytes.size());
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
    const std::size_t n = bytes.size();
    std::size_t i = 0;
    while (i < n) {
        unsigned char b = p[i];
        int extra = 0;
        char32_t cp = 0, min = 0;
        if (b < 0x80) {
            out.push_back(b);
            ++i;
            continue;
        } else if ((b & 0xE0) == 0xC0) {
            extra = 1; cp = b & 0x1F; min = 0x80;
        } else if ((b & 0xF0) == 0xE0) {
            extra = 2; cp = b & 0x0F; min = 0x800;
        } else if ((b & 0xF8) == 0xF0) {
            extra = 3; cp = b & 0x07; min = 0x10000;
        } else {
            extra = -1;
        }
        bool ok = extra > 0;
        if (ok) {
            for (int k = 1; k <= extra; ++k) {
                if (i + k >= n || (p[i + k] & 0xC0) != 0x80) { ok = false; break; }
                cp = (cp << 6) | (p[i + k] & 0x3F);
            }
        }
        // Overlong forms and values past Unicode are not UTF-8. Encoded surrogates are
        // accepted, so that text written by utf16_to_utf8 comes back unchanged.
        if (ok && (cp < min || cp > 0x10FFFF)) ok = false;
        if (!ok) {
            out.push_back(b);  // the byte becomes the code unit of the same value
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(cp));
        }
        i += static_cast<std::size_t>(extra) + 1;
    }
    return out;
}

char16_t fold_case(char16_t unit) {
    const std::wint_t folded = std::towupper(unit);
    return folded <= 0xFFFF ? static_cast<char16_t>(folded) : unit;
}

bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (fold_case(a[i]) != fold_case(b[i])) return false;
    }
    return true;
}

}  // namespace nqplat
