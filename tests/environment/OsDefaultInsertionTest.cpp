// kx7text tests - a converter that is inserted for the character set of the environment, before the first question for
// KX7CS_OS_DEFAULT and after it. Each test is a process of its own, with LANG=zh_TW.EUC.
#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "tests/charset/ForeignConverter.h"

using kx7test::ForeignConverter;

namespace {

/** The set that the environment stands for, which has a name and no converter. */
constexpr KX7CharSet DETECTED = KX7CS_EUC_TW;

void insertConverter()
{
    static ForeignConverter converter(DETECTED);
    g_oCnvtMgr.insert(DETECTED, &converter, true);
}

/** What the default reads "a" as: "a" by UTF-8, U+0161 by the converter inserted. All operations must agree. */
void expectDefault(bool inserted)
{
    ASSERT_EQ(g_oCnvtMgr.getDefaultCharSet(), DETECTED);
    KX7CharSetConverter const* const expected = inserted ? g_oCnvtMgr.getConverter(DETECTED) : &g_oConverterUTF8;
    EXPECT_EQ(KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT), expected);
    unsigned char utf8[8];
    EXPECT_EQ(LocalPathToUTF8(utf8, "a", sizeof utf8), inserted ? 2u : 1u);
    EXPECT_EQ(LocalToUTF8(utf8, "a", sizeof utf8, KX7CS_OS_DEFAULT), inserted ? 2u : 1u);
    unsigned short units[8];
    EXPECT_EQ(LocalToUTF16(units, "a", 8, KX7CS_OS_DEFAULT), 1u);
    unsigned short const letter = inserted ? 0x161 : 'a';
    EXPECT_EQ(units[0], letter);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_OS_DEFAULT), inserted ? 5u : g_oConverterUTF8.getMaxUnitSize());
    EXPECT_EQ(KX7UString("a").at(0), letter);
    std::istringstream in("a");
    KX7UString s;
    in >> s;
    EXPECT_EQ(s.at(0), letter);
    KX7CharSetConverter const* const own = KX7CharSetConverter::getConverter(DETECTED);
    EXPECT_EQ(own, g_oCnvtMgr.getConverter(DETECTED)) << "the set itself is asked for anew each time";
}

void expectFixedBy(std::function<void()> const& question)
{
    question();
    insertConverter();
    expectDefault(false);
}

void expectNotFixedBy(std::function<void()> const& call)
{
    call();
    insertConverter();
    expectDefault(true);
}

unsigned char utf8Bytes[16];
char localBytes[16];
unsigned short units16[16];

}  // namespace

TEST(OsDefaultInsertion, BeforeTheFirstQuestionCounts)
{
    insertConverter();
    expectDefault(true);
}

TEST(OsDefaultInsertion, AfterTheConverterWasAskedForComesTooLate)
{
    expectFixedBy([] { KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT); });
}

TEST(OsDefaultInsertion, AfterAConversionComesTooLate)
{
    expectFixedBy([] { LocalToUTF8(utf8Bytes, "a", sizeof utf8Bytes, KX7CS_OS_DEFAULT); });
}

TEST(OsDefaultInsertion, AfterThePathOfAFileComesTooLate)
{
    expectFixedBy([] { LocalPathToUTF8(utf8Bytes, "a", sizeof utf8Bytes); });
}

TEST(OsDefaultInsertion, AfterAnEmptyPathInUTF8ComesTooLate)
{
    expectFixedBy([] { UTF8ToLocalPath(localBytes, reinterpret_cast<unsigned char const*>(""), sizeof localBytes); });
}

TEST(OsDefaultInsertion, AfterASizeWasAskedForComesTooLate)
{
    expectFixedBy([] { GetNullCharSize(KX7CS_OS_DEFAULT); });
}

TEST(OsDefaultInsertion, AfterANullSourceOfUTF16ComesTooLate)
{
    expectFixedBy([] { UTF16ToLocal(localBytes, nullptr, sizeof localBytes, KX7CS_OS_DEFAULT); });
}

TEST(OsDefaultInsertion, AfterAStringOfBytesComesTooLate)
{
    expectFixedBy([] { KX7UString("a"); });
}

TEST(OsDefaultInsertion, AfterAStringWasWrittenComesTooLate)
{
    expectFixedBy([] { std::ostringstream() << KX7UString(static_cast<unsigned short>('a')); });
}

TEST(OsDefaultInsertion, AfterQuestionsForTheSetItselfCounts)
{
    expectNotFixedBy([] {
        LocalToUTF8(utf8Bytes, "a", sizeof utf8Bytes, DETECTED);
        KX7CharSetConverter::getConverter(DETECTED);
    });
}

TEST(OsDefaultInsertion, AfterAQuestionToTheRegistryCounts)
{
    expectNotFixedBy([] { g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT); });
}

TEST(OsDefaultInsertion, AfterTextsOfNothingCounts)
{
    expectNotFixedBy([] {
        LocalToUTF8(utf8Bytes, "", sizeof utf8Bytes, KX7CS_OS_DEFAULT);
        LocalToUTF8(utf8Bytes, nullptr, sizeof utf8Bytes, KX7CS_OS_DEFAULT);
        LocalToUTF8(utf8Bytes, "a", 0, KX7CS_OS_DEFAULT);
        LocalPathToUTF8(utf8Bytes, "", sizeof utf8Bytes);
        UTF8ToLocal(localBytes, nullptr, sizeof localBytes, KX7CS_OS_DEFAULT);
        LocalToUTF16(units16, "a", 0, KX7CS_OS_DEFAULT);
        KX7UString s(static_cast<char const*>(nullptr));
        s = static_cast<char const*>(nullptr);
        s = '\0';
        s = static_cast<KX7PascalString const*>(nullptr);
        KX7PascalString const empty = {0, {}};
        s = &empty;
        s + '\0';
        s.c_str();
        s.length(KX7CS_OS_DEFAULT);
        s.copy(localBytes, sizeof localBytes);
        std::ostringstream() << s;
        std::istringstream in("");
        in >> s;
    });
}

TEST(OsDefaultInsertion, OfNullIsNone)
{
    g_oCnvtMgr.insert(DETECTED, nullptr, true);
    expectDefault(false);
    insertConverter();
    expectDefault(false);
}
