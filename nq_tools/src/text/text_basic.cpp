// Length, copy, compare, search, tokens, case and reverse of UTF-16 strings.
//
// A null pointer where a string is read counts as the empty string; a null pointer where a
// string is written makes the call do nothing and yield null. The C functions these stand in
// for would crash instead, and nothing here may.
#include <cwctype>

#include "nq_text.h"

namespace nqt {

namespace {

const wchar kEmpty[1] = {0};

const wchar *or_empty(const wchar *s) { return s ? s : kEmpty; }

bool contains(const wchar *set, wchar c) {
    for (; *set; ++set) {
        if (*set == c) return true;
    }
    return false;
}

// The state of tok() between calls; each thread splits its own text.
thread_local wchar *t_tok_state = nullptr;

}  // namespace

std::size_t len(const wchar *s) {
    if (!s) return 0;
    std::size_t n = 0;
    while (s[n]) ++n;
    return n;
}

wchar *copy(wchar *dest, const wchar *src) {
    if (!dest) return nullptr;
    src = or_empty(src);
    std::size_t i = 0;
    while ((dest[i] = src[i]) != 0) ++i;
    return dest;
}

wchar *ncopy(wchar *dest, const wchar *src, std::size_t n) {
    if (!dest) return nullptr;
    src = or_empty(src);
    std::size_t i = 0;
    for (; i < n && src[i]; ++i) dest[i] = src[i];
    for (; i < n; ++i) dest[i] = 0;  // pads like wcsncpy; no terminator when src fills n
    return dest;
}

std::size_t copy_bounded(wchar *dest, std::size_t capacity, const wchar *src) {
    if (!dest || capacity == 0) return 0;
    src = or_empty(src);
    std::size_t i = 0;
    for (; i + 1 < capacity && src[i]; ++i) dest[i] = src[i];
    dest[i] = 0;
    return i;
}

wchar *cat(wchar *dest, const wchar *src) {
    if (!dest) return nullptr;
    copy(dest + len(dest), src);
    return dest;
}

int cmp(const wchar *a, const wchar *b) {
    a = or_empty(a);
    b = or_empty(b);
    for (;; ++a, ++b) {
        if (*a != *b) return *a < *b ? -1 : 1;
        if (*a == 0) return 0;
    }
}

int ncmp(const wchar *a, const wchar *b, std::size_t n) {
    a = or_empty(a);
    b = or_empty(b);
    for (std::size_t i = 0; i < n; ++i) {
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
        if (a[i] == 0) return 0;
    }
    return 0;
}

int icmp(const wchar *a, const wchar *b) {
    return nicmp(a, b, static_cast<std::size_t>(-1));
}

int nicmp(const wchar *a, const wchar *b, std::size_t n) {
    a = or_empty(a);
    b = or_empty(b);
    for (std::size_t i = 0; i < n; ++i) {
        // Both sides lower-cased, so '_' (0x5F) sorts after letters, as the runtime has it.
        const int la = tolower(a[i]), lb = tolower(b[i]);
        if (la != lb) return la - lb;
        if (la == 0) return 0;
    }
    return 0;
}

const wchar *chr(const wchar *s, wchar c) {
    if (!s) return nullptr;
    for (;; ++s) {
        if (*s == c) return s;
        if (*s == 0) return nullptr;
    }
}

wchar *chr(wchar *s, wchar c) { return const_cast<wchar *>(chr(static_cast<const wchar *>(s), c)); }

const wchar *rchr(const wchar *s, wchar c) {
    if (!s) return nullptr;
    const wchar *found = nullptr;
    for (;; ++s) {
        if (*s == c) found = s;
        if (*s == 0) return found;
    }
}

wchar *rchr(wchar *s, wchar c) { return const_cast<wchar *>(rchr(static_cast<const wchar *>(s), c)); }

const wchar *str(const wchar *haystack, const wchar *needle) {
    if (!haystack) return nullptr;
    needle = or_empty(needle);
    if (*needle == 0) return haystack;
    for (; *haystack; ++haystack) {
        std::size_t i = 0;
        while (needle[i] && haystack[i] == needle[i]) ++i;
        if (needle[i] == 0) return haystack;
    }
    return nullptr;
}

wchar *str(wchar *haystack, const wchar *needle) {
    return const_cast<wchar *>(str(static_cast<const wchar *>(haystack), needle));
}

std::size_t spn(const wchar *s, const wchar *accept) {
    s = or_empty(s);
    accept = or_empty(accept);
    std::size_t n = 0;
    while (s[n] && contains(accept, s[n])) ++n;
    return n;
}

std::size_t cspn(const wchar *s, const wchar *reject) {
    s = or_empty(s);
    reject = or_empty(reject);
    std::size_t n = 0;
    while (s[n] && !contains(reject, s[n])) ++n;
    return n;
}

wchar *tok_r(wchar *s, const wchar *delims, wchar **state) {
    if (!state) return nullptr;
    if (!s) s = *state;
    if (!s) return nullptr;  // no text given and none left from an earlier call
    delims = or_empty(delims);
    s += spn(s, delims);
    if (*s == 0) {
        *state = s;  // further calls keep answering null
        return nullptr;
    }
    wchar *end = s + cspn(s, delims);
    if (*end) {
        *end = 0;
        *state = end + 1;
    } else {
        *state = end;
    }
    return s;
}

wchar *tok(wchar *s, const wchar *delims) { return tok_r(s, delims, &t_tok_state); }

wchar *rev(wchar *s) {
    if (!s) return nullptr;
    std::size_t n = len(s);
    // Code units are swapped as they lie; a surrogate pair comes out in reverse order.
    for (std::size_t i = 0; i < n / 2; ++i) {
        const wchar t = s[i];
        s[i] = s[n - 1 - i];
        s[n - 1 - i] = t;
    }
    return s;
}

wchar *upr(wchar *s) {
    if (!s) return nullptr;
    for (wchar *p = s; *p; ++p) *p = toupper(*p);
    return s;
}

wchar *lwr(wchar *s) {
    if (!s) return nullptr;
    for (wchar *p = s; *p; ++p) *p = tolower(*p);
    return s;
}

// A mapping that would leave the 16-bit range keeps the unit as it is.
wchar toupper(wchar c) {
    const std::wint_t r = std::towupper(c);
    return r <= 0xFFFF ? static_cast<wchar>(r) : c;
}

wchar tolower(wchar c) {
    const std::wint_t r = std::towlower(c);
    return r <= 0xFFFF ? static_cast<wchar>(r) : c;
}

bool isspace(wchar c) { return std::iswspace(c) != 0; }
bool isdigit(wchar c) { return std::iswdigit(c) != 0; }
bool isalpha(wchar c) { return std::iswalpha(c) != 0; }
bool isalnum(wchar c) { return std::iswalnum(c) != 0; }

}  // namespace nqt
