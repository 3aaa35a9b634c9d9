// The Fname family: file names taken apart and put together as text. The backslash
// separates, the colon marks a drive. Only nq_Fname_fullPath asks the system anything.
#include "nq_fname.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "nq_str.h"
#include "plat_fs.h"
#include "text/nq_text.h"

namespace {

constexpr std::size_t kNameBufferSize = 512;

nq_wchar g_abbreviated[kNameBufferSize];
nq_wchar g_fullPath[kNameBufferSize];
nq_wchar g_tempName[kNameBufferSize];

// The extension's dot: from the end back to the last backslash; -1 when there is none.
long extension_dot(const nq_wchar *name) {
    for (long i = long(nqt::len(name)) - 1; i >= 0 && name[i] != u'\\'; --i) {
        if (name[i] == u'.') return i;
    }
    return -1;
}

// Copies into a static name buffer, cut where it ends.
nq_wchar *put_static(nq_wchar *buffer, const std::u16string &text, std::size_t maximum) {
    std::size_t n = text.size();
    if (n > maximum) n = maximum;
    if (n > kNameBufferSize - 1) n = kNameBufferSize - 1;
    text.copy(buffer, n);
    buffer[n] = 0;
    return buffer;
}

std::u16string cut(const std::u16string &text, long maximum) {
    if (maximum < 0) maximum = 0;
    return text.substr(0, std::size_t(maximum));
}

// The absolute form of name against the current folder cwd ("C:\..."), with "." and ".."
// resolved and repeated backslashes made one. Empty when it cannot be formed.
std::u16string absolute_name(std::u16string name, const std::u16string &cwd) {
    for (char16_t &c : name) {
        if (c == u'/') c = u'\\';  // the runtime accepts either separator here
    }
    std::u16string root, rest;
    if (name.size() >= 2 && name[0] == u'\\' && name[1] == u'\\') {
        root = u"\\\\";
        rest = name.substr(2);
    } else if (name.size() >= 2 && name[1] == u':') {
        root = name.substr(0, 2) + u"\\";
        rest = name.substr(2);
        const bool sameDrive = !cwd.empty() && nqt::toupper(cwd[0]) == nqt::toupper(name[0]);
        if ((rest.empty() || rest[0] != u'\\') && sameDrive) rest = cwd.substr(2) + u"\\" + rest;
    } else if (!name.empty() && name[0] == u'\\') {
        if (cwd.size() < 2) return {};
        root = cwd.substr(0, 2) + u"\\";
        rest = name;
    } else {
        if (cwd.size() < 2) return {};
        root = cwd.substr(0, 2) + u"\\";
        rest = cwd.substr(2) + u"\\" + name;
    }
    std::vector<std::u16string> parts;
    std::size_t pos = 0;
    while (pos <= rest.size()) {
        std::size_t end = rest.find(u'\\', pos);
        if (end == std::u16string::npos) end = rest.size();
        const std::u16string part = rest.substr(pos, end - pos);
        if (part == u"..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!part.empty() && part != u".") {
            parts.push_back(part);
        }
        pos = end + 1;
    }
    std::u16string out = root;
    for (std::size_t k = 0; k < parts.size(); ++k) {
        if (k) out += u'\\';
        out += parts[k];
    }
    if (!parts.empty() && !name.empty() && name.back() == u'\\') out += u'\\';
    return out;
}

// The abbreviation's working form: head, "\...\", tail.
std::u16string working_form(const std::u16string &head, const std::u16string &tail) {
    return head + u"\\...\\" + tail;
}

std::u16string abbreviate(const std::u16string &name, long maximum) {
    if (long(name.size()) <= maximum) return name;
    if (name.find(u'\\') == std::u16string::npos) return cut(name, maximum);

    std::vector<nq_wchar> scratch(name.begin(), name.end());
    scratch.push_back(0);
    const std::u16string last = nq_Fname_rmvPath(scratch.data());
    if (long(last.size()) > maximum) return cut(last, maximum);

    // Head: leading backslashes (short of the last character) and the first token.
    std::u16string head;
    for (std::size_t i = 0; i + 1 < name.size() && name[i] == u'\\'; ++i) head += u'\\';
    int headPos = -1, tailPos = -1;
    const nq_wchar *token = nq_Str_getNthToken(name.c_str(), u"\\", 0, &headPos);
    const bool haveHead = token != nullptr;
    if (token) head += token;
    // Tail: the last token and one backslash for each trailing backslash.
    token = nq_Str_getRightNthToken(name.c_str(), u"\\", 0, &tailPos);
    const bool haveTail = token != nullptr;
    std::u16string tail = token ? token : u"";
    for (std::size_t i = name.size(); i > 0 && name[i - 1] == u'\\'; --i) tail += u'\\';

    // This branch alone cuts one character shorter.
    if (!haveHead || !haveTail || headPos == tailPos) return cut(last, maximum - 1);

    std::u16string working = working_form(head, tail);
    if (long(working.size()) == maximum) return working;
    if (long(working.size()) > maximum) {
        const std::u16string shorter = u"...\\" + tail;
        return long(shorter.size()) <= maximum ? shorter : tail;
    }

    // Grow from both ends in turns, the tail side first.
    std::u16string best;
    long tailLength = 0, headLength = 0;
    int rightIndex = 1, leftIndex = 1;
    for (;;) {
        best = working;
        if (tailLength < maximum) {
            int pos = -1;
            token = nq_Str_getRightNthToken(name.c_str(), u"\\", rightIndex++, &pos);
            if (!token || pos <= headPos) return best;
            const std::u16string previous = tail;
            tail = std::u16string(token) + u"\\" + tail;
            working = working_form(head, tail);
            tailLength = long(working.size());
            if (tailLength == maximum) return working;
            if (tailLength > maximum) {
                working = best;
                tail = previous;
            } else {
                best = working;
                tailPos = pos;
            }
        }
        if (headLength < maximum) {
            int pos = -1;
            token = nq_Str_getNthToken(name.c_str(), u"\\", leftIndex++, &pos);
            if (!token || pos >= tailPos) return best;
            const std::u16string previous = head;
            head = head + u"\\" + token;
            working = working_form(head, tail);
            headLength = long(working.size());
            if (headLength == maximum) return working;
            if (headLength > maximum) {
                working = best;
                if (tailLength < maximum) head = previous;
            } else {
                best = working;
                headPos = pos;
            }
        }
        if (tailLength > maximum && headLength > maximum) return working;
    }
}

}  // namespace

extern "C" {

NQ_API nq_wchar *nq_Fname_rmvPath(nq_wchar *name) {
    if (!name) return name;
    const size_t length = nqt::len(name);
    size_t start = 0;
    for (size_t i = 0; i < length; ++i) {
        if (name[i] == u'\\' || name[i] == u':') start = i + 1;
    }
    if (start > 0) std::memmove(name, name + start, (length - start + 1) * sizeof(nq_wchar));
    return name;
}

NQ_API nq_wchar *nq_Fname_abbreviate(const nq_wchar *name, int maximum) {
    g_abbreviated[0] = 0;
    if (!name || maximum >= 513) return g_abbreviated;
    // The name is held in the result buffer first, so a longer one is cut to fit it.
    put_static(g_abbreviated, name, kNameBufferSize - 1);
    nq_Str_rlb(g_abbreviated);
    nq_Str_rtb(g_abbreviated);
    const std::u16string trimmed = g_abbreviated;
    return put_static(g_abbreviated, abbreviate(trimmed, maximum), kNameBufferSize - 1);
}

NQ_API int nq_Fname_addExt(nq_wchar *name, const nq_wchar *extension) {
    if (!name || !extension) return 0;
    long dot = extension_dot(name);
    if (dot < 0) dot = long(nqt::len(name));
    name[dot] = u'.';
    nqt::copy(name + dot + 1, extension);
    return 0;
}

NQ_API int nq_Fname_modExt(nq_wchar *name, const nq_wchar *extension, int replace) {
    if (!name) return 0;
    const long dot = extension_dot(name);
    if (dot >= 0 && !replace) return 1;
    if (!extension || extension[0] == 0) {
        if (dot >= 0) name[dot] = 0;
        return 1;
    }
    nq_Fname_addExt(name, extension);
    return 1;
}

NQ_API nq_wchar *nq_Fname_rmvExt(nq_wchar *name) {
    if (!name) return nullptr;
    long i = long(nqt::len(name)) - 1;
    while (i > 0 && name[i] != u'\\' && name[i] != u':' && name[i] != u'.') --i;
    // Index 0 is tested too: ".profile" loses everything.
    if (i >= 0 && name[i] == u'.') name[i] = 0;
    return name;
}

NQ_API int nq_Fname_extractExt(const nq_wchar *name, nq_wchar *output) {
    if (!output) return 0;
    output[0] = 0;
    if (!name) return 0;
    const long dot = extension_dot(name);
    if (dot < 0) return 0;
    nqt::copy(output, name + dot + 1);
    return int(nqt::len(output));
}

NQ_API int nq_Fname_extractPath(const nq_wchar *name, nq_wchar *output) {
    if (!output) return 0;
    output[0] = 0;
    if (!name) return 0;
    long end = -1;
    for (long i = 0; name[i] != 0; ++i) {
        if (name[i] == u'\\' || name[i] == u':') end = i;
    }
    for (long i = 0; i <= end; ++i) output[i] = name[i];
    output[end + 1] = 0;
    return int(end + 1);
}

NQ_API nq_wchar *nq_Fname_fixDir(nq_wchar *folder) {
    if (!folder) return nullptr;
    const std::size_t n = nqt::len(folder);
    if (n > 0 && folder[n - 1] != u'\\') {
        folder[n] = u'\\';
        folder[n + 1] = 0;
    }
    return folder;
}

NQ_API nq_wchar *nq_Fname_fullPath(const nq_wchar *name) {
    g_fullPath[0] = 0;
    if (!name) return g_fullPath;
    std::u16string cwd;
    std::u16string full;
    if (name[0] != 0 && nqplat::current_folder(cwd)) full = absolute_name(name, cwd);
    if (full.empty() || full.size() >= kNameBufferSize) {
        // Failure: a plain copy of the name, cut to the buffer.
        return put_static(g_fullPath, name, kNameBufferSize - 1);
    }
    return put_static(g_fullPath, full, kNameBufferSize - 1);
}

NQ_API nq_wchar *nq_Fname_build(nq_wchar *output, const nq_wchar *drive, const nq_wchar *folder,
                                const nq_wchar *name, const nq_wchar *extension) {
    if (!output) return nullptr;
    output[0] = 0;
    if (drive && drive[0]) {
        // The colon is added whether or not the drive brings one.
        nqt::cat(output, drive);
        nqt::cat(output, u":");
    }
    if (folder && folder[0]) {
        nqt::cat(output, folder);
        if (folder[nqt::len(folder) - 1] != u'\\') nqt::cat(output, u"\\");
    }
    if (name) nqt::cat(output, name);
    if (extension && extension[0]) {
        if (extension[0] != u'.') nqt::cat(output, u".");
        nqt::cat(output, extension);
    }
    return output;
}

NQ_API nq_wchar *nq_Fname_createTemp(void) {
    // The series is seeded once per process, by the time of the first call.
    static bool seeded = false;
    static int64_t seedTime = 0;
    if (!seeded) {
        seedTime = int64_t(std::time(nullptr));
        std::srand(unsigned(seedTime));
        seeded = true;
    }
    nqt::format(g_tempName, kNameBufferSize, u"nq_%05d", std::rand() % 32767);
    return g_tempName;
}

}  // extern "C"
