// The File family: reading text files line by line.
#include <cstdio>
#include <string>
#include <vector>

#include "file_internal.h"
#include "nq_file.h"
#include "nq_strlist.h"
#include "plat_fs.h"
#include "text/nq_text.h"

namespace nq::file {

namespace {

// Units decoded ahead of the caller: the low half of a surrogate pair, or the bytes of a
// broken sequence after its first. Streams only hold some for the length of a character.
struct Ahead {
    std::FILE *stream;
    std::u16string units;
};
std::vector<Ahead> g_ahead;

Ahead *ahead_of(std::FILE *stream) {
    for (Ahead &a : g_ahead) {
        if (a.stream == stream) return &a;
    }
    return nullptr;
}

void keep_ahead(std::FILE *stream, const std::u16string &units) {
    if (units.empty()) return;
    if (Ahead *a = ahead_of(stream)) a->units += units;
    else g_ahead.push_back({stream, units});
}

// Expected continuation bytes for a lead byte, 0 for one that leads nothing.
int continuation_count(int lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return 1;
    if (lead >= 0xE0 && lead <= 0xEF) return 2;
    if (lead >= 0xF0 && lead <= 0xF4) return 3;
    return 0;
}

int decode(std::FILE *stream) {
    const int lead = std::fgetc(stream);
    if (lead == EOF) return -1;
    if (lead == '\r') {
        const int next = std::fgetc(stream);
        if (next == '\n') return '\n';
        if (next != EOF) std::ungetc(next, stream);
        return '\r';
    }
    const int more = continuation_count(lead);
    if (more == 0) return lead;
    std::u16string read;  // continuation bytes taken so far, as units of their own value
    char32_t cp = char32_t(lead & (0x3F >> more));
    for (int k = 0; k < more; ++k) {
        const int b = std::fgetc(stream);
        if (b == EOF || (b & 0xC0) != 0x80) {
            if (b != EOF) std::ungetc(b, stream);
            keep_ahead(stream, read);
            return lead;
        }
        read.push_back(char16_t(b));
        cp = (cp << 6) | char32_t(b & 0x3F);
    }
    const bool overlong = (more == 2 && cp < 0x800) || (more == 3 && cp < 0x10000);
    if (overlong || cp > 0x10FFFF) {
        keep_ahead(stream, read);
        return lead;
    }
    if (cp >= 0x10000) {
        cp -= 0x10000;
        keep_ahead(stream, std::u16string(1, char16_t(0xDC00 + (cp & 0x3FF))));
        return int(0xD800 + (cp >> 10));
    }
    return int(cp);
}

}  // namespace

int read_unit(std::FILE *stream) {
    if (Ahead *a = ahead_of(stream)) {
        const int unit = a->units.front();
        a->units.erase(0, 1);
        if (a->units.empty()) forget_ahead(stream);
        return unit;
    }
    return decode(stream);
}

void forget_ahead(std::FILE *stream) {
    for (std::size_t i = 0; i < g_ahead.size(); ++i) {
        if (g_ahead[i].stream == stream) {
            g_ahead.erase(g_ahead.begin() + long(i));
            return;
        }
    }
}

bool at_end(std::FILE *stream) { return std::feof(stream) && !ahead_of(stream); }

bool read_piece(std::FILE *stream, std::u16string &piece, std::size_t capacity) {
    piece.clear();
    while (piece.size() + 1 < capacity) {
        const int unit = read_unit(stream);
        if (unit < 0 || unit == 0xFFFF) break;  // 0xFFFF ends a wide read as the end does
        piece.push_back(char16_t(unit));
        if (unit == '\n') break;
    }
    return !piece.empty();
}

std::u16string lower(const nq_wchar *name) {
    std::u16string s = name ? name : u"";
    for (char16_t &c : s) c = nqt::tolower(c);
    return s;
}

}  // namespace nq::file

namespace {

// Lines are read in pieces of this many units, terminator included.
constexpr std::size_t kPieceSize = 512;

StrList *read_lines(const nq_wchar *name, bool exactly) {
    std::FILE *stream = nqplat::fopen(name, "r");
    if (!stream) return nullptr;
    StrList *list = nullptr;
    std::u16string piece;
    while (nq::file::read_piece(stream, piece, kPieceSize)) {
        // A last line without a line feed ends at the end of the file and is not taken.
        if (nq::file::at_end(stream)) break;
        if (!exactly) {
            if (!piece.empty() && piece.back() == u'\n') piece.pop_back();
            if (piece.empty()) continue;  // tabs and the rest stay as they are
        }
        if (!list) list = nq_StrList_create(piece.c_str(), nullptr);
        else nq_StrList_insEnd(list, piece.c_str());
    }
    nq::file::forget_ahead(stream);
    std::fclose(stream);
    return list;
}

}  // namespace

extern "C" {

NQ_API int nq_File_readLine(FILE *stream, nq_wchar *buffer, int limit) {
    if (!stream || !buffer) return 0;
    if (nq::file::at_end(stream)) return 0;
    if (limit < 0) limit = 0;
    int n = 0;
    while (n < limit) {
        const int unit = nq::file::read_unit(stream);
        if (unit < 0 || unit == 0xFFFF || unit == '\n') break;
        buffer[n++] = nq_wchar(unit);
    }
    buffer[n] = 0;
    if (n == limit) {
        // The rest of the line is dropped, byte by byte.
        nq::file::forget_ahead(stream);
        for (int c = std::fgetc(stream); c != EOF && c != '\n'; c = std::fgetc(stream)) {
        }
    }
    return (!nq::file::at_end(stream) || n > 0) ? 1 : 0;
}

NQ_API StrList *nq_File_readFile(const nq_wchar *name) { return read_lines(name, false); }

NQ_API StrList *nq_File_readFileExactly(const nq_wchar *name) { return read_lines(name, true); }

}  // extern "C"
