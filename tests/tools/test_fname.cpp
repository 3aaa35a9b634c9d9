// The Fname family: extensions, folder parts, building, full paths, temporary names and the
// abbreviation of long names.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <set>
#include <string>
#include <vector>

#include "nq_tls20an.h"
#include "text_test_util.h"

using nqtt::B;
using nqtt::L;
using nqtt::S;

namespace {

std::u16string cwd_name() {
    char buffer[PATH_MAX];
    EXPECT_NE(::getcwd(buffer, sizeof buffer), nullptr);
    return L(buffer);
}

std::u16string abbreviated(const std::u16string &name, int maximum) {
    return S(nq_Fname_abbreviate(name.c_str(), maximum));
}

}  // namespace

// ---- Extensions ----

TEST(FnameExt, ModExtKeepsAnExtensionUnlessToldToReplace) {
    std::vector<nq_wchar> name = B(u"a.txt");
    EXPECT_EQ(nq_Fname_modExt(name.data(), u"dat", 0), 1);
    EXPECT_EQ(S(name.data()), u"a.txt");
    EXPECT_EQ(nq_Fname_modExt(name.data(), u"dat", 1), 1);
    EXPECT_EQ(S(name.data()), u"a.dat");
}

TEST(FnameExt, ModExtWithAnEmptyExtensionRemovesIt) {
    std::vector<nq_wchar> name = B(u"a.txt");
    EXPECT_EQ(nq_Fname_modExt(name.data(), u"", 1), 1);
    EXPECT_EQ(S(name.data()), u"a");
    std::vector<nq_wchar> other = B(u"b.txt");
    EXPECT_EQ(nq_Fname_modExt(other.data(), nullptr, 1), 1);
    EXPECT_EQ(S(other.data()), u"b");
    std::vector<nq_wchar> bare = B(u"c");
    EXPECT_EQ(nq_Fname_modExt(bare.data(), u"", 0), 1);
    EXPECT_EQ(S(bare.data()), u"c");
}

TEST(FnameExt, ModExtAddsAMissingExtensionEvenWithoutReplace) {
    std::vector<nq_wchar> name = B(u"dir.d\\a");
    EXPECT_EQ(nq_Fname_modExt(name.data(), u"log", 0), 1);
    EXPECT_EQ(S(name.data()), u"dir.d\\a.log");
    EXPECT_EQ(nq_Fname_modExt(nullptr, u"log", 1), 0);
}

TEST(FnameExt, AddExtReplacesOrAdds) {
    std::vector<nq_wchar> name = B(u"dir.x\\file");
    EXPECT_EQ(nq_Fname_addExt(name.data(), u"txt"), 0);
    EXPECT_EQ(S(name.data()), u"dir.x\\file.txt");
    EXPECT_EQ(nq_Fname_addExt(name.data(), u"dat"), 0);
    EXPECT_EQ(S(name.data()), u"dir.x\\file.dat");
    std::vector<nq_wchar> two = B(u"a.b.c");
    nq_Fname_addExt(two.data(), u"d");
    EXPECT_EQ(S(two.data()), u"a.b.d");
    std::vector<nq_wchar> dotted = B(u"a.");
    nq_Fname_addExt(dotted.data(), u"e");
    EXPECT_EQ(S(dotted.data()), u"a.e");
    nq_Fname_addExt(dotted.data(), nullptr);
    EXPECT_EQ(S(dotted.data()), u"a.e");
    EXPECT_EQ(nq_Fname_addExt(nullptr, u"x"), 0);
}

TEST(FnameExt, RmvExtCutsAtTheLastDotOfTheLastComponent) {
    std::vector<nq_wchar> name = B(u"a.b.c");
    EXPECT_EQ(S(nq_Fname_rmvExt(name.data())), u"a.b");
    std::vector<nq_wchar> folder = B(u"dir.x\\file");
    EXPECT_EQ(S(nq_Fname_rmvExt(folder.data())), u"dir.x\\file");
    std::vector<nq_wchar> drive = B(u"c:file");
    EXPECT_EQ(S(nq_Fname_rmvExt(drive.data())), u"c:file");
    std::vector<nq_wchar> hidden = B(u"dir\\.x");
    EXPECT_EQ(S(nq_Fname_rmvExt(hidden.data())), u"dir\\");
    std::vector<nq_wchar> empty = B(u"");
    EXPECT_EQ(S(nq_Fname_rmvExt(empty.data())), u"");
    EXPECT_EQ(nq_Fname_rmvExt(nullptr), nullptr);
}

TEST(FnameExt, RmvExtEmptiesANameThatIsAllExtension) {
    std::vector<nq_wchar> name = B(u".profile");
    EXPECT_EQ(S(nq_Fname_rmvExt(name.data())), u"");
}

TEST(FnameExt, ExtractExtGivesTheExtensionWithoutItsDot) {
    nq_wchar out[32] = u"junk";
    EXPECT_EQ(nq_Fname_extractExt(u"C:\\a\\b.txt", out), 3);
    EXPECT_EQ(S(out), u"txt");
    EXPECT_EQ(nq_Fname_extractExt(u"dir.x\\file", out), 0);
    EXPECT_EQ(S(out), u"");
    EXPECT_EQ(nq_Fname_extractExt(u"a.", out), 0);
    EXPECT_EQ(nq_Fname_extractExt(nullptr, out), 0);
    EXPECT_EQ(S(out), u"");
    EXPECT_EQ(nq_Fname_extractExt(u"a.b", nullptr), 0);
}

// ---- Folder parts ----

TEST(FnamePath, ExtractPathOfABareNameIsEmpty) {
    nq_wchar out[32] = u"junk";
    EXPECT_EQ(nq_Fname_extractPath(u"file.txt", out), 0);
    EXPECT_EQ(S(out), u"");
}

TEST(FnamePath, ExtractPathKeepsTheLastSeparator) {
    nq_wchar out[32];
    EXPECT_EQ(nq_Fname_extractPath(u"C:\\a\\b.txt", out), 5);
    EXPECT_EQ(S(out), u"C:\\a\\");
    EXPECT_EQ(nq_Fname_extractPath(u"C:b.txt", out), 2);
    EXPECT_EQ(S(out), u"C:");
    EXPECT_EQ(nq_Fname_extractPath(u"a/b", out), 0);  // the slash is no separator
    EXPECT_EQ(nq_Fname_extractPath(nullptr, out), 0);
    EXPECT_EQ(nq_Fname_extractPath(u"a\\b", nullptr), 0);
}

TEST(FnamePath, RmvPathLeavesTheLastComponent) {
    std::vector<nq_wchar> name = B(u"C:\\a\\b.txt");
    EXPECT_EQ(S(nq_Fname_rmvPath(name.data())), u"b.txt");
    std::vector<nq_wchar> drive = B(u"C:b");
    EXPECT_EQ(S(nq_Fname_rmvPath(drive.data())), u"b");
    std::vector<nq_wchar> bare = B(u"b");
    EXPECT_EQ(S(nq_Fname_rmvPath(bare.data())), u"b");
}

TEST(FnamePath, FixDirAddsOneTrailingBackslash) {
    std::vector<nq_wchar> name = B(u"C:\\a");
    EXPECT_EQ(S(nq_Fname_fixDir(name.data())), u"C:\\a\\");
    EXPECT_EQ(S(nq_Fname_fixDir(name.data())), u"C:\\a\\");
    std::vector<nq_wchar> empty = B(u"");
    EXPECT_EQ(S(nq_Fname_fixDir(empty.data())), u"");
    EXPECT_EQ(nq_Fname_fixDir(nullptr), nullptr);
}

// ---- Building ----

TEST(FnameBuild, AssemblesDriveFolderNameAndExtension) {
    nq_wchar out[64];
    EXPECT_EQ(S(nq_Fname_build(out, u"C", u"dir", u"a", u"txt")), u"C:dir\\a.txt");
    EXPECT_EQ(S(nq_Fname_build(out, u"C", u"\\dir\\", u"a", u".txt")), u"C:\\dir\\a.txt");
    EXPECT_EQ(S(nq_Fname_build(out, nullptr, u"dir", u"*", nullptr)), u"dir\\*");
    EXPECT_EQ(S(nq_Fname_build(out, nullptr, nullptr, u"a", u"b")), u"a.b");
    EXPECT_EQ(S(nq_Fname_build(out, u"", u"", u"a", u"")), u"a");
    EXPECT_EQ(S(nq_Fname_build(out, nullptr, nullptr, nullptr, nullptr)), u"");
    EXPECT_EQ(nq_Fname_build(nullptr, u"C", u"d", u"a", u"b"), nullptr);
}

TEST(FnameBuild, ADriveWithAColonGetsASecondOne) {
    nq_wchar out[64];
    EXPECT_EQ(S(nq_Fname_build(out, u"C:", u"dir", u"a", u"txt")), u"C::dir\\a.txt");
}

// ---- Full paths ----

TEST(FnameFullPath, RelativeNamesStandInTheCurrentFolder) {
    const std::u16string cwd = cwd_name();
    EXPECT_EQ(S(nq_Fname_fullPath(u"x.txt")), cwd + u"\\x.txt");
    EXPECT_EQ(S(nq_Fname_fullPath(u".\\a\\..\\y")), cwd + u"\\y");
    EXPECT_EQ(S(nq_Fname_fullPath(u"c:z")), u"c:" + cwd.substr(2) + u"\\z");
}

TEST(FnameFullPath, AbsoluteNamesAreTidied) {
    EXPECT_EQ(S(nq_Fname_fullPath(u"C:\\a\\b\\..\\c")), u"C:\\a\\c");
    EXPECT_EQ(S(nq_Fname_fullPath(u"C:\\a\\.\\b\\")), u"C:\\a\\b\\");
    EXPECT_EQ(S(nq_Fname_fullPath(u"C:\\a\\\\b")), u"C:\\a\\b");
    EXPECT_EQ(S(nq_Fname_fullPath(u"C:\\..\\..\\x")), u"C:\\x");
    EXPECT_EQ(S(nq_Fname_fullPath(u"C:\\a\\..")), u"C:\\");
    EXPECT_EQ(S(nq_Fname_fullPath(u"\\tmp\\q")), u"C:\\tmp\\q");
    EXPECT_EQ(S(nq_Fname_fullPath(u"/tmp/q")), u"C:\\tmp\\q");
    EXPECT_EQ(S(nq_Fname_fullPath(u"D:\\x")), u"D:\\x");
    EXPECT_EQ(S(nq_Fname_fullPath(u"D:x")), u"D:\\x");
    EXPECT_EQ(S(nq_Fname_fullPath(u"\\\\server\\share\\f")), u"\\\\server\\share\\f");
}

TEST(FnameFullPath, FailureGivesAPlainCopyCutToTheBuffer) {
    EXPECT_EQ(S(nq_Fname_fullPath(u"")), u"");
    EXPECT_EQ(S(nq_Fname_fullPath(nullptr)), u"");
    const std::u16string longName = u"C:\\" + std::u16string(600, u'n');
    EXPECT_EQ(S(nq_Fname_fullPath(longName.c_str())), longName.substr(0, 511));
}

// ---- Temporary names ----

TEST(FnameTemp, NamesAreNqAndFiveDigits) {
    std::set<std::u16string> seen;
    const nq_wchar *first = nq_Fname_createTemp();
    for (int i = 0; i < 50; ++i) {
        const nq_wchar *name = nq_Fname_createTemp();
        EXPECT_EQ(name, first);  // one static buffer
        const std::u16string s = S(name);
        ASSERT_EQ(s.size(), 8u);
        EXPECT_EQ(s.substr(0, 3), u"nq_");
        for (std::size_t k = 3; k < 8; ++k) EXPECT_TRUE(s[k] >= u'0' && s[k] <= u'9');
        EXPECT_LT(std::stoi(std::string(s.begin() + 3, s.end())), 32767);
        seen.insert(s);
    }
    EXPECT_GT(seen.size(), 1u);  // a series, not one name
}

// ---- Abbreviation ----

TEST(FnameAbbreviate, NullOrAMaximumOf513YieldsEmpty) {
    EXPECT_EQ(abbreviated(u"C:\\a", 513), u"");
    EXPECT_EQ(abbreviated(u"C:\\a", 1000), u"");
    EXPECT_EQ(S(nq_Fname_abbreviate(nullptr, 10)), u"");
    EXPECT_EQ(abbreviated(u"C:\\a", 512), u"C:\\a");
}

TEST(FnameAbbreviate, ANameThatFitsIsTrimmedOnly) {
    EXPECT_EQ(abbreviated(u"  C:\\a\\b  ", 20), u"C:\\a\\b");
    EXPECT_EQ(abbreviated(u"C:\\a\\b", 6), u"C:\\a\\b");
}

TEST(FnameAbbreviate, ANameWithoutBackslashIsCut) {
    EXPECT_EQ(abbreviated(u"abcdefghij", 4), u"abcd");
    EXPECT_EQ(abbreviated(u"abc", -5), u"");
}

TEST(FnameAbbreviate, ALastComponentTooLongIsCut) {
    EXPECT_EQ(abbreviated(u"C:\\dir\\verylongfilename.txt", 10), u"verylongfi");
}

TEST(FnameAbbreviate, OneTokenIsCutOneShorter) {
    EXPECT_EQ(abbreviated(u"\\\\\\\\abc", 3), u"ab");
}

TEST(FnameAbbreviate, AWorkingFormOfExactlyTheMaximum) {
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\file.txt", 15), u"C:\\...\\file.txt");
}

TEST(FnameAbbreviate, TooLongAWorkingFormFallsBackToTheTail) {
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\file.txt", 13), u"...\\file.txt");
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\file.txt", 10), u"file.txt");
}

TEST(FnameAbbreviate, KeepsTheDriveAndAsManyComponentsAsFit) {
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\ccc\\file.txt", 20), u"C:\\...\\ccc\\file.txt");
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\ccc\\file.txt", 19), u"C:\\...\\ccc\\file.txt");
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\ccc\\file.txt", 18), u"C:\\...\\file.txt");
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\ccc\\file.txt", 22), u"C:\\...\\ccc\\file.txt");
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\ccc\\ddd\\file.txt", 23), u"C:\\aaa\\...\\ddd\\file.txt");
}

TEST(FnameAbbreviate, GrowsOnBothSidesUntilBothAreTooLong) {
    EXPECT_EQ(abbreviated(u"C:\\a\\bbbbbbbbbb\\c\\file.txt", 22), u"C:\\a\\...\\c\\file.txt");
}

TEST(FnameAbbreviate, StopsWhereTheSidesMeet) {
    // Runs of backslashes make the name longer than the joined tokens.
    EXPECT_EQ(abbreviated(u"C:\\\\\\\\\\\\\\\\a\\\\\\\\\\\\f", 12), u"C:\\...\\a\\f");
    EXPECT_EQ(abbreviated(u"C:\\\\\\\\a\\\\\\\\b\\\\\\\\f", 14), u"C:\\a\\...\\b\\f");
}

TEST(FnameAbbreviate, KeepsTheServerOfANetworkName) {
    EXPECT_EQ(abbreviated(u"\\\\server\\share\\dir\\file.txt", 21), u"\\\\server\\...\\file.txt");
    EXPECT_EQ(abbreviated(u"\\\\server\\share\\dir\\file.txt", 20), u"...\\file.txt");
}

TEST(FnameAbbreviate, KeepsTrailingBackslashesOnTheTail) {
    EXPECT_EQ(abbreviated(u"C:\\aaa\\bbb\\ccc\\", 12), u"C:\\...\\ccc\\");
}

TEST(FnameAbbreviate, ANameLongerThanTheBufferIsCutFirst) {
    std::u16string name = u"C:";
    for (int i = 0; i < 80; ++i) name += u"\\folder";
    name += u"\\end.txt";
    ASSERT_GT(name.size(), 512u);
    const std::u16string result = abbreviated(name, 40);
    EXPECT_LE(result.size(), 40u);
    EXPECT_EQ(result.substr(0, 3), u"C:\\");
    EXPECT_NE(result.find(u"\\...\\"), std::u16string::npos);
}
