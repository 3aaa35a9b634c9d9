// Version notes in ELF files, versioned names, loaded modules and the system's version.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "plat_version.h"
#include "scoped_env.h"
#include "test_support.h"

namespace {

std::u16string u(const std::string &s) { return std::u16string(s.begin(), s.end()); }

class Bytes {
public:
    explicit Bytes(bool big_endian) : be_(big_endian) {}
    void put(std::size_t at, uint64_t value, int size) {
        if (data_.size() < at + size) data_.resize(at + size, '\0');
        for (int i = 0; i < size; ++i) {
            const int shift = be_ ? 8 * (size - 1 - i) : 8 * i;
            data_[at + i] = static_cast<char>((value >> shift) & 0xFF);
        }
    }
    void put_text(std::size_t at, const std::string &text) {
        if (data_.size() < at + text.size()) data_.resize(at + text.size(), '\0');
        data_.replace(at, text.size(), text);
    }
    std::size_t size() const { return data_.size(); }
    const std::string &str() const { return data_; }

private:
    bool be_;
    std::string data_;
};

struct Note {
    std::string name;  // without its terminator
    uint32_t type;
    std::vector<uint16_t> words;
};

// Writes notes at a position, 4-byte aligned; yields the end.
std::size_t put_notes(Bytes &b, std::size_t at, const std::vector<Note> &notes) {
    for (const Note &n : notes) {
        const std::size_t namesz = n.name.size() + 1, descsz = n.words.size() * 2;
        b.put(at, namesz, 4);
        b.put(at + 4, descsz, 4);
        b.put(at + 8, n.type, 4);
        b.put_text(at + 12, n.name + std::string(1, '\0'));
        at += 12 + (namesz + 3) / 4 * 4;
        for (std::size_t i = 0; i < n.words.size(); ++i) b.put(at + 2 * i, n.words[i], 2);
        at += (descsz + 3) / 4 * 4;
        b.put(at, 0, 0);
    }
    if (b.size() < at) b.put(at, 0, 0);
    return at;
}

// A small ELF file with the notes in one note section, or (sections false) only in a note
// segment.
std::string make_elf(bool is64, bool be, bool sections, const std::vector<Note> &notes) {
    Bytes b(be);
    b.put_text(0, std::string("\x7F" "ELF", 4));
    b.put(4, is64 ? 2 : 1, 1);
    b.put(5, be ? 2 : 1, 1);
    b.put(6, 1, 1);
    b.put(0x10, 3, 2);  // a shared object
    const std::size_t header = is64 ? 64 : 52;
    const std::size_t notes_at = header;
    const std::size_t notes_end = put_notes(b, notes_at, notes);
    const std::size_t table = (notes_end + 7) / 8 * 8;
    if (sections) {
        const std::size_t entry = is64 ? 64 : 40;
        b.put(is64 ? 0x28 : 0x20, table, is64 ? 8 : 4);  // e_shoff
        b.put(is64 ? 0x3A : 0x2E, entry, 2);              // e_shentsize
        b.put(is64 ? 0x3C : 0x30, 2, 2);                  // e_shnum
        const std::size_t s = table + entry;  // entry 0 stays empty
        b.put(s + 4, 7, 4);                   // SHT_NOTE
        if (is64) {
            b.put(s + 0x18, notes_at, 8);
            b.put(s + 0x20, notes_end - notes_at, 8);
            b.put(s + 0x30, 4, 8);
        } else {
            b.put(s + 0x10, notes_at, 4);
            b.put(s + 0x14, notes_end - notes_at, 4);
            b.put(s + 0x20, 4, 4);
        }
        b.put(s + entry - 1, 0, 1);
    } else {
        const std::size_t entry = is64 ? 56 : 32;
        b.put(is64 ? 0x20 : 0x1C, table, is64 ? 8 : 4);  // e_phoff
        b.put(is64 ? 0x36 : 0x2A, entry, 2);
        b.put(is64 ? 0x38 : 0x2C, 1, 2);
        b.put(table, 4, 4);  // PT_NOTE
        if (is64) {
            b.put(table + 8, notes_at, 8);
            b.put(table + 0x20, notes_end - notes_at, 8);
            b.put(table + 0x30, 4, 8);
        } else {
            b.put(table + 4, notes_at, 4);
            b.put(table + 0x10, notes_end - notes_at, 4);
            b.put(table + 0x1C, 4, 4);
        }
    }
    return b.str();
}

const Note kOther{"GNU", 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
const Note kOurs{"NQ", 1, {4, 3, 2, 1, 9, 8, 7, 6}};

}  // namespace

TEST(VersionNote, FoundInEverySectionLayout) {
    nqtest::TempDir dir;
    for (bool is64 : {true, false}) {
        for (bool be : {false, true}) {
            for (bool sections : {true, false}) {
                const std::string path = dir.file("lib.so");
                nqtest::write_file(path, make_elf(is64, be, sections, {kOther, kOurs}));
                nqplat::VersionInfo info;
                ASSERT_TRUE(nqplat::read_version_note(path, info)) << is64 << be << sections;
                EXPECT_EQ(info.file[0], 4);
                EXPECT_EQ(info.file[3], 1);
                EXPECT_EQ(info.product[0], 9);
                EXPECT_EQ(info.product[3], 6);
            }
        }
    }
}

TEST(VersionNote, OtherNotesAndOtherFilesGiveNone) {
    nqtest::TempDir dir;
    nqplat::VersionInfo info;
    nqtest::write_file(dir.file("a"), make_elf(true, false, true, {kOther}));
    EXPECT_FALSE(nqplat::read_version_note(dir.file("a"), info));
    nqtest::write_file(dir.file("b"), make_elf(true, false, true, {Note{"NQ", 2, {1, 2, 3, 4, 5, 6, 7, 8}}}));
    EXPECT_FALSE(nqplat::read_version_note(dir.file("b"), info));
    nqtest::write_file(dir.file("c"), make_elf(true, false, true, {Note{"NQ", 1, {1, 2}}}));
    EXPECT_FALSE(nqplat::read_version_note(dir.file("c"), info));
    nqtest::write_file(dir.file("d"), "not an elf file at all, just some text of more than 64 bytes ........");
    EXPECT_FALSE(nqplat::read_version_note(dir.file("d"), info));
    nqtest::write_file(dir.file("e"), "\x7F" "ELF");
    EXPECT_FALSE(nqplat::read_version_note(dir.file("e"), info));
    EXPECT_FALSE(nqplat::read_version_note(dir.file("missing"), info));
    EXPECT_FALSE(nqplat::read_version_note(dir.path(), info));
}

TEST(VersionNote, DamagedTablesAreNotReadPastTheFile) {
    nqtest::TempDir dir;
    std::string elf = make_elf(true, false, true, {kOurs});
    // A note that claims to be longer than its section.
    std::string bad = elf;
    bad[64 + 4] = '\x7F';
    nqtest::write_file(dir.file("bad"), bad);
    nqplat::VersionInfo info;
    EXPECT_FALSE(nqplat::read_version_note(dir.file("bad"), info));
    // A section table far beyond the end of the file.
    std::string far = elf;
    far[0x2F] = '\x40';
    nqtest::write_file(dir.file("far"), far);
    EXPECT_FALSE(nqplat::read_version_note(dir.file("far"), info));
    // Cut in the middle of the note.
    nqtest::write_file(dir.file("cut"), elf.substr(0, 80));
    EXPECT_FALSE(nqplat::read_version_note(dir.file("cut"), info));
}

TEST(VersionName, NumbersAfterSoAreTheVersion) {
    nqplat::VersionInfo info;
    ASSERT_TRUE(nqplat::version_from_name("/usr/lib/libx.so.1.2.3", info));
    EXPECT_EQ(info.file[0], 1);
    EXPECT_EQ(info.file[1], 2);
    EXPECT_EQ(info.file[2], 3);
    EXPECT_EQ(info.file[3], 0);
    EXPECT_EQ(info.product[2], 3);
    ASSERT_TRUE(nqplat::version_from_name("libc.so.6", info));
    EXPECT_EQ(info.file[0], 6);
    EXPECT_TRUE(nqplat::version_from_name("a.so.1.2.3.4", info));
    EXPECT_FALSE(nqplat::version_from_name("a.so.1.2.3.4.5", info));
    EXPECT_FALSE(nqplat::version_from_name("libx.so", info));
    EXPECT_FALSE(nqplat::version_from_name("libx.so.", info));
    EXPECT_FALSE(nqplat::version_from_name("libx.so.1.", info));
    EXPECT_FALSE(nqplat::version_from_name("libx.so.1a", info));
    EXPECT_FALSE(nqplat::version_from_name("libx.so.70000", info));
    EXPECT_FALSE(nqplat::version_from_name("/a.so.1/libx", info));
}

TEST(FileVersion, NoteFirstThenNameThenTheLinkedName) {
    nqtest::TempDir dir;
    nqplat::VersionInfo info;
    nqtest::write_file(dir.file("libn.so.5.5"), make_elf(true, false, true, {kOurs}));
    ASSERT_TRUE(nqplat::file_version(u(dir.file("libn.so.5.5")).c_str(), info));
    EXPECT_EQ(info.file[0], 4);  // the note wins over the name

    nqtest::write_file(dir.file("libv.so.2.1"), "plain");
    ASSERT_EQ(::symlink("libv.so.2.1", dir.file("libv.so").c_str()), 0);
    ASSERT_TRUE(nqplat::file_version(u(dir.file("libv.so")).c_str(), info));
    EXPECT_EQ(info.file[0], 2);
    EXPECT_EQ(info.file[1], 1);

    nqtest::write_file(dir.file("plain.txt"), "plain");
    EXPECT_FALSE(nqplat::file_version(u(dir.file("plain.txt")).c_str(), info));
    EXPECT_FALSE(nqplat::file_version(u(dir.file("missing.so.1")).c_str(), info));
    EXPECT_FALSE(nqplat::file_version(u(dir.path()).c_str(), info));
    EXPECT_FALSE(nqplat::file_version(u"", info));
    EXPECT_FALSE(nqplat::file_version(nullptr, info));
}

TEST(ModulePath, LoadedModulesAreFoundByWindowsOrLinuxNames) {
    std::string path;
    ASSERT_TRUE(nqplat::module_path(nullptr, path));
    char exe[4096];
    const ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
    ASSERT_GT(n, 0);
    EXPECT_EQ(path, std::string(exe, n));

    for (const char16_t *name : {u"libc.so.6", u"LIBC.SO.6", u"c", u"c.dll", u"C:\\windows\\libc.so"}) {
        path.clear();
        EXPECT_TRUE(nqplat::module_path(name, path)) << std::string(name, name + 3);
        EXPECT_NE(path.find("libc.so"), std::string::npos);
    }
    EXPECT_FALSE(nqplat::module_path(u"nq-no-such-module", path));
    EXPECT_FALSE(nqplat::module_path(u"", path));
    EXPECT_FALSE(nqplat::module_path(u"C:\\dir\\", path));
}

TEST(OsVersion, WithoutRegistryNeitherVistaNorUac) {
    nqtest::ScopedEnv env("NQ_REGISTRY", nullptr);
    const nqplat::OsVersion v = nqplat::os_version();
    EXPECT_EQ(v.platform, 2u);
    EXPECT_EQ(v.major, 0u);
    EXPECT_EQ(v.minor, 0u);
    EXPECT_EQ(v.product_type, 1u);
}

TEST(OsVersion, RegistryFileSetsTheNumbers) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("r.reg"),
                       "[HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion]\n"
                       "CurrentMajorVersionNumber=6\nCurrentMinorVersionNumber=0\n"
                       "CurrentBuildNumber=6002\nProductType=3\nPlatformId=junk\n");
    nqtest::ScopedEnv env("NQ_REGISTRY", dir.file("r.reg"));
    const nqplat::OsVersion v = nqplat::os_version();
    EXPECT_EQ(v.platform, 2u);  // not a number: the default stays
    EXPECT_EQ(v.major, 6u);
    EXPECT_EQ(v.minor, 0u);
    EXPECT_EQ(v.build, 6002u);
    EXPECT_EQ(v.product_type, 3u);
}
