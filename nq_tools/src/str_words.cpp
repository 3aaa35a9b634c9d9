// The Str family: words, tokens, keywords, versions and word wrap.
#include <cstring>
#include <string>

#include "nq_memory.h"
#include "nq_str.h"
#include "nq_strlist.h"
#include "text/nq_text.h"

namespace {

// Token sources are refused above this length; the buffers hold it with room to spare.
constexpr std::size_t kTokenSourceMax = 512;
constexpr std::size_t kTokenBufferSize = 516;
constexpr std::size_t kKeywordBufferSize = 260;
constexpr std::size_t kKeywordMax = 256;
constexpr std::size_t kReplaceBufferSize = 512;

nq_wchar g_tokenBuffer[kTokenBufferSize];
nq_wchar g_rightTokenBuffer[kTokenBufferSize];
nq_wchar g_keywordBuffer[kKeywordBufferSize];
nq_wchar g_replaceBuffer[kReplaceBufferSize];

// pos lies within src when the walk up to it meets no terminator before it.
bool within(const nq_wchar *src, int pos) {
    if (pos < 0) return false;
    for (int k = 0; k < pos; ++k) {
        if (src[k] == 0) return false;
    }
    return true;
}

nq_wchar *next_word(nq_wchar *dest, const nq_wchar *src, int *pos, nq_wchar separator,
                    bool skipAll) {
    if (!dest) return nullptr;
    dest[0] = 0;
    if (!src || !pos || !within(src, *pos)) return dest;
    int p = *pos;
    if (skipAll) {
        while (src[p] == separator) ++p;
    } else if (src[p] == separator) {
        ++p;
    }
    int n = 0;
    while (src[p] != 0 && src[p] != separator) dest[n++] = src[p++];
    dest[n] = 0;
    *pos = p;
    return dest;
}

// The search string delimiter + keyword + delimiter.
std::u16string keyword_key(const nq_wchar *keyword, const nq_wchar *delimiter) {
    return nqt::format_string(u"%s%s%s", delimiter, keyword, delimiter);
}

// text with the first occurrence of key replaced; false when there is none.
bool replace_first(const nq_wchar *text, const std::u16string &key, const nq_wchar *replacement,
                   std::u16string &out) {
    out = text;
    const nq_wchar *hit = nqt::str(text, key.c_str());
    if (!hit || key.empty()) return false;
    const std::size_t at = std::size_t(hit - text);
    out.replace(at, key.size(), replacement);
    return true;
}

}  // namespace

extern "C" {

NQ_API nq_wchar *nq_Str_nextCDLWord(nq_wchar *dest, const nq_wchar *src, int *pos) {
    return next_word(dest, src, pos, u';', false);
}

NQ_API nq_wchar *nq_Str_nextSDLWord(nq_wchar *dest, const nq_wchar *src, int *pos) {
    return next_word(dest, src, pos, u' ', true);
}

NQ_API nq_wchar *nq_Str_getNthToken(const nq_wchar *text, const nq_wchar *delimiters, int n,
                                    int *position) {
    if (position) *position = -1;
    if (!text || !delimiters || n < 0) return nullptr;
    if (nqt::len(text) > kTokenSourceMax) return nullptr;
    nqt::copy(g_tokenBuffer, text);
    nq_wchar *state = nullptr;
    nq_wchar *token = nqt::tok_r(g_tokenBuffer, delimiters, &state);
    for (int k = 0; token && k < n; ++k) token = nqt::tok_r(nullptr, delimiters, &state);
    if (token && position) *position = int(token - g_tokenBuffer);
    return token;
}

NQ_API nq_wchar *nq_Str_getRightNthToken(const nq_wchar *text, const nq_wchar *delimiters,
                                         int n, int *position) {
    if (position) *position = -1;
    if (!text || !delimiters || n < 0) return nullptr;
    const std::size_t length = nqt::len(text);
    if (length > kTokenSourceMax) return nullptr;
    nqt::copy(g_rightTokenBuffer, text);
    nqt::rev(g_rightTokenBuffer);
    nq_wchar *state = nullptr;
    nq_wchar *token = nqt::tok_r(g_rightTokenBuffer, delimiters, &state);
    for (int k = 0; token && k < n; ++k) token = nqt::tok_r(nullptr, delimiters, &state);
    if (!token) return nullptr;
    const std::size_t tokenLength = nqt::len(token);
    // In the reversed text the token ends where it begins in the original.
    if (position) *position = int(length - std::size_t(token - g_rightTokenBuffer) - tokenLength);
    nqt::rev(token);
    return token;
}

NQ_API nq_wchar *nq_Str_locateKeyword(const nq_wchar *text, const nq_wchar *delimiter) {
    if (!text || !delimiter) return nullptr;
    const std::size_t dl = nqt::len(delimiter);
    const nq_wchar *first = nqt::str(text, delimiter);
    if (!first) return nullptr;
    const nq_wchar *second = nqt::str(first + dl, delimiter);
    if (!second) return nullptr;
    std::size_t span = std::size_t(second - (first + dl));
    if (span > kKeywordMax) span = kKeywordMax;
    std::memcpy(g_keywordBuffer, first + dl, span * sizeof(nq_wchar));
    g_keywordBuffer[span] = 0;
    return g_keywordBuffer;
}

NQ_API nq_wchar *nq_Str_replaceKeyword(nq_wchar *text, const nq_wchar *keyword,
                                       const nq_wchar *delimiter, const nq_wchar *replacement,
                                       int maxLength) {
    if (!text || !keyword || !delimiter || !replacement) return nullptr;
    std::u16string work;
    replace_first(text, keyword_key(keyword, delimiter), replacement, work);
    // Copied back also when nothing was found, so an over-long text is cut in any case.
    nq_Str_ncpy(text, work.c_str(), maxLength);
    return text;
}

NQ_API nq_wchar *nq_Str_replaceKeywordDynamic(const nq_wchar *text, const nq_wchar *keyword,
                                              const nq_wchar *delimiter,
                                              const nq_wchar *replacement) {
    if (!text || !keyword || !delimiter || !replacement) return nullptr;
    std::u16string work;
    replace_first(text, keyword_key(keyword, delimiter), replacement, work);
    return nq_Str_dup(work.c_str());
}

NQ_API nq_wchar *nq_Str_replaceChar(const nq_wchar *text, const nq_wchar *from,
                                    const nq_wchar *to) {
    g_replaceBuffer[0] = 0;
    if (!text) return g_replaceBuffer;
    const std::size_t fromLength = from ? nqt::len(from) : 0;
    const std::size_t toLength = to ? nqt::len(to) : 0;
    std::size_t out = 0;
    // The result is cut where the buffer ends rather than written past it.
    auto put = [&](const nq_wchar *p, std::size_t n) {
        for (std::size_t k = 0; k < n && out + 1 < kReplaceBufferSize; ++k) {
            g_replaceBuffer[out++] = p[k];
        }
    };
    std::size_t i = 0;
    while (text[i] != 0 && out + 1 < kReplaceBufferSize) {
        // An empty from would never advance the walk; it matches nothing.
        if (fromLength > 0 && nqt::ncmp(text + i, from, fromLength) == 0) {
            put(to, toLength);
            i += fromLength;
        } else {
            put(text + i, 1);
            ++i;
        }
    }
    g_replaceBuffer[out] = 0;
    return g_replaceBuffer;
}

NQ_API int nq_Str_compareVersion(const nq_wchar *a, const nq_wchar *b) {
    if (!a && !b) return 0;
    if (!a) return -1;
    if (!b) return 1;
    if (nqt::icmp(a, b) == 0) return 0;
    StrList *la = nq_StrList_fromDelimitedString(a, u".");
    StrList *lb = nq_StrList_fromDelimitedString(b, u".");
    int result = 0;
    // The walk follows a alone: extra components of b are never looked at.
    const int count = nq_StrList_length(la);
    for (int i = 0; i < count && result == 0; ++i) {
        const double va = nqt::tof(nq_StrList_getNth(la, i));
        const nq_wchar *sb = nq_StrList_getNth(lb, i);
        const double vb = sb ? nqt::tof(sb) : 0.0;
        if (va > vb) result = 1;
        else if (vb > va) result = -1;
    }
    nq_StrList_destroy(la);
    nq_StrList_destroy(lb);
    return result;
}

NQ_API int nq_Str_findClosestWordBoundary(const nq_wchar *text, int n) {
    if (!text || n < 1) return 0;
    // Nothing past the terminator is read; the count is still measured from n.
    long k = n - 1;
    const long last = long(nqt::len(text)) - 1;
    if (k > last) k = last;
    for (; k >= 0; --k) {
        if (text[k] == u' ') return int(n - k);
    }
    return 0;
}

NQ_API StrList *nq_Str_wrapText(const nq_wchar *text, int width) {
    if (!text || width < 1) return nullptr;
    const std::u16string copy = text;
    const nq_wchar *p = copy.c_str();
    StrList *lines = nullptr;
    auto add = [&](const std::u16string &line) {
        if (!lines) lines = nq_StrList_create(line.c_str(), nullptr);
        else nq_StrList_insEnd(lines, line.c_str());
    };
    while (nqt::len(p) > std::size_t(width)) {
        if (*p == u' ') {
            ++p;
        } else if (p[width] == u' ') {
            add(std::u16string(p, std::size_t(width)));
            p += width;
        } else {
            const int back = nq_Str_findClosestWordBoundary(p, width);
            const int take = width - back;
            add(std::u16string(p, std::size_t(take)));
            p += take;
        }
    }
    // The rest, empty or with a leading space, is the last line.
    add(std::u16string(p));
    return lines;
}

}  // extern "C"
