// The profile reader and the registry file that stands in for the Windows registry.
#include <gtest/gtest.h>

#include <string>

#include "plat_profile.h"
#include "plat_registry.h"
#include "scoped_env.h"
#include "test_support.h"

namespace {

using nqplat::get_profile_string;
using nqplat::registry_open;

std::u16string u(const std::string &s) { return std::u16string(s.begin(), s.end()); }

}  // namespace

TEST(Profile, ParseSplitsGroupsAndTrimsKeysAndValues) {
    const auto sections = nqplat::parse_profile(
        "\xEF\xBB\xBFtop=ignored\r\n[ One ]\r\n  key = value  \r\n;c=comment\r\nnoequals\r\n"
        "[Two\n a=b=c\n");
    ASSERT_EQ(sections.size(), 2u);
    EXPECT_EQ(sections[0].name, u"One");
    ASSERT_EQ(sections[0].entries.size(), 1u);
    EXPECT_EQ(sections[0].entries[0].key, u"key");
    EXPECT_EQ(sections[0].entries[0].value, u"value");
    EXPECT_EQ(sections[1].name, u"Two");  // an unclosed bracket runs to the end of the line
    ASSERT_EQ(sections[1].entries.size(), 1u);
    EXPECT_EQ(sections[1].entries[0].value, u"b=c");
}

TEST(Profile, LineIsSeenUpToItsFirstNulAndInvalidUtf8KeepsByteValues) {
    const std::string text = std::string("[G]\nk=ab") + '\0' + "cd\nl=\xE9t\xE9\n";
    const auto sections = nqplat::parse_profile(text);
    ASSERT_EQ(sections.size(), 1u);
    ASSERT_EQ(sections[0].entries.size(), 2u);
    EXPECT_EQ(sections[0].entries[0].value, u"ab");
    EXPECT_EQ(sections[0].entries[1].value, u"\u00E9t\u00E9");
}

TEST(Profile, GetProfileStringReadsFirstGroupFirstKeyIgnoringCase) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("w.ini"),
                       "[sec]\nKey = first\nkey=second\n[SEC]\nother=x\nq=\"  quoted  \"\n");
    const std::u16string file = u(dir.file("w.ini"));
    char16_t out[256];
    EXPECT_EQ(get_profile_string(u"SEC", u"KEY", u"", out, 256, file.c_str()), 5u);
    EXPECT_EQ(std::u16string(out), u"first");
    // Only the first group of a name is searched.
    EXPECT_EQ(get_profile_string(u"sec", u"other", u"dflt", out, 256, file.c_str()), 4u);
    EXPECT_EQ(std::u16string(out), u"dflt");
}

TEST(Profile, GetProfileStringStripsOnePairOfQuotes) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("w.ini"), "[s]\nq=\"  quoted  \"\nr='x'\nt=\"x'\n");
    const std::u16string file = u(dir.file("w.ini"));
    char16_t out[256];
    get_profile_string(u"s", u"q", u"", out, 256, file.c_str());
    EXPECT_EQ(std::u16string(out), u"  quoted  ");
    get_profile_string(u"s", u"r", u"", out, 256, file.c_str());
    EXPECT_EQ(std::u16string(out), u"x");
    get_profile_string(u"s", u"t", u"", out, 256, file.c_str());
    EXPECT_EQ(std::u16string(out), u"\"x'");
}

TEST(Profile, GetProfileStringCutsAtSizeAndGivesDefaultForMissingFile) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("w.ini"), "[s]\nk=" + std::string(600, 'v') + "\n");
    const std::u16string file = u(dir.file("w.ini"));
    char16_t out[256];
    EXPECT_EQ(get_profile_string(u"s", u"k", u"", out, 256, file.c_str()), 255u);
    EXPECT_EQ(std::u16string(out), std::u16string(255, u'v'));
    char16_t small[4] = {u'x', u'x', u'x', u'x'};
    EXPECT_EQ(get_profile_string(u"s", u"k", u"", small, 0, file.c_str()), 0u);
    EXPECT_EQ(small[0], u'x');

    const std::u16string missing = u(dir.file("none.ini"));
    EXPECT_EQ(get_profile_string(u"s", u"k", u"  d  ", out, 256, missing.c_str()), 1u);
    EXPECT_EQ(std::u16string(out), u"d");
    // A folder where the file should be is no file.
    const std::u16string folder = u(dir.path());
    EXPECT_EQ(get_profile_string(u"s", u"k", u"", out, 256, folder.c_str()), 0u);
    EXPECT_EQ(get_profile_string(nullptr, u"k", u"z", out, 256, file.c_str()), 1u);
}

TEST(Registry, NoFileMeansNoKeyOpens) {
    {
        nqtest::ScopedEnv env("NQ_REGISTRY", nullptr);
        EXPECT_FALSE(registry_open(u"HKEY_LOCAL_MACHINE\\SOFTWARE").is_open());
    }
    {
        nqtest::ScopedEnv env("NQ_REGISTRY", "");
        EXPECT_FALSE(registry_open(u"HKEY_LOCAL_MACHINE\\SOFTWARE").is_open());
    }
    nqtest::TempDir dir;
    nqtest::ScopedEnv env("NQ_REGISTRY", dir.file("missing.reg"));
    EXPECT_FALSE(registry_open(u"HKEY_LOCAL_MACHINE\\SOFTWARE").is_open());
    nqtest::ScopedEnv env2("NQ_REGISTRY", dir.path());  // a folder
    EXPECT_FALSE(registry_open(u"HKEY_LOCAL_MACHINE\\SOFTWARE").is_open());
}

TEST(Registry, KeysOpenByFullPathWithRootAbbreviatedAndCaseIgnored) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("r.reg"),
                       "[HKLM\\Software\\Zelmar\\Tools]\nPath = C:\\zelmar\\\n"
                       "[HKEY_CURRENT_USER\\Software\\X]\nv=1\n");
    nqtest::ScopedEnv env("NQ_REGISTRY", dir.file("r.reg"));

    auto key = registry_open(u"hkey_local_machine\\SOFTWARE\\zelmar\\tools\\");
    ASSERT_TRUE(key.is_open());
    EXPECT_EQ(key.path(), u"HKEY_LOCAL_MACHINE\\SOFTWARE\\zelmar\\tools");
    std::u16string value;
    EXPECT_TRUE(key.query(u"PATH", value));
    EXPECT_EQ(value, u"C:\\zelmar\\");
    EXPECT_FALSE(key.query(u"Other", value));

    // A key with only keys below it exists, and has no values.
    auto parent = registry_open(u"HKLM\\\\Software\\Zelmar");
    ASSERT_TRUE(parent.is_open());
    EXPECT_FALSE(parent.query(u"Path", value));
    EXPECT_FALSE(registry_open(u"HKLM\\Software\\Zel").is_open());
    EXPECT_FALSE(registry_open(u"").is_open());
    EXPECT_TRUE(registry_open(u"HKCU\\Software\\X").is_open());
}

TEST(Registry, SubkeysAreListedOnceInRegistryOrder) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("r.reg"),
                       "[HKLM\\U\\zeta]\na=1\n[HKLM\\U\\Alpha\\deeper]\nb=2\n[HKLM\\U\\alpha]\n"
                       "[HKLM\\U\\beta]\n[HKLM\\Unrelated]\n");
    nqtest::ScopedEnv env("NQ_REGISTRY", dir.file("r.reg"));
    auto key = registry_open(u"HKEY_LOCAL_MACHINE\\U");
    ASSERT_TRUE(key.is_open());
    const auto names = key.subkeys();
    ASSERT_EQ(names.size(), 3u);
    EXPECT_EQ(names[0], u"Alpha");
    EXPECT_EQ(names[1], u"beta");
    EXPECT_EQ(names[2], u"zeta");
    auto zeta = key.open(u"ZETA");
    ASSERT_TRUE(zeta.is_open());
    std::u16string value;
    EXPECT_TRUE(zeta.query(u"a", value));
    EXPECT_EQ(value, u"1");
    EXPECT_FALSE(key.open(u"gamma").is_open());
    EXPECT_FALSE(key.open(u"").is_open());
    EXPECT_TRUE(zeta.subkeys().empty());
}

TEST(Registry, FileIsReadAgainAtEachOpen) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("r.reg"), "[HKLM\\A]\nv=1\n");
    nqtest::ScopedEnv env("NQ_REGISTRY", dir.file("r.reg"));
    std::u16string value;
    EXPECT_TRUE(registry_open(u"HKLM\\A").query(u"v", value));
    EXPECT_EQ(value, u"1");
    nqtest::write_file(dir.file("r.reg"), "[HKLM\\A]\nv=2\n");
    EXPECT_TRUE(registry_open(u"HKLM\\A").query(u"v", value));
    EXPECT_EQ(value, u"2");
}

TEST(Registry, CanonicalFormSpellsOutRootsAndDropsSpareBackslashes) {
    EXPECT_EQ(nqplat::registry_canonical(u"\\hklm\\\\a\\b\\"), u"HKEY_LOCAL_MACHINE\\a\\b");
    EXPECT_EQ(nqplat::registry_canonical(u"HKCR"), u"HKEY_CLASSES_ROOT");
    EXPECT_EQ(nqplat::registry_canonical(u"HKU\\x"), u"HKEY_USERS\\x");
    EXPECT_EQ(nqplat::registry_canonical(u"a\\HKLM"), u"a\\HKLM");
    EXPECT_EQ(nqplat::registry_canonical(u""), u"");
}
