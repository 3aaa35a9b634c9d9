// Helpers of the string, file name and file tests: wide texts and library names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "nq_tls20an.h"

namespace nqtt {

// A library result as a string; a null one as a mark that no text can equal.
inline std::u16string S(const nq_wchar *p) { return p ? std::u16string(p) : u"<null>"; }

// UTF-8 to UTF-16 (the tests' own, so they do not lean on the library's conversion).
inline std::u16string W(const std::string &utf8) {
    std::u16string out;
    for (std::size_t i = 0; i < utf8.size();) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        char32_t cp = c;
        int more = 0;
        if (c >= 0xF0) { cp = c & 0x07; more = 3; }
        else if (c >= 0xE0) { cp = c & 0x0F; more = 2; }
        else if (c >= 0xC0) { cp = c & 0x1F; more = 1; }
        ++i;
        for (int k = 0; k < more && i < utf8.size(); ++k, ++i) {
            cp = (cp << 6) | (static_cast<unsigned char>(utf8[i]) & 0x3F);
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(char16_t(0xD800 + (cp >> 10)));
            out.push_back(char16_t(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(char16_t(cp));
        }
    }
    return out;
}

// A Linux path in the library's form: "/tmp/x" is "C:\tmp\x".
inline std::u16string L(const std::string &path) {
    std::u16string out = W(path);
    for (char16_t &c : out) {
        if (c == u'/') c = u'\\';
    }
    if (!out.empty() && out[0] == u'\\') out = u"C:" + out;
    return out;
}

// A writable wide buffer holding text, with room to spare.
inline std::vector<nq_wchar> B(const std::u16string &text, std::size_t room = 600) {
    std::vector<nq_wchar> buffer(text.size() + room, 0);
    text.copy(buffer.data(), text.size());
    return buffer;
}

// The strings of a list from head to tail, whole (not through the cut of getCurr).
inline std::vector<std::u16string> entries(StrList *list) {
    std::vector<std::u16string> out;
    for (LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const StrListNode *node = static_cast<const StrListNode *>(n->data);
        out.push_back(node && node->string ? node->string : u"<null>");
    }
    return out;
}

using Strings = std::vector<std::u16string>;

}  // namespace nqtt
