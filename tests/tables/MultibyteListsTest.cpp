// kx7text tests - the stored lists, byte types and ranges of the multibyte sets: length, order, uniqueness, end.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "kx7/tables/ByteTypeTables.h"
#include "tests/support/MultibyteSets.h"

using namespace kx7test;

namespace {

enum class Order { BY_UNIT, BY_CODE, TWO_RUNS_BY_UNIT };

struct StoredList {
    char const* name;
    CodePairs pairs;
    unsigned int records;
    Order order;
};

std::vector<StoredList> const& storedLists()
{
    static std::vector<StoredList> const lists = {
        {"oCP932map", codePairsOf(oCP932map), 9338, Order::BY_UNIT},
        {"oCP936map", codePairsOf(oCP936map), 24069, Order::BY_UNIT},
        {"oGBKmap", codePairsOf(oGBKmap), 24069, Order::BY_UNIT},
        {"oCP949map", codePairsOf(oCP949map), 10236, Order::BY_UNIT},
        {"oCP950map", codePairsOf(oCP950map), 20202, Order::BY_UNIT},
        {"oBIG5map", codePairsOf(oBIG5map), 19839, Order::BY_UNIT},
        {"oSHIFTJISmap", codePairsOf(oSHIFTJISmap), 9396, Order::TWO_RUNS_BY_UNIT},
        {"oSJIS0213_2004map", codePairsOf(oSJIS0213_2004map), 11398, Order::BY_UNIT},
        {"oKSX1001map", codePairsOf(oKSX1001map), 8224, Order::BY_CODE},
        {"oGB2312map", codePairsOf(oGB2312map), 7445, Order::BY_CODE},
        {"oJIS0208map", codePairsOf(oJIS0208map), 6879, Order::BY_CODE},
        {"oJIS0201map", codePairsOf(oJIS0201map), 189, Order::BY_CODE},
        {"oJIS0212map", codePairsOf(oJIS0212map), 0, Order::BY_CODE},
    };
    return lists;
}

CodePairs const& pairsNamed(std::string const& name)
{
    for (StoredList const& list : storedLists())
        if (list.name == name)
            return list.pairs;
    abort();
}

bool ascending(CodePairs::const_iterator begin, CodePairs::const_iterator end, bool byCode)
{
    return std::adjacent_find(begin, end, [&](auto const& a, auto const& b) {
               return byCode ? a.first >= b.first : a.second >= b.second;
           }) == end;
}

/** Type values of runs of bytes. */
struct TypeRun {
    unsigned int first;
    unsigned int last;
    unsigned int type;
};

std::vector<unsigned int> typesOf(std::vector<TypeRun> const& runs)
{
    std::vector<unsigned int> types;
    for (TypeRun const& run : runs) {
        EXPECT_EQ(types.size(), run.first);
        types.resize(run.last + 1, run.type);
    }
    return types;
}

std::vector<TypeRun> const CP932_TYPES = {
    {0x00, 0x1F, 0x00}, {0x20, 0x20, 0x08}, {0x21, 0x2F, 0x02}, {0x30, 0x39, 0x04}, {0x3A, 0x3F, 0x02},
    {0x40, 0x40, 0x82}, {0x41, 0x5A, 0xA1}, {0x5B, 0x60, 0x82}, {0x61, 0x7A, 0x91}, {0x7B, 0x7D, 0x82},
    {0x7E, 0x7E, 0x81}, {0x7F, 0x7F, 0x00}, {0x80, 0x80, 0x80}, {0x81, 0x9F, 0xC0}, {0xA0, 0xA0, 0x80},
    {0xA1, 0xA5, 0x82}, {0xA6, 0xDF, 0x81}, {0xE0, 0xFC, 0xC0}, {0xFD, 0xFF, 0x00}};
std::vector<TypeRun> const CP936_TYPES = {
    {0x00, 0x1F, 0x00}, {0x20, 0x20, 0x08}, {0x21, 0x2F, 0x02}, {0x30, 0x39, 0x04}, {0x3A, 0x3F, 0x02},
    {0x40, 0x40, 0x82}, {0x41, 0x5A, 0xA1}, {0x5B, 0x60, 0x82}, {0x61, 0x7A, 0x91}, {0x7B, 0x7E, 0x82},
    {0x7F, 0x7F, 0x80}, {0x80, 0x80, 0x00}, {0x81, 0xA0, 0x40}, {0xA1, 0xFE, 0xC0}, {0xFF, 0xFF, 0x00}};
std::vector<TypeRun> const CP949_TYPES = {{0x00, 0x1F, 0x00}, {0x20, 0x20, 0x08}, {0x21, 0x2F, 0x02},
                                          {0x30, 0x39, 0x04}, {0x3A, 0x40, 0x02}, {0x41, 0x5A, 0xA1},
                                          {0x5B, 0x60, 0x02}, {0x61, 0x7A, 0x91}, {0x7B, 0x7E, 0x02},
                                          {0x7F, 0x80, 0x00}, {0x81, 0xFE, 0xC0}, {0xFF, 0xFF, 0x00}};

void expectSound(std::vector<CodeRun> const& runs)
{
    for (size_t i = 0; i < runs.size(); ++i) {
        EXPECT_LE(runs[i].first, runs[i].last) << i;
        EXPECT_NE(runs[i].value, 0u) << i;
        EXPECT_TRUE(i == 0 || runs[i].first > runs[i - 1].last) << i;
    }
}

std::set<std::pair<unsigned int, unsigned int>> pairsOfRuns(std::vector<CodeRun> const& runs, bool swapped)
{
    std::set<std::pair<unsigned int, unsigned int>> pairs;
    for (CodeRun const& run : runs)
        for (unsigned int key = run.first; key <= run.last; ++key) {
            unsigned int const value = key - run.first + run.value;
            pairs.insert(swapped ? std::make_pair(value, key) : std::make_pair(key, value));
        }
    return pairs;
}

}  // namespace

TEST(MultibyteLists, AreInOrderWithoutRepetitionAndOfTheStatedLength)
{
    for (StoredList const& list : storedLists()) {
        SCOPED_TRACE(list.name);
        EXPECT_EQ(list.pairs.size(), list.records);
        std::set<unsigned int> codes;
        std::set<unsigned int> codePoints;
        for (auto const& [code, codePoint] : list.pairs) {
            EXPECT_TRUE(code != 0 && code <= 0xFFFF);
            EXPECT_TRUE(codePoint != 0 && codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF));
            EXPECT_TRUE(codes.insert(code).second) << "code " << code << " twice";
            EXPECT_TRUE(codePoints.insert(codePoint).second) << "code point " << codePoint << " twice";
        }
        auto const middle = list.pairs.end() - (list.order == Order::TWO_RUNS_BY_UNIT ? 139 : 0);
        EXPECT_TRUE(ascending(list.pairs.begin(), middle, list.order == Order::BY_CODE));
        EXPECT_TRUE(ascending(middle, list.pairs.end(), list.order == Order::BY_CODE));
        EXPECT_EQ(codes.count(0xFFFD) + codePoints.count(0xFFFD), 0u) << "U+FFFD stands for what is unmapped";
    }
}

TEST(MultibyteLists, EndWithZeros)
{
    unsigned short const* const lists[] = {oCP932map,    oCP936map,   oCP949map,  oCP950map,   oBIG5map,
                                           oSHIFTJISmap, oKSX1001map, oGB2312map, oJIS0208map, oJIS0201map};
    unsigned int const records[] = {9338, 24069, 10236, 20202, 19839, 9396, 8224, 7445, 6879, 189};
    for (size_t i = 0; i < std::size(lists); ++i) {
        EXPECT_EQ(lists[i][2 * records[i]], 0u) << i;
        EXPECT_EQ(lists[i][2 * records[i] + 1], 0u) << i;
        EXPECT_NE(lists[i][2 * records[i] - 1], 0u) << i;
    }
    EXPECT_EQ(oJIS0212map[0] | oJIS0212map[1], 0);
    sMBCSExTable const& end = oSJIS0213_2004map[11398];
    EXPECT_TRUE(end.code == 0 && end.codePoint == 0 && end.reserved == 0);
    for (unsigned int i = 0; i < 11398; ++i)
        EXPECT_EQ(oSJIS0213_2004map[i].reserved, 0u);
}

TEST(MultibyteLists, GBKIsCodePage936)
{
    EXPECT_EQ(static_cast<unsigned short const*>(oGBKmap), static_cast<unsigned short const*>(oCP936map));
}

TEST(MultibyteLists, RowAndCellListsStayWithinTheirGrid)
{
    for (char const* const name : {"oKSX1001map", "oGB2312map", "oJIS0208map"})
        for (auto const& pair : pairsNamed(name)) {
            EXPECT_TRUE(pair.first >> 8 >= 0x21 && pair.first >> 8 <= 0x7E) << name;
            EXPECT_TRUE((pair.first & 0xFF) >= 0x21 && (pair.first & 0xFF) <= 0x7E) << name;
        }
}

TEST(MultibyteLists, ControlCodes)
{
    for (char const* const name : {"oCP932map", "oCP949map", "oCP950map", "oSHIFTJISmap"}) {
        CodeMap const map(pairsNamed(name));
        for (unsigned int c = 1; c <= 0x7F; ++c) {
            unsigned int const expected = c == 0x1A ? 0x1C : c == 0x1C ? 0x7F : c == 0x7F ? 0x1A : c;
            bool const isWon = c == 0x5C && std::string(name) == "oCP949map";
            EXPECT_EQ(map.codePointOf(c), isWon ? 0x20A9 : expected) << name;
        }
    }
    for (char const* const name : {"oCP936map", "oBIG5map"}) {
        CodeMap const map(pairsNamed(name));
        for (unsigned int c = 1; c <= 0x7F; ++c)
            EXPECT_EQ(map.codePointOf(c), c) << name;
    }
}

TEST(MultibyteLists, SingleBytesOfTheirOwn)
{
    CodeMap const cp949(pairsNamed("oCP949map"));
    unsigned int const of949[][2] = {{0x5C, 0x20A9}, {0x80, 0xA2},   {0x81, 0xAC},
                                     {0x82, 0x5C},   {0x83, 0x203E}, {0x84, 0xA6}};
    for (auto const& pair : of949)
        EXPECT_EQ(cp949.codePointOf(pair[0]), pair[1]);
    CodeMap const cp932(pairsNamed("oCP932map"));
    EXPECT_EQ(cp932.codePointOf(0x80), 0xA2u);
    EXPECT_EQ(cp932.codePointOf(0xA0), 0xA3u);
    for (char const* const name : {"oCP932map", "oSHIFTJISmap", "oJIS0201map"}) {
        CodeMap const map(pairsNamed(name));
        for (unsigned int c = 0xA1; c <= 0xDF; ++c)
            EXPECT_EQ(map.codePointOf(c), 0xFF61 + c - 0xA1) << name;
    }
    CodeMap const jis0201(pairsNamed("oJIS0201map"));
    for (unsigned int c = 1; c <= 0x7F; ++c)
        EXPECT_EQ(jis0201.codePointOf(c), c == 0x5C ? 0xA5u : c == 0x7E ? 0x203Eu : c == 0x7F ? 0u : c);
    EXPECT_EQ(CodeMap(pairsNamed("oCP936map")).codePointOf(0x80), 0x20ACu);
    EXPECT_EQ(CodeMap(pairsNamed("oCP936map")).codePointOf(0x8180), 0x4E90u);
}

TEST(MultibyteLists, ShiftJisEndsWithTheVendorsRun)
{
    CodePairs const& pairs = pairsNamed("oSHIFTJISmap");
    std::set<unsigned int> tail;
    for (auto pair = pairs.end() - 139; pair != pairs.end(); ++pair)
        tail.insert(pair->first);
    for (unsigned int const code : {0x5CU, 0x7EU, 0x8740U, 0x815CU, 0x8160U, 0x817CU, 0x81CAU, 0xFA55U})
        EXPECT_EQ(tail.count(code), 1u) << code;
    EXPECT_EQ(CodeMap(pairs).codePointOf(0x5C), 0x5Cu);
    EXPECT_EQ(CodeMap(pairs).codePointOf(0x7E), 0x7Eu);
    EXPECT_LT(pairs.end()[-139].second, pairs.end()[-140].second) << "a second run begins";
}

TEST(MultibyteLists, ShiftJis2004ReachesBeyondThePlane)
{
    CodePairs const& pairs = pairsNamed("oSJIS0213_2004map");
    EXPECT_EQ(std::count_if(pairs.begin(), pairs.end(), [](auto const& pair) { return pair.second > 0xFFFF; }), 303);
    EXPECT_EQ(pairs.back().second, 0x2A6B2u);
}

TEST(MultibyteLists, JIS0208HasAReverseSolidus)
{
    CodeMap const map(pairsNamed("oJIS0208map"));
    EXPECT_EQ(map.codePointOf(0x2140), 0x5Cu);
    EXPECT_EQ(map.codeOf(0xA5), 0u);
    EXPECT_EQ(map.codeOf(0x203E), 0u);
}

TEST(ByteTypes, AreAsStated)
{
    std::vector<TypeRun> big5 = CP936_TYPES;
    big5[10].type = 0x00;
    struct Row {
        char const* name;
        unsigned char const* types;
        std::vector<TypeRun> runs;
    };
    Row const rows[] = {{"oCP932Type", oCP932Type, CP932_TYPES},
                        {"oCP936Type", oCP936Type, CP936_TYPES},
                        {"oCP949Type", oCP949Type, CP949_TYPES},
                        {"oCP950Type", oCP950Type, CP936_TYPES},
                        {"oBig5Type", oBig5Type, big5}};
    for (Row const& row : rows)
        EXPECT_EQ(std::vector<unsigned int>(row.types, row.types + 256), typesOf(row.runs)) << row.name;
}

TEST(ByteTypes, LeadAndTrailBytesAreThoseOfTheModels)
{
    struct Row {
        unsigned char const* types;
        DoubleBytes const& bytes;
    };
    for (Row const& row : {Row{oCP932Type, SHIFT_JIS_BYTES}, Row{oCP936Type, CP936_BYTES}, Row{oCP949Type, CP949_BYTES},
                           Row{oCP950Type, CP950_BYTES}, Row{oBig5Type, BIG5_BYTES}})
        for (unsigned int byte = 0; byte <= 0xFF; ++byte) {
            EXPECT_EQ((row.types[byte] & 0x40) != 0, row.bytes.isLead(byte)) << byte;
            EXPECT_EQ((row.types[byte] & 0x80) != 0, row.bytes.isTrail(byte)) << byte;
        }
}

TEST(GB18030Ranges, AreSortedRunsThatDoNotOverlap)
{
    CodeRuns const toUnits = codeRunsOf(oGB2UniRange);
    CodeRuns const toCodes = codeRunsOf(oUni2GBRange);
    EXPECT_EQ(toUnits.size(), 265u);
    EXPECT_EQ(toCodes.size(), 265u);
    expectSound(toUnits);
    expectSound(toCodes);
    for (kx7::GB18030Range const& end : {oGB2UniRange[265], oUni2GBRange[265]})
        EXPECT_TRUE(end.first == 0 && end.last == 0 && end.value == 0);
    EXPECT_EQ(std::count_if(toUnits.begin(), toUnits.end(), [](CodeRun const& run) { return run.last < 0x10000; }), 59);
    for (CodeRun const& run : toCodes)
        EXPECT_TRUE(run.last < 0xD800 || run.first > 0xDFFF) << "no surrogates";
}

TEST(GB18030Ranges, HoldTheSamePairsBothWays)
{
    auto const pairs = pairsOfRuns(codeRunsOf(oGB2UniRange), false);
    EXPECT_EQ(pairs, pairsOfRuns(codeRunsOf(oUni2GBRange), true));
    EXPECT_EQ(pairs.size(), 81u + 39420u);
}

TEST(GB18030Ranges, FirstAndLastRunsAndSomeBetween)
{
    CodeRuns const toUnits = codeRunsOf(oGB2UniRange);
    CodeRuns const toCodes = codeRunsOf(oUni2GBRange);
    auto const holds = [](CodeRuns const& runs, CodeRun const& run) {
        return std::any_of(runs.begin(), runs.end(), [&](CodeRun const& each) {
            return each.first == run.first && each.last == run.last && each.value == run.value;
        });
    };
    EXPECT_TRUE(holds({toUnits[59]}, {0x10000, 0x10023, 0x80}));
    EXPECT_TRUE(holds({toUnits.back()}, {0x199E2, 0x199FB, 0xFFE6}));
    EXPECT_TRUE(holds(toUnits, {0xA2E3, 0xA2E3, 0x20AC}));
    EXPECT_TRUE(holds(toUnits, {0xA8BF, 0xA8BF, 0x01F9}));
    EXPECT_TRUE(holds(toUnits, {0xA98A, 0xA995, 0x2FF0}));
    EXPECT_TRUE(holds(toUnits, {0xFE50, 0xFE50, 0x2E81}));
    EXPECT_TRUE(holds({toCodes[0]}, {0x80, 0xA3, 0x10000}));
    EXPECT_TRUE(holds({toCodes.back()}, {0xFFE6, 0xFFFF, 0x199E2}));
}

TEST(GB18030Ranges, EveryTwoByteRangeCodeIsAlsoInGBK)
{
    CodeMap const gbk(codePairsOf(oGBKmap));
    for (CodeRun const& run : codeRunsOf(oGB2UniRange))
        for (unsigned int code = run.first; code <= run.last && code < 0x10000; ++code) {
            EXPECT_NE(gbk.codePointOf(code), 0u) << code;
            EXPECT_NE(gbk.codePointOf(code), code - run.first + run.value) << code;
        }
}

TEST(GB18030Index, PointsAtTheLastRunThatStartsBeforeTheBlock)
{
    KX7CharSetConverterGB18030 converter(oGBKmap, KX7CS_GB18030);
    EXPECT_EQ(converter.getGB2UniRange(0x19FFF), oGB2UniRange) << "the whole table before load()";
    EXPECT_EQ(converter.getUni2GBRange(0xFFFF), oUni2GBRange);
    converter.load();
    auto const lastBefore = [](kx7::GB18030Range const* ranges, unsigned int key) {
        size_t i = 0;
        while (ranges[i + 1].last != 0 && ranges[i + 1].first < key)
            ++i;
        return ranges + i;
    };
    for (unsigned int code = 0; code <= 0x8100 + 255; ++code)
        EXPECT_EQ(converter.getGB2UniRange(code), oGB2UniRange) << code;
    for (unsigned int code = 0x8100; code <= 0x19FFF; code += 0x35)
        EXPECT_EQ(converter.getGB2UniRange(code), lastBefore(oGB2UniRange, 0x8100 + ((code - 0x8100) & ~0xFFu)))
            << code;
    for (unsigned int const code : {0x1A000u, 0x3E247u, 0x19398Fu, 0xFFFFFFFFu})
        EXPECT_EQ(converter.getGB2UniRange(code), &oGB2UniRange[264]) << code;
    for (unsigned int const code : {0x199FCu, 0x19A00u, 0x19FFFu})
        EXPECT_LE(converter.getGB2UniRange(code), &oGB2UniRange[264]) << code;
    for (unsigned int unit = 0; unit <= 0xFFFF; unit += 0x1D)
        EXPECT_EQ(converter.getUni2GBRange(unit), lastBefore(oUni2GBRange, unit & ~0x7Fu)) << unit;
}

TEST(GB18030Index, SearchFromItMissesNoRun)
{
    KX7CharSetConverterGB18030 converter(oGBKmap, KX7CS_GB18030);
    converter.load();
    for (CodeRun const& run : codeRunsOf(oGB2UniRange))
        for (unsigned int const code : {run.first, run.last})
            EXPECT_LE(converter.getGB2UniRange(code)->first, run.first) << code;
    for (CodeRun const& run : codeRunsOf(oUni2GBRange))
        for (unsigned int const unit : {run.first, run.last})
            EXPECT_LE(converter.getUni2GBRange(unit)->first, run.first) << unit;
}
