// The library's own version, carried in an ELF note so that version queries of the file (and
// of the loaded module) find it. Layout in docs/platform.md; the reader is plat_version.
#include <cstdint>

#ifndef NQ_VERSION_MAJOR
#define NQ_VERSION_MAJOR 0
#endif
#ifndef NQ_VERSION_MINOR
#define NQ_VERSION_MINOR 0
#endif
#ifndef NQ_VERSION_PATCH
#define NQ_VERSION_PATCH 0
#endif

namespace {

struct VersionNote {
    uint32_t namesz;
    uint32_t descsz;
    uint32_t type;
    char name[4];           // "NQ" and its terminator, padded to four bytes
    uint16_t file[4];       // major, minor, patch, build in the machine's byte order
    uint16_t product[4];
};

// A section whose name begins with ".note" is given the note type by the assembler, and the
// linker gathers it into a note segment.
[[gnu::section(".note.nq.version"), gnu::used, gnu::aligned(4)]]
const VersionNote kVersionNote = {
    3, 16, 1, {'N', 'Q', '\0', '\0'},
    {NQ_VERSION_MAJOR, NQ_VERSION_MINOR, NQ_VERSION_PATCH, 0},
    {NQ_VERSION_MAJOR, NQ_VERSION_MINOR, NQ_VERSION_PATCH, 0},
};

}  // namespace
