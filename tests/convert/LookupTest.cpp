// kx7text tests - character sets by number, name and label.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <set>

#include "kx7/convert.h"
#include "tests/support/CharSets.h"

using kx7::findCharSet;
using kx7::Labels;

namespace {

std::string inOtherCase(std::string text)
{
    for (size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(i % 2 ? toupper(text[i]) : tolower(text[i]));
    return text;
}

TEST(Lookup, EverySetByNumberAndName)
{
    std::set<KX7CharSet> sets;
    for (kx7::CharSetInfo const& info : kx7::charSets()) {
        sets.insert(info.charSet);
        std::string const name = info.name;
        bool const isPublished = name.rfind("KX7CS_", 0) == 0;
        EXPECT_EQ(isPublished, std::count(std::begin(kx7::web::ALL), std::end(kx7::web::ALL), info.charSet) == 0)
            << name;
        EXPECT_STREQ(KX7CharSetToString(info.charSet), isPublished ? info.name : "KX7CS_OS_DEFAULT");
        EXPECT_EQ(findCharSet(std::to_string(info.charSet)), info.charSet);
        EXPECT_EQ(findCharSet("cp" + std::to_string(info.charSet)), info.charSet);
        EXPECT_EQ(findCharSet(name), info.charSet);
        EXPECT_EQ(findCharSet(inOtherCase(name)), info.charSet);
        EXPECT_EQ(findCharSet(" \t" + name.substr(isPublished ? 6 : 0) + "\n"), info.charSet);
        EXPECT_EQ(kx7::charSetInfo(info.charSet), &info);
        if (info.iana) {
            EXPECT_EQ(findCharSet(inOtherCase(info.iana)), info.charSet);
        }
        if (info.whatwg) {
            EXPECT_EQ(findCharSet(inOtherCase(info.whatwg), Labels::WHATWG_FIRST), info.charSet);
        }
    }
    EXPECT_EQ(sets.size(), kx7::charSets().size());
    EXPECT_EQ(sets.count(KX7CS_OS_DEFAULT), 0U);
}

TEST(Lookup, WhatIsNoName)
{
    for (char const* const text : {"", " ", "utf", "KX7CS_", "437", "12520", "999999999999", "01252", "+1252", "1252x",
                                   "cp", "utf-8\xC2\xA0", "wcp-1252", "65001.0", "\xC5\xBFhift_jis"})
        EXPECT_EQ(findCharSet(text), std::nullopt) << text;
    EXPECT_EQ(findCharSet(std::string_view("utf-8\0", 6)), std::nullopt);
    for (char const* const text : {"kx7cs_os_default", "os_default", "-2"})
        EXPECT_EQ(findCharSet(text), KX7CS_OS_DEFAULT);
}

TEST(Lookup, EveryLabel)
{
    for (kx7::CharSetLabel const& label : kx7::charSetLabels()) {
        EXPECT_EQ(inOtherCase(inOtherCase(label.label)), inOtherCase(label.label));
        bool const isNumber = strcmp(label.label, "cp1253") == 0 || strcmp(label.label, "cp1255") == 0;
        KX7CharSet const iana = isNumber                         ? *findCharSet(label.label + 2)
                                : label.iana == KX7CS_OS_DEFAULT ? label.whatwg
                                                                 : label.iana;
        KX7CharSet const whatwg = label.whatwg == KX7CS_OS_DEFAULT ? label.iana : label.whatwg;
        EXPECT_NE(iana, KX7CS_OS_DEFAULT) << label.label;
        EXPECT_EQ(findCharSet(inOtherCase(label.label)), iana);
        EXPECT_EQ(findCharSet(label.label, Labels::WHATWG_FIRST), whatwg);
    }
}

TEST(Lookup, WhereTheRegistriesDiffer)
{
    struct {
        char const* label;
        KX7CharSet iana;
        KX7CharSet whatwg;
    } const rows[] = {
        {"iso-8859-1", KX7CS_ISO_8859_1, KX7CS_WCP1252},
        {"latin1", KX7CS_ISO_8859_1, KX7CS_WCP1252},
        {"latin5", KX7CS_ISO_8859_9, KX7CS_WCP1254},
        {"Shift_JIS", kx7::web::SHIFT_JIS, kx7::web::SHIFT_JIS},
        {"x-sjis", kx7::web::SHIFT_JIS, kx7::web::SHIFT_JIS},
        {"gb2312", KX7CS_EUC_CN, KX7CS_WCP936},
        {"euc-jp", kx7::web::EUC_JP, kx7::web::EUC_JP},
        {"euc-kr", kx7::web::EUC_KR, kx7::web::EUC_KR},
        {"big5", KX7CS_BIG5, KX7CS_WCP950},
        {"tis-620", KX7CS_ISO_8859_11, kx7::web::WINDOWS_874},
        {"cp1253", KX7CS_WCP1253, kx7::web::WINDOWS_1253},
        {"windows-1253", kx7::web::WINDOWS_1253, kx7::web::WINDOWS_1253},
        {"csWindows1253", KX7CS_WCP1253, KX7CS_WCP1253},
        {"cp866", kx7::web::IBM866, kx7::web::IBM866},
        {"windows-31j", KX7CS_WCP932, kx7::web::SHIFT_JIS},
        {"UTF-8", KX7CS_UTF8, KX7CS_UTF8},
        {"utf8", KX7CS_UTF8, KX7CS_UTF8},
        {"ks_c_5601-1987", KX7CS_WCP949, kx7::web::EUC_KR},
        {"utf-16be", KX7CS_UTF16BE, KX7CS_UTF16BE},
        {"csISOLatinGreek", KX7CS_ISO_8859_7, KX7CS_ISO_8859_7},
        {"l10", KX7CS_ISO_8859_16, KX7CS_ISO_8859_16},
        {"sun_eu_greek", KX7CS_ISO_8859_7, KX7CS_ISO_8859_7},
        {"us-ascii", KX7CS_WCP1252, KX7CS_WCP1252},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(findCharSet(row.label), row.iana) << row.label;
        EXPECT_EQ(findCharSet(row.label, Labels::WHATWG_FIRST), row.whatwg) << row.label;
    }
}

TEST(Lookup, Converters)
{
    std::set<KX7CharSet> with;
    for (kx7test::CharSetRow const& row : kx7test::charSetRows())
        with.insert(row.charSet);
    with.insert(std::begin(kx7::web::ALL), std::end(kx7::web::ALL));
    for (kx7::CharSetInfo const& info : kx7::charSets())
        EXPECT_EQ(kx7::hasConverter(info.charSet), with.count(info.charSet) == 1) << info.name;
    EXPECT_TRUE(kx7::hasConverter(KX7CS_OS_DEFAULT));
    EXPECT_FALSE(kx7::hasConverter(static_cast<KX7CharSet>(437)));
    EXPECT_EQ(kx7::charSetInfo(static_cast<KX7CharSet>(437)), nullptr);
    kx7::CharSetInfo const* const ofEnvironment = kx7::charSetInfo(KX7CS_OS_DEFAULT);
    ASSERT_NE(ofEnvironment, nullptr);
    EXPECT_EQ(KX7CharSetConverter::getConverter(ofEnvironment->charSet),
              KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT));
}

}  // namespace
