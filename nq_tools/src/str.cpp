// The Str family: copies, comparisons, wildcards, case, blanks and justification.
// Words, tokens, keywords, versions and word wrap are in str_words.cpp.
#include "nq_str.h"

#include <cstring>

#include "nq_memory.h"
#include "text/nq_text.h"

namespace {

// The match itself; both strings are non-null here.
int match_forward(const nq_wchar *text, const nq_wchar *pattern) {
    const std::size_t length = nqt::len(text);
    std::size_t i = 0;  // in the text; may pass its terminator by one "?" at a time
    std::size_t j = 0;  // in the pattern
    // A text position past the terminator reads as no character at all: only "?" passes it.
    auto at = [&](std::size_t k) -> long { return k <= length ? long(text[k]) : -1L; };
    while (pattern[j] != 0) {
        if (pattern[j] == u'*') {
            while (pattern[j] == u'*') ++j;
            if (pattern[j] == 0) {
                i = length;
                break;
            }
            const nq_wchar c = pattern[j];  // taken literally, "?" included
            if (i > length) return 0;
            const nq_wchar *found = nqt::chr(text + i, c);
            if (!found || *found == 0) return 0;
            i = std::size_t(found - text) + 1;
            ++j;
        } else {
            if (pattern[j] != u'?' && long(pattern[j]) != at(i)) return 0;
            ++i;
            ++j;
        }
    }
    return i >= length ? 1 : 0;
}

}  // namespace

extern "C" {

NQ_API nq_wchar *nq_Str_dup(const nq_wchar *string) {
    if (!string) return nullptr;
    const size_t length = nqt::len(string);
    auto *copy = static_cast<nq_wchar *>(nq_Malloc((length + 1) * sizeof(nq_wchar)));
    if (copy) std::memcpy(copy, string, (length + 1) * sizeof(nq_wchar));
    return copy;
}

NQ_API nq_wchar *nq_Str_dupW(const nq_wchar *string) __attribute__((alias("nq_Str_dup")));

NQ_API nq_wchar *nq_Str_cpy(nq_wchar *dest, const nq_wchar *src) {
    if (!dest) return nullptr;
    if (!src) {
        dest[0] = 0;
        return nullptr;
    }
    const std::size_t n = nqt::len(src);
    std::memmove(dest, src, n * sizeof(nq_wchar));
    dest[n] = 0;
    dest[n + 1] = 0;  // the second terminator is part of the copy
    return dest;
}

NQ_API int nq_Str_ncpy(nq_wchar *dest, const nq_wchar *src, int n) {
    if (!dest) return 0;
    int copied = 0;
    if (src) {
        while (copied < n && src[copied] != 0) {
            dest[copied] = src[copied];
            ++copied;
        }
    }
    dest[copied] = 0;
    return copied == n ? 1 : 0;
}

NQ_API nq_wchar *nq_Str_cat(nq_wchar *dest, const nq_wchar *src) {
    if (!dest || !src) return nullptr;
    nq_Str_cpy(dest + nqt::len(dest), src);
    return dest;
}

NQ_API nq_wchar *nq_Str_substr(nq_wchar *dest, const nq_wchar *src, int start, int length) {
    if (!dest) return nullptr;
    dest[0] = 0;
    if (!src) return dest;
    if (start < 1) start = 1;
    const nq_wchar *p = src;
    for (int k = 1; k < start && *p != 0; ++k) ++p;
    int n = 0;
    while (n < length && p[n] != 0) {
        dest[n] = p[n];
        ++n;
    }
    dest[n] = 0;
    return dest;
}

NQ_API int nq_Str_cmpi(const nq_wchar *a, const nq_wchar *b) {
    // A null is the empty string when compared with one, and sorts after everything else.
    if (!a || !b) {
        const nq_wchar *other = a ? a : b;
        if (!other || other[0] == 0) return 0;
        return a ? -1 : 1;
    }
    for (std::size_t i = 0;; ++i) {
        const nq_wchar ca = nqt::toupper(a[i]);
        const nq_wchar cb = nqt::toupper(b[i]);
        if (ca != cb) return ca < cb ? -1 : 1;
        if (ca == 0) return 0;
    }
}

NQ_API int nq_Str_ncmpi(const nq_wchar *a, const nq_wchar *b, int n) {
    static const nq_wchar empty[1] = {0};
    if (!a) a = empty;
    if (!b) b = empty;
    for (int i = 0; i < n; ++i) {
        const nq_wchar ca = nqt::toupper(a[i]);
        const nq_wchar cb = nqt::toupper(b[i]);
        if (ca != cb) return ca < cb ? -1 : 1;
        if (ca == 0) return 0;
    }
    return 0;
}

NQ_API int nq_Str_isAffirmative(const nq_wchar *string) {
    if (!string) return 0;
    for (const nq_wchar *word : {u"1", u"TRUE", u"YES", u"ON"}) {
        if (nq_Str_cmpi(string, word) == 0) return 1;
    }
    return 0;
}

NQ_API int nq_Str_isNegative(const nq_wchar *string) {
    if (!string) return 0;
    for (const nq_wchar *word : {u"0", u"FALSE", u"NO", u"OFF"}) {
        if (nq_Str_cmpi(string, word) == 0) return 1;
    }
    return 0;
}

NQ_API int nq_Str_index(const nq_wchar *text, const nq_wchar *pattern, int ignoreCase) {
    if (!text || !pattern) return -1;
    const std::size_t tl = nqt::len(text), pl = nqt::len(pattern);
    if (pl > tl) return -1;
    for (std::size_t i = 0; i <= tl - pl; ++i) {
        if (ignoreCase && nqt::nicmp(text + i, pattern, pl) == 0) return int(i);
        if (nqt::ncmp(text + i, pattern, pl) == 0) return int(i);
    }
    return -1;
}

NQ_API int nq_Str_matchWildcard(const nq_wchar *text, const nq_wchar *pattern) {
    if (!text || !pattern) return 0;
    return match_forward(text, pattern);
}

NQ_API int nq_Str_matchWildcardi(const nq_wchar *text, const nq_wchar *pattern) {
    nq_wchar *t = nq_Str_dup(text);
    nq_wchar *p = nq_Str_dup(pattern);
    int result = 0;
    if (t && p) result = match_forward(nq_Str_toUpper(t, t), nq_Str_toUpper(p, p));
    nq_Free(t);
    nq_Free(p);
    return result;
}

NQ_API nq_wchar *nq_Str_toUpper(nq_wchar *dest, const nq_wchar *src) {
    if (!dest) return nullptr;
    std::size_t i = 0;
    if (src) {
        for (; src[i] != 0; ++i) dest[i] = nqt::toupper(src[i]);
    }
    dest[i] = 0;
    return dest;
}

NQ_API nq_wchar *nq_Str_toLower(nq_wchar *dest, const nq_wchar *src) {
    if (!dest) return nullptr;
    std::size_t i = 0;
    if (src) {
        for (; src[i] != 0; ++i) dest[i] = nqt::tolower(src[i]);
    }
    dest[i] = 0;
    return dest;
}

NQ_API nq_wchar *nq_Str_rlb(nq_wchar *string) {
    if (!string) return nullptr;
    std::size_t skip = 0;
    while (string[skip] != 0 && nqt::isspace(string[skip])) ++skip;
    if (skip > 0) {
        std::memmove(string, string + skip, (nqt::len(string + skip) + 1) * sizeof(nq_wchar));
    }
    return string;
}

NQ_API nq_wchar *nq_Str_rtb(nq_wchar *string) {
    if (!string) return nullptr;
    std::size_t n = nqt::len(string);
    while (n > 0 && nqt::isspace(string[n - 1])) --n;
    string[n] = 0;
    return string;
}

NQ_API nq_wchar *nq_Str_delBlks(nq_wchar *string) {
    nq_Str_rlb(string);
    return nq_Str_rtb(string);
}

NQ_API nq_wchar *nq_Str_stripChar(nq_wchar *string, nq_wchar c) {
    if (!string) return nullptr;
    std::size_t out = 0;
    for (std::size_t in = 0; string[in] != 0; ++in) {
        if (string[in] != c) string[out++] = string[in];
    }
    string[out] = 0;
    return string;
}

NQ_API nq_wchar *nq_Str_strip(nq_wchar *string) { return nq_Str_stripChar(string, u' '); }

NQ_API nq_wchar *nq_Str_stripChars(nq_wchar *string, const nq_wchar *set, int leadingOnly) {
    if (!string || !set) return string;
    std::size_t out = 0, in = 0;
    for (; string[in] != 0; ++in) {
        const bool inSet = nqt::chr(set, string[in]) != nullptr;
        if (!inSet) {
            if (leadingOnly) break;
            string[out++] = string[in];
        }
    }
    if (leadingOnly) {
        // The rest from the first character outside the set is kept whole.
        std::memmove(string + out, string + in, (nqt::len(string + in) + 1) * sizeof(nq_wchar));
    } else {
        string[out] = 0;
    }
    return string;
}

NQ_API void nq_Str_pad(nq_wchar *string, int length) {
    if (!string) return;
    int n = int(nqt::len(string));
    while (n < length) string[n++] = u' ';
    string[n] = 0;
}

NQ_API void nq_Str_lj(nq_wchar *string, int width) {
    if (!string) return;
    if (width < 0) width = 0;
    nq_Str_pad(string, width);
    string[width] = 0;
}

NQ_API void nq_Str_rj(nq_wchar *string, int width) {
    if (!string) return;
    if (width < 0) width = 0;
    const int length = int(nqt::len(string));
    const int pad = width - length;
    if (pad > 0) {
        std::memmove(string + pad, string, std::size_t(length) * sizeof(nq_wchar));
        for (int k = 0; k < pad; ++k) string[k] = u' ';
    }
    string[width] = 0;
}

NQ_API void nq_Str_cj(nq_wchar *string, int width) {
    if (!string) return;
    if (width < 0) width = 0;
    const int length = int(nqt::len(string));
    const int pad = width - length;
    if (pad > 0) {
        const int left = pad / 2;  // an odd pad leaves the extra space on the right
        for (int k = left + length; k < width; ++k) string[k] = u' ';
        std::memmove(string + left, string, std::size_t(length) * sizeof(nq_wchar));
        for (int k = 0; k < left; ++k) string[k] = u' ';
    }
    string[width] = 0;
}

}  // extern "C"
