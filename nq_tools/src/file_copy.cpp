// The File family: copying, appending, and cutting a file into numbered pieces and back.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "file_internal.h"
#include "nq_file.h"
#include "nq_fname.h"
#include "nq_memory.h"
#include "plat_fs.h"
#include "text/nq_text.h"

namespace {

// One copy buffer serves nq_File_copy and nq_File_copyRest. nq_File_copy moves one byte
// less than it holds at a time.
constexpr std::size_t kCopyBufferSize = 16384;
unsigned char g_copyBuffer[kCopyBufferSize];

// Pieces are read and written in blocks of at most 65535 bytes, through a larger work
// buffer of their own.
constexpr std::size_t kPieceWorkSize = 131072;
constexpr std::size_t kPieceBlock = 65535;

bool empty_name(const nq_wchar *name) { return !name || name[0] == 0; }

// The name with its extension replaced by the piece's number: data.dbf gives data.3.
std::vector<nq_wchar> piece_name(const nq_wchar *name, int number) {
    std::vector<nq_wchar> out(nqt::len(name) + 16, 0);
    nqt::copy(out.data(), name);
    nq_wchar digits[16];
    nqt::format(digits, 16, u"%d", number);
    nq_Fname_addExt(out.data(), digits);
    return out;
}

bool write_all(int fd, const unsigned char *data, std::size_t size) {
    while (size > 0) {
        const ssize_t put = ::write(fd, data, size);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        data += put;
        size -= std::size_t(put);
    }
    return true;
}

// Two open streams on one file (names that differ only in a way the name rules miss).
bool same_file(std::FILE *open, const nq_wchar *other) {
    struct stat a, b;
    const std::string path = nqplat::fs_path(other);
    return ::fstat(::fileno(open), &a) == 0 && !path.empty() && ::stat(path.c_str(), &b) == 0 &&
           a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

extern "C" {

NQ_API int nq_File_copy(const nq_wchar *source, const nq_wchar *dest) {
    if (empty_name(source) || empty_name(dest)) return 1;
    const std::u16string from = nq::file::lower(nq_Fname_fullPath(source));
    const std::u16string to = nq::file::lower(nq_Fname_fullPath(dest));
    if (from == to) return 1;  // one file: nothing to do
    std::FILE *in = nqplat::fopen(source, "rb");
    if (!in) return 1;
    int32_t time = 0;
    nq_File_getTime(source, &time);
    if (same_file(in, dest)) {
        std::fclose(in);
        return 1;
    }
    std::FILE *out = nqplat::fopen(dest, "wb");
    if (!out) {
        std::fclose(in);
        return 1;
    }
    bool written = true;
    for (;;) {
        const std::size_t got = std::fread(g_copyBuffer, 1, kCopyBufferSize - 1, in);
        if (got == 0) break;
        if (std::fwrite(g_copyBuffer, 1, got, out) != got) {
            written = false;
            break;
        }
    }
    std::fclose(in);
    if (std::fclose(out) != 0) written = false;
    nq_File_setTime(dest, time);
    nq_File_revalidate(dest);
    return written ? 0 : 1;
}

NQ_API int nq_File_copyRest(FILE *dest, FILE *source) {
    if (!dest || !source) return 0;
    std::fflush(dest);  // what the stream holds goes before what is written below it
    const int in = ::fileno(source), out = ::fileno(dest);
    // A short read shrinks every read after it.
    std::size_t want = kCopyBufferSize;
    for (;;) {
        ssize_t got = ::read(in, g_copyBuffer, want);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        if (!write_all(out, g_copyBuffer, std::size_t(got))) break;
        want = std::size_t(got);
    }
    return 0;
}

NQ_API int nq_File_append(const nq_wchar *dest, const nq_wchar *source) {
    if (empty_name(source)) return 1;
    std::FILE *in = nqplat::fopen(source, "r");
    if (!in) return 1;
    std::FILE *out = empty_name(dest) ? nullptr : nqplat::fopen(dest, "a");
    if (!out) {
        std::fclose(in);
        return 1;
    }
    nq_File_revalidate(dest);
    nq_File_copyRest(out, in);
    std::fclose(in);
    std::fclose(out);
    return 0;
}

NQ_API int nq_File_slice(const nq_wchar *name, long size) {
    if (empty_name(name) || size < 1) return 0;
    auto *work = static_cast<unsigned char *>(nq_Malloc(kPieceWorkSize));
    std::FILE *in = work ? nqplat::fopen(name, "rb") : nullptr;
    if (!in) {
        nq_Free(work);
        return 0;
    }
    // A piece is never written over the source itself (a source named like a piece).
    auto open_piece = [&](const std::vector<nq_wchar> &pieceName) -> std::FILE * {
        return same_file(in, pieceName.data()) ? nullptr : nqplat::fopen(pieceName.data(), "wb");
    };
    int number = 1;
    std::vector<nq_wchar> pieceName = piece_name(name, number);
    std::FILE *piece = open_piece(pieceName);
    long filled = 0;
    while (piece) {
        const long lacking = size - filled;
        const std::size_t want = std::size_t(lacking < long(kPieceBlock) ? lacking : long(kPieceBlock));
        const std::size_t got = std::fread(work, 1, want, in);
        if (got == 0) break;
        std::fwrite(work, 1, got, piece);
        filled += long(got);
        if (filled == size) {
            // The next piece opens at once, before the end of the source is known.
            std::fclose(piece);
            nq_File_revalidate(pieceName.data());
            ++number;
            pieceName = piece_name(name, number);
            piece = open_piece(pieceName);
            filled = 0;
        }
    }
    if (piece) {
        std::fclose(piece);
        nq_File_revalidate(pieceName.data());
    } else {
        --number;  // the piece that would not open does not count
    }
    std::fclose(in);
    nq_Free(work);
    return number;
}

NQ_API int nq_File_mend(const nq_wchar *name) {
    if (empty_name(name)) return 0;
    std::FILE *out = nqplat::fopen(name, "wb");
    auto *work = out ? static_cast<unsigned char *>(nq_Malloc(kPieceWorkSize)) : nullptr;
    if (!work) {
        if (out) std::fclose(out);
        return 0;
    }
    nq_File_revalidate(name);
    int number = 1;
    for (;; ++number) {
        const std::vector<nq_wchar> pieceName = piece_name(name, number);
        // The destination itself is no piece (a name like a piece's would find itself).
        if (same_file(out, pieceName.data())) break;
        std::FILE *piece = nqplat::fopen(pieceName.data(), "rb");
        if (!piece) break;
        for (;;) {
            const std::size_t got = std::fread(work, 1, kPieceBlock, piece);
            if (got == 0) break;
            std::fwrite(work, 1, got, out);
        }
        std::fclose(piece);
        nq_File_deleteSingle(pieceName.data());
    }
    std::fclose(out);
    nq_Free(work);
    return number;
}

}  // extern "C"
