// The INI line parse: name and value around the first "=", with its blanks and the "=" signs
// that may follow it.
#include <gtest/gtest.h>

#include <string>

#include "nq_tls20an.h"

namespace {

struct Parsed {
    std::u16string name, value;
};

Parsed Parse(const nq_wchar *line) {
    const std::u16string text = line ? line : u"";
    std::u16string name(text.size() + 1, u'#'), value(text.size() + 1, u'#');
    nq_Ini_parse(line, name.data(), value.data());
    return {name.c_str(), value.c_str()};
}

}  // namespace

TEST(IniParse, BlanksAndRepeatedEqualSignsAreSkipped) {
    const Parsed p = Parse(u"  name = = value");
    EXPECT_EQ(p.name, u"name");
    EXPECT_EQ(p.value, u"value");
}

TEST(IniParse, PlainPairWithoutSpaces) {
    const Parsed p = Parse(u"Key=Value");
    EXPECT_EQ(p.name, u"Key");
    EXPECT_EQ(p.value, u"Value");
}

TEST(IniParse, ALineWithoutEqualSignIsANameWithAnEmptyValue) {
    const Parsed p = Parse(u"   lonely name   ");
    EXPECT_EQ(p.name, u"lonely name");
    EXPECT_EQ(p.value, u"");
}

TEST(IniParse, TheNameEndsAtTheFirstEqualSign) {
    const Parsed p = Parse(u"a=b=c");
    EXPECT_EQ(p.name, u"a");
    EXPECT_EQ(p.value, u"b=c");
}

TEST(IniParse, AValueNeverBeginsWithAnEqualSign) {
    const Parsed p = Parse(u"x = ==  y = z  ");
    EXPECT_EQ(p.name, u"x");
    EXPECT_EQ(p.value, u"y = z");
}

TEST(IniParse, EmptyNameOrValue) {
    Parsed p = Parse(u"=value");
    EXPECT_EQ(p.name, u"");
    EXPECT_EQ(p.value, u"value");
    p = Parse(u"name =   ");
    EXPECT_EQ(p.name, u"name");
    EXPECT_EQ(p.value, u"");
    p = Parse(u"");
    EXPECT_EQ(p.name, u"");
    EXPECT_EQ(p.value, u"");
    p = Parse(u"===");
    EXPECT_EQ(p.name, u"");
    EXPECT_EQ(p.value, u"");
}

TEST(IniParse, TabsAreTrimmedFromBothParts) {
    const Parsed p = Parse(u"\tname\t=\tvalue with\ttab\t");
    EXPECT_EQ(p.name, u"name");
    EXPECT_EQ(p.value, u"value with\ttab");
}

TEST(IniParse, PathsAndSemicolonsAreKept) {
    const Parsed p = Parse(u"DATA = C:\\data\\plant ; not a comment here");
    EXPECT_EQ(p.name, u"DATA");
    EXPECT_EQ(p.value, u"C:\\data\\plant ; not a comment here");
}

TEST(IniParse, NullLineEmptiesBothAndNullBuffersAreSkipped) {
    nq_wchar name[4] = u"xx", value[4] = u"yy";
    nq_Ini_parse(nullptr, name, value);
    EXPECT_EQ(std::u16string(name), u"");
    EXPECT_EQ(std::u16string(value), u"");
    nq_wchar only[16];
    nq_Ini_parse(u"a = b", only, nullptr);
    EXPECT_EQ(std::u16string(only), u"a");
    nq_Ini_parse(u"a = b", nullptr, only);
    EXPECT_EQ(std::u16string(only), u"b");
    nq_Ini_parse(nullptr, nullptr, nullptr);
}

TEST(IniParse, ALongLineFitsBuffersOfItsLength) {
    const std::u16string value(5000, u'v');
    const Parsed p = Parse((u"k=" + value).c_str());
    EXPECT_EQ(p.name, u"k");
    EXPECT_EQ(p.value, value);
}
