// kx7text tests - how the multibyte converters come to their tables: once, from any list, and without memory.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <initializer_list>
#include <iterator>

#include "kx7/tables/ByteTypeTables.h"
#include "tests/support/Guarded.h"
#include "tests/support/Heap.h"
#include "tests/support/MultibyteSets.h"
#include "tests/support/Probe.h"

using namespace kx7test;

namespace {

using Units = std::u16string;
using Loadable = std::unique_ptr<KX7CharSetConverter>;

std::vector<unsigned short> listOf(CodePairs const& pairs)
{
    std::vector<unsigned short> list;
    for (auto const& [code, unit] : pairs) {
        list.push_back(static_cast<unsigned short>(code));
        list.push_back(static_cast<unsigned short>(unit));
    }
    list.push_back(0);
    list.push_back(0);
    return list;
}

// Small lists that have more than one page of codes and of units.
std::vector<unsigned short> const DBCS_LIST =
    listOf({{'A', 'A'}, {'?', '?'}, {0x82A0, 0x3042}, {0x82A1, 0x3142}, {0x83A0, 0x3043}});
std::vector<unsigned short> const ROW_LIST = listOf({{0x2121, 0x3042}, {0x2122, 0x3142}, {0x3021, 0x3043}});
std::vector<unsigned short> const JIS0201_LIST = listOf({{0x5C, 0xA5}, {0xB1, 0xFF71}});
std::vector<unsigned short> const JIS0212_LIST = listOf({{0x2221, 0x4E02}, {0x2322, 0x5E04}});
sMBCSExTable const EX_LIST[] = {{'A', 0, 'A'}, {0x82A0, 0, 0x3042}, {0x83A0, 0, 0x2000B}, {0, 0, 0}};

struct Maker {
    char const* name;
    std::function<Loadable()> make;
    std::function<void(KX7CharSetConverter&)> load;
    std::string bytes;  ///< a text of mapped characters alone
    Units units;
};

template <class Converter>
void load(KX7CharSetConverter& converter)
{
    static_cast<Converter&>(converter).load();
}

std::vector<Maker> const& makers()
{
    static std::vector<Maker> const all = {
        {"DBCS",
         [] { return Loadable(new KX7CharSetConverterDBCS(DBCS_LIST.data(), oCP932Type, KX7CS_WCP932)); },
         load<KX7CharSetConverterDBCS>,
         "A\x82\xA0\x82\xA1\x83\xA0",
         {u'A', 0x3042, 0x3142, 0x3043}},
        {"DBCSEx",
         [] { return Loadable(new KX7CharSetConverterDBCSEx(EX_LIST, oCP932Type, KX7CS_SJIS0213)); },
         load<KX7CharSetConverterDBCSEx>,
         "A\x82\xA0\x83\xA0",
         {u'A', 0x3042, 0xD840, 0xDC0B}},
        {"EUC-KR",
         [] { return Loadable(new KX7CharSetConverterEUC_CN_KR(ROW_LIST.data(), KX7CS_EUC_KR)); },
         load<KX7CharSetConverterEUC_CN_KR>,
         "\xA1\xA1\xA1\xA2\xB0\xA1",
         {0x3042, 0x3142, 0x3043}},
        {"EUC-JP",
         [] {
             return Loadable(new KX7CharSetConverterEUC_JP(ROW_LIST.data(), JIS0201_LIST.data(), JIS0212_LIST.data(),
                                                           KX7CS_EUC_JP));
         },
         load<KX7CharSetConverterEUC_JP>,
         "\xA1\xA1\xA1\xA2\xB0\xA1\x80\xDC\x8E\xB1\x8F\xA2\xA1\x8F\xA3\xA2",
         {0x3042, 0x3142, 0x3043, 0xA5, 0xFF71, 0x4E02, 0x5E04}},
        {"GB 18030",
         [] { return Loadable(new KX7CharSetConverterGB18030(DBCS_LIST.data(), KX7CS_GB18030)); },
         load<KX7CharSetConverterGB18030>,
         "A\x82\xA0\x81\x30\x81\x30\xA8\xBF",
         {u'A', 0x3042, 0x80, 0x01F9}},
    };
    return all;
}

Units decoded(KX7CharSetConverter& converter, std::string const& bytes)
{
    std::vector<unsigned short> units(bytes.size() + 1);
    unsigned int const length = converter.toUTF16(units.data(), bytes.c_str(), static_cast<unsigned int>(bytes.size()),
                                                  ILLCHAR_REPLACE, nullptr, -1);
    return Units(units.begin(), units.begin() + length);
}

std::string encoded(KX7CharSetConverter& converter, Units const& units)
{
    std::string bytes(6 * units.size() + 1, '\0');
    bytes.resize(converter.fromUTF16(&bytes[0], reinterpret_cast<unsigned short const*>(units.c_str()),
                                     static_cast<unsigned int>(bytes.size() - 1), ILLCHAR_REPLACE, nullptr));
    return bytes;
}

/** Each character but U+FFFD or "?" is where the whole text has one that is the same. */
template <class Text>
bool isPartOf(Text const& part, Text const& whole, typename Text::value_type substitute)
{
    size_t at = 0;
    for (auto const c : part) {
        if (c == substitute)
            continue;
        at = whole.find(c, at);
        if (at == Text::npos)
            return false;
    }
    return true;
}

void expectComplete(Maker const& maker, KX7CharSetConverter& converter)
{
    EXPECT_EQ(decoded(converter, maker.bytes), maker.units) << maker.name;
    EXPECT_EQ(encoded(converter, maker.units), maker.bytes) << maker.name;
}

}  // namespace

TEST(MultibyteLoading, HappensOnceAndIsUndone)
{
    for (Maker const& maker : makers()) {
        HeapWatch const watch(HeapWatch::NOTHROW);
        {
            Loadable const converter = maker.make();
            EXPECT_EQ(watch.made(), 0u) << maker.name << ": nothing before the first conversion";
            maker.load(*converter);
            size_t const made = watch.made();
            EXPECT_GT(made, 2u) << maker.name;
            maker.load(*converter);
            expectComplete(maker, *converter);
            EXPECT_EQ(watch.made(), made) << maker.name;
        }
        EXPECT_GT(watch.freed(), 0u) << maker.name;
    }
}

TEST(MultibyteLoading, AnyOperationThatNeedsTablesLoadsThem)
{
    for (Maker const& maker : makers()) {
        Loadable const decoding = maker.make();
        EXPECT_EQ(decoded(*decoding, maker.bytes), maker.units) << maker.name;
        Loadable const encoding = maker.make();
        EXPECT_EQ(encoded(*encoding, maker.units), maker.bytes) << maker.name;
        Loadable const counting = maker.make();
        EXPECT_EQ(counting->getNumUnits(maker.bytes.c_str(), UNTIL_TERMINATOR), maker.units.size()) << maker.name;
        Loadable const countingBytes = maker.make();
        EXPECT_EQ(
            countingBytes->getNumBytes(reinterpret_cast<unsigned short const*>(maker.units.c_str()), UNTIL_TERMINATOR),
            maker.bytes.size())
            << maker.name;
    }
}

TEST(MultibyteLoading, EachFailingAllocationLeavesCodesUnmappedAndNoLockHeld)
{
    for (Maker const& maker : makers()) {
        size_t all = 0;
        {
            HeapWatch const watch(HeapWatch::NOTHROW);
            Loadable const converter = maker.make();
            maker.load(*converter);
            all = watch.made();
        }
        for (size_t k = 1; k <= all; ++k) {
            SCOPED_TRACE(std::string(maker.name) + ", allocation " + std::to_string(k));
            Loadable const converter = maker.make();
            {
                HeapWatch watch(HeapWatch::NOTHROW);
                watch.failAt(k);
                maker.load(*converter);
            }
            // Whatever is missing is unmapped; what is there is right.
            EXPECT_TRUE(isPartOf(decoded(*converter, maker.bytes), maker.units, u'\uFFFD'));
            for (char16_t const unit : maker.units) {
                std::string const code = encoded(*converter, Units(1, unit));
                EXPECT_TRUE(code == "?" || code.empty() || maker.bytes.find(code) != std::string::npos);
            }
            // Neither of the locks is held.
            maker.load(*converter);
        }
    }
}

TEST(MultibyteLoading, WithoutAnyMemoryNothingIsMappedAndTheNextConversionLoads)
{
    for (Maker const& maker : makers()) {
        SCOPED_TRACE(maker.name);
        Loadable const converter = maker.make();
        {
            HeapWatch watch(HeapWatch::NOTHROW);
            watch.failAt(1, true);
            Units const units = decoded(*converter, maker.bytes.substr(maker.bytes[0] == 'A' ? 1 : 0, 2));
            EXPECT_EQ(units[0], u'\uFFFD');
            EXPECT_EQ(encoded(*converter, Units(1, 0x3042)), "?");
        }
        expectComplete(maker, *converter);
    }
}

TEST(MultibyteLoading, MissingTableIsTriedAgainByTheNextConversion)
{
    // The allocations of the tables themselves, two at the beginning; without the third, the arrays that lend them
    // their pages, they have pages of their own. A failing page stays unmapped.
    for (Maker const& maker : makers())
        for (unsigned int const k : {1u, 2u, 3u}) {
            SCOPED_TRACE(maker.name);
            Loadable const converter = maker.make();
            {
                HeapWatch watch(HeapWatch::NOTHROW);
                watch.failAt(k);
                maker.load(*converter);
            }
            expectComplete(maker, *converter);
        }
}

TEST(MultibyteLoading, ListsAreReadNoFurtherThanTheirEnd)
{
    Guarded<unsigned short> const pairs(DBCS_LIST.data(), DBCS_LIST.size());
    Guarded<unsigned short> const rows(ROW_LIST.data(), ROW_LIST.size());
    Guarded<unsigned short> const jis0201(JIS0201_LIST.data(), JIS0201_LIST.size());
    Guarded<unsigned short> const jis0212(JIS0212_LIST.data(), JIS0212_LIST.size());
    Guarded<sMBCSExTable> const ex(EX_LIST, std::size(EX_LIST));
    // Without the third allocation tables are built in another way.
    for (unsigned int const failing : {0u, 3u}) {
        KX7CharSetConverterDBCS dbcs(pairs.data(), oCP932Type, KX7CS_WCP932);
        KX7CharSetConverterDBCSEx dbcsEx(ex.data(), oCP932Type, KX7CS_SJIS0213);
        KX7CharSetConverterEUC_CN_KR eucKr(rows.data(), KX7CS_EUC_KR);
        KX7CharSetConverterEUC_JP eucJp(rows.data(), jis0201.data(), jis0212.data(), KX7CS_EUC_JP);
        KX7CharSetConverterGB18030 gb(pairs.data(), KX7CS_GB18030);
        size_t i = 0;
        for (KX7CharSetConverter* const converter :
             std::initializer_list<KX7CharSetConverter*>{&dbcs, &dbcsEx, &eucKr, &eucJp, &gb}) {
            Maker const& maker = makers()[i++];
            {
                HeapWatch watch(HeapWatch::NOTHROW);
                if (failing != 0)
                    watch.failAt(failing);
                maker.load(*converter);
            }
            expectComplete(maker, *converter);
        }
    }
}

TEST(MultibyteLoading, NameConstructorsHaveNoListAndMapNothing)
{
    KX7CharSetConverterDBCS dbcs("name", oCP932Type, KX7CS_WCP932);
    KX7CharSetConverterDBCSEx dbcsEx("name", oCP932Type, KX7CS_SJIS0213);
    KX7CharSetConverterEUC_CN_KR eucKr("name", KX7CS_EUC_KR);
    KX7CharSetConverterEUC_JP eucJp("a", "b", "c", KX7CS_EUC_JP);
    DoubleByteModel const dbcsModel(SHIFT_JIS_BYTES, {});
    ShiftJis2004Model const dbcsExModel({});
    EucKrCnModel const eucKrModel({});
    EucJpModel const eucJpModel({}, {}, {});
    struct Row {
        KX7CharSetConverter& converter;
        Model const& model;
    };
    for (Row const& row :
         {Row{dbcs, dbcsModel}, Row{dbcsEx, dbcsExModel}, Row{eucKr, eucKrModel}, Row{eucJp, eucJpModel}}) {
        Probe probe(row.converter, row.model);
        for (int i = 0; i < 2; ++i) {
            for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                probe.compareDecode({"A\x82\xA0\xB0\xA1\x8E\xB1\x8F\xA1\xA1", 16, op, -1});
                probe.compareEncode({{u'A', 0x3042, 0xA5, 0xD840, 0xDC0B}, 32, op});
            }
            probe.compareNumUnits("A\x82\xA0\xB0\xA1\x8E\xB1", UNTIL_TERMINATOR);
            probe.compareNumBytes({u'A', 0x3042, 0xD840, 0xDC0B}, UNTIL_TERMINATOR);
            dbcs.load();
            dbcsEx.load();
            eucKr.load();
            eucJp.load();
        }
    }
}

TEST(MultibyteLoading, GB18030WithoutAListHasItsRanges)
{
    KX7CharSetConverterGB18030 converter("name", KX7CS_GB18030);
    Gb18030Model const model({}, codeRunsOf(oGB2UniRange), codeRunsOf(oUni2GBRange));
    Probe probe(converter, model);
    for (ILLCHAR_OPTYPE const op : OPERATIONS) {
        probe.compareDecode({"A\xB0\xA1\xA8\xBF\x81\x30\x81\x30\x90\x30\x81\x30", 16, op, -1});
        probe.compareEncode({{u'A', 0x80, 0x01F9, 0x20AC, 0xD800, 0xDC00}, 48, op});
    }
}

TEST(MultibyteLoading, EUCJPWithoutAJIS0212ListHasNoJIS0201Either)
{
    // The JIS X 0201 pairs are entered together with the JIS X 0212 ones.
    KX7CharSetConverterEUC_JP converter(ROW_LIST.data(), JIS0201_LIST.data(), nullptr, KX7CS_EUC_JP);
    EXPECT_EQ(decoded(converter, "\xA1\xA1\x8E\xB1"), (Units{0x3042, 0xFFFD, 0xFFFD}));
    EXPECT_EQ(encoded(converter, {0x3042, 0xFF71, 0xA5}), "\xA1\xA1??");
    KX7CharSetConverterEUC_JP without0201(ROW_LIST.data(), nullptr, JIS0212_LIST.data(), KX7CS_EUC_JP);
    EXPECT_EQ(decoded(without0201, "\xA1\xA1\x8E\xB1\x8F\xA2\xA1"), (Units{0x3042, 0xFFFD, 0xFFFD, 0x4E02}));
}

TEST(MultibyteLoading, EUCJPWithoutAJIS0208ListHasItsJIS0212List)
{
    // The JIS X 0201 pairs go into the tables of the JIS X 0208 list, which are not there.
    for (unsigned short const* const jis0201 : {JIS0201_LIST.data(), static_cast<unsigned short const*>(nullptr)}) {
        KX7CharSetConverterEUC_JP converter(nullptr, jis0201, JIS0212_LIST.data(), KX7CS_EUC_JP);
        CodePairs const jis0212{{0x2221, 0x4E02}, {0x2322, 0x5E04}};
        EucJpModel const model({}, {}, jis0212);
        EXPECT_EQ(decoded(converter, "a\x8F\xA2\xA1\xA1\xA1z"), (Units{u'a', 0x4E02, 0xFFFD, 0xFFFD, u'z'}));
        EXPECT_EQ(encoded(converter, {u'a', 0x5E04, 0x3042, 0xFF71, u'z'}), "a\x8F\xA3\xA2??z");
        EXPECT_EQ(converter.getNumUnits("\x8F\xA2\xA1z", UNTIL_TERMINATOR), 2u);
        Probe probe(converter, model);
        std::string const bytes = "A\x8F\xA2\xA1\xA1\xA1\x8E\xB1\x80\xDC\x8F\xA3\xA2";
        Units const units{u'A', 0x4E02, 0x5E04, 0x3042, 0xFF71, 0xA5};
        for (ILLCHAR_OPTYPE const op : OPERATIONS)
            for (unsigned int capacity = 0; capacity <= 24; ++capacity) {
                probe.compareDecode({bytes, capacity, op, -1});
                probe.compareEncode({units, capacity, op});
            }
        probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
        probe.compareNumBytes(units, UNTIL_TERMINATOR);
    }
}

TEST(MultibyteLoading, EUCJPWithAJIS0212List)
{
    CodePairs const jis0208{{0x2121, 0x3042}, {0x2122, 0x3142}, {0x3021, 0x3043}};
    CodePairs const jis0201{{0x5C, 0xA5}, {0xB1, 0xFF71}};
    CodePairs const jis0212{{0x2221, 0x4E02}, {0x2322, 0x5E04}};
    KX7CharSetConverterEUC_JP converter(ROW_LIST.data(), JIS0201_LIST.data(), JIS0212_LIST.data(), KX7CS_EUC_JP);
    EucJpModel const model(jis0208, jis0201, jis0212);
    EXPECT_EQ(decoded(converter, "\x8F\xA2\xA1z"), (Units{0x4E02, u'z'}));
    EXPECT_EQ(encoded(converter, {0x4E02, u'z'}), "\x8F\xA2\xA1z");
    EXPECT_EQ(converter.getNumUnits("\x8F\xA2\xA1z", UNTIL_TERMINATOR), 2u);
    Probe probe(converter, model);
    std::vector<std::string> const fragments = {
        "A",        "\x8F",     "\x8F\xA2", "\x8F\xA2\xA1", "\x8F\x22\x21", "\x8F\xA2\xA2",
        "\xA2\xA1", "\xA1\xA1", "\x8E\xB1", "\x8E",         "\x80\xDC"};
    std::vector<Units> const unitFragments = {Units{u'A'},   Units{0x4E02}, Units{0x5E04}, Units{0x3042},
                                              Units{0xFF71}, Units{0xA5},   Units{0x4E00}};
    for (std::string const& a : fragments)
        for (std::string const& b : fragments) {
            std::string const bytes = a + b;
            for (ILLCHAR_OPTYPE const op : OPERATIONS)
                for (unsigned int capacity = 0; capacity <= 7; ++capacity)
                    for (int limit = -1; limit <= 7; ++limit)
                        probe.compareDecode({bytes, capacity, op, limit});
            probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
            for (unsigned int count = 0; count <= 7; ++count)
                probe.compareNumUnits(bytes, count);
        }
    for (Units const& a : unitFragments)
        for (Units const& b : unitFragments) {
            for (ILLCHAR_OPTYPE const op : OPERATIONS)
                for (unsigned int capacity = 0; capacity <= 13; ++capacity)
                    probe.compareEncode({a + b, capacity, op});
            probe.compareNumBytes(a + b, UNTIL_TERMINATOR);
        }
}

TEST(MultibyteLoading, JIS0201WinsOverJIS0208ForASharedUnit)
{
    std::vector<unsigned short> const jis0208 = listOf({{0x2171, 0xFF71}});
    KX7CharSetConverterEUC_JP converter(jis0208.data(), JIS0201_LIST.data(), JIS0212_LIST.data(), KX7CS_EUC_JP);
    EXPECT_EQ(encoded(converter, {0xFF71}), "\x8E\xB1");
    EXPECT_EQ(decoded(converter, "\xA1\xF1\x8E\xB1"), (Units{0xFF71, 0xFF71}));
}

TEST(MultibyteLoading, CodePointBeyondTheLastOneIsMappedWhenDecodingOnly)
{
    sMBCSExTable const list[] = {{'A', 0, 'A'},
                                 {0x82A0, 0, 0x110041},
                                 {0x82A1, 0, 0x10FFFF},
                                 {0x82A2, 0, 0xFFFFFFFF},
                                 {0x82A3, 0, 0x10000},
                                 {0x82A4, 0, 0xFFFF},
                                 {0, 0, 0}};
    KX7CharSetConverterDBCSEx converter(list, oCP932Type, KX7CS_SJIS0213);
    EXPECT_EQ(decoded(converter, "\x82\xA0"), (Units{0x41})) << "one unit, kept to 16 bits";
    EXPECT_EQ(decoded(converter, "\x82\xA2"), (Units{0xFFFF}));
    EXPECT_EQ(decoded(converter, "\x82\xA1\x82\xA3\x82\xA4"), (Units{0xDBFF, 0xDFFF, 0xD800, 0xDC00, 0xFFFF}));
    EXPECT_EQ(encoded(converter, {0xDBFF, 0xDFFF}), "\x82\xA1");
    EXPECT_EQ(encoded(converter, {0xD800, 0xDC00}), "\x82\xA3");
    EXPECT_EQ(encoded(converter, {0xFFFF, u'A'}), "\x82\xA4"
                                                  "A");
    EXPECT_EQ(converter.getNumUnits("\x82\xA0\x82\xA1", UNTIL_TERMINATOR), 3u);
    // No unit and no pair is written for it, and no table is read out of its bounds.
    ShiftJis2004Model const model({{'A', 'A'},
                                   {0x82A0, 0x110041},
                                   {0x82A1, 0x10FFFF},
                                   {0x82A2, 0xFFFFFFFF},
                                   {0x82A3, 0x10000},
                                   {0x82A4, 0xFFFF}});
    Probe probe(converter, model);
    for (unsigned int high = 0xD800; high <= 0xDBFF; ++high)
        for (char16_t const low : {u'\xDC00', u'\xDC41', u'\xDFFF'})
            probe.compareEncode({{static_cast<char16_t>(high), low}, 12, ILLCHAR_ESCAPE}, FlagArgument::TRUE_BEFORE);
    for (unsigned int capacity = 0; capacity <= 7; ++capacity)
        probe.compareDecode({"\x82\xA0\x82\xA1\x82\xA2", capacity, ILLCHAR_STOP, -1});
}

TEST(MultibyteLoading, LaterPairWinsInBothDirections)
{
    std::vector<unsigned short> const list = listOf({{0x82A0, 0x3042}, {0x82A0, 0x3043}, {0x82A1, 0x3043}});
    KX7CharSetConverterDBCS converter(list.data(), oCP932Type, KX7CS_WCP932);
    EXPECT_EQ(decoded(converter, "\x82\xA0"), (Units{0x3043}));
    EXPECT_EQ(encoded(converter, {0x3043}), "\x82\xA1");
}
