// kx7text benchmarks - the floors.
#include "bench/Floors.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <sstream>

namespace kx7bench {

namespace {

bool isOneOf(std::string const& text, std::initializer_list<char const*> all)
{
    return std::find(all.begin(), all.end(), text) != all.end();
}

// Which cases a floor is for.

using Name = CaseName const&;

bool isAny(Name)
{
    return true;
}

bool isUTF8(Name c)
{
    return c.set == "utf8";
}

bool isWide(Name c)
{
    return isOneOf(c.set, {"utf16", "utf32"});
}

bool isDense(Name c)
{
    return c.form == "dense";
}

bool isLatin(Name c)
{
    return isOneOf(c.script, {"ascii", "english", "french", "german"});
}

bool isUTF8InASCII(Name c)
{
    return isUTF8(c) && c.script == "ascii";
}

bool isUTF8DenseNotASCII(Name c)
{
    return isUTF8(c) && isDense(c) && c.script != "ascii";
}

/** Mostly ASCII, with letters of two bytes in between. */
bool isUTF8InLatin(Name c)
{
    return isUTF8(c) && isLatin(c) && c.script != "ascii" && !(c.script == "english" && isDense(c));
}

bool isUTF8Han(Name c)
{
    return isUTF8(c) && isDense(c) && isOneOf(c.script, {"chinese", "japanese"});
}

bool isUTF8HanOrKorean(Name c)
{
    return isUTF8Han(c) || (isUTF8(c) && isDense(c) && c.script == "korean");
}

bool isUTF8OtherScript(Name c)
{
    return isUTF8(c) && isDense(c) && !isLatin(c) && !isUTF8Han(c);
}

bool isUTF8InTwoBytes(Name c)
{
    return isUTF8(c) && isDense(c) && isOneOf(c.script, {"cyrillic", "greek", "arabic", "hebrew"});
}

bool isUTF8Emoji(Name c)
{
    return isUTF8(c) && c.script == "emoji";
}

bool isUTF8NotASCIINorEmoji(Name c)
{
    return isUTF8(c) && c.script != "ascii" && c.script != "emoji";
}

/** The sets that have more than double bytes, or reach beyond the first plane. */
bool isLong(Name c)
{
    return isOneOf(c.set, {"eucjp", "sjis2004"}) || (c.set == "gb18030" && c.script != "chinese");
}

bool isDoubleByte(Name c)
{
    return !isLong(c) && isOneOf(c.set, {"932", "sjis", "936", "euccn", "gb18030", "950", "big5", "949", "euckr"});
}

bool isGB(Name c)
{
    return isDoubleByte(c) && isDense(c) && isOneOf(c.set, {"936", "euccn", "gb18030"});
}

bool isDoubleByteDenseNotGB(Name c)
{
    return isDoubleByte(c) && isDense(c) && !isGB(c);
}

bool isDoubleByteMarkup(Name c)
{
    return isDoubleByte(c) && !isDense(c);
}

bool isSingleByte(Name c)
{
    return !isUTF8(c) && !isWide(c) && !isLong(c) && !isDoubleByte(c);
}

bool isSingleByteDense(Name c)
{
    return isSingleByte(c) && isDense(c) && !isLatin(c);
}

bool isSingleByteMostlyASCII(Name c)
{
    return isSingleByte(c) && !isSingleByteDense(c);
}

bool isLegacy(Name c)
{
    return !isUTF8(c) && !isWide(c);
}

bool isNotWide(Name c)
{
    return !isWide(c);
}

enum class Measure { RATIO, GIGABYTES, MICROSECONDS };

struct Floor {
    char const* title;
    std::initializer_list<char const*> operations;
    char const* size;
    bool (*covers)(Name);
    double avx512;
    double avx2;
    Measure measure = Measure::RATIO;
};

char const* const LARGE = "1MiB";
char const* const BELOW = "4KiB";  ///< shown beside LARGE, without a floor

// clang-format off
Floor const FLOORS[] = {
    {"UTF-8 to UTF-16: ASCII, 64 KiB", {"decode"}, "64KiB", isUTF8InASCII, 20, 14},
    {"UTF-8 to UTF-16: ASCII, 1 MiB", {"decode"}, LARGE, isUTF8InASCII, 13, 10},
    {"UTF-8 to UTF-16: French, German; English as markup", {"decode"}, LARGE, isUTF8InLatin, 8, 3},
    {"UTF-8 to UTF-16, dense: Cyrillic, Greek, Arabic, Hebrew, Thai, Korean, emoji", {"decode"}, LARGE,
     isUTF8OtherScript, 2.5, 1},
    {"UTF-8 to UTF-16, dense: Chinese, Japanese", {"decode"}, LARGE, isUTF8Han, 1.9, 1},
    {"UTF-8 to UTF-16, dense, two-byte scripts, GB/s", {"decode"}, LARGE, isUTF8InTwoBytes, 10, 0, Measure::GIGABYTES},
    {"UTF-8 to UTF-16, dense, Chinese, Japanese, Korean, GB/s", {"decode"}, LARGE, isUTF8HanOrKorean, 8, 0,
     Measure::GIGABYTES},
    {"UTF-16 to UTF-8: ASCII", {"encode"}, LARGE, isUTF8InASCII, 12, 10},
    {"UTF-16 to UTF-8: all other scripts", {"encode"}, LARGE, isUTF8NotASCIINorEmoji, 4, 2},
    {"UTF-16 to UTF-8: emoji", {"encode"}, LARGE, isUTF8Emoji, 2.5, 0.9},
    {"single-byte decode, dense", {"decode"}, LARGE, isSingleByteDense, 7, 1.5},
    {"single-byte decode, mostly ASCII", {"decode"}, LARGE, isSingleByteMostlyASCII, 7, 3},
    {"single-byte encode", {"encode"}, LARGE, isSingleByte, 20, 5},
    {"single-byte to UTF-8", {"to-utf8"}, LARGE, isSingleByte, 6, 3},
    {"UTF-8 to single-byte", {"from-utf8"}, LARGE, isSingleByte, 12, 4},
    {"double-byte decode, dense, not GB", {"decode"}, LARGE, isDoubleByteDenseNotGB, 2.5, 1.5},
    {"double-byte decode, dense, GB sets", {"decode"}, LARGE, isGB, 2, 1.5},
    {"double-byte decode, markup", {"decode"}, LARGE, isDoubleByteMarkup, 4, 2.5},
    {"double-byte encode", {"encode"}, LARGE, isDoubleByte, 4, 2},
    {"double-byte to UTF-8", {"to-utf8"}, LARGE, isDoubleByte, 3, 1.8},
    {"UTF-8 to double-byte", {"from-utf8"}, LARGE, isDoubleByte, 3, 1.8},
    {"GB18030 four-byte text, EUC-JP, Shift_JIS-2004", {"decode", "encode", "to-utf8", "from-utf8"}, LARGE, isLong,
     2, 1.5},
    {"UTF-8, 16 bytes, ASCII", {"decode", "encode"}, "16B", isUTF8InASCII, 1.5, 1.2},
    {"UTF-8, 16 bytes, dense", {"decode", "encode"}, "16B", isUTF8DenseNotASCII, 0.8, 0.7},
    {"UTF-8, 64 bytes", {"decode", "encode"}, "64B", isUTF8, 1.8, 1.2},
    {"legacy sets, 16 bytes", {"decode", "encode"}, "16B", isLegacy, 2, 1.5},
    {"legacy sets, 64 bytes", {"decode", "encode"}, "64B", isLegacy, 3, 2},
    {"legacy sets to and from UTF-8, 16 bytes", {"to-utf8", "from-utf8"}, "16B", isLegacy, 2, 1.5},
    {"legacy sets to and from UTF-8, 64 bytes", {"to-utf8", "from-utf8"}, "64B", isLegacy, 3, 2},
    {"getNumUnits beside ICU's preflight", {"num-units"}, LARGE, isNotWide, 8, 5},
    {"getNumBytes beside ICU's preflight", {"num-bytes"}, LARGE, isNotWide, 8, 5},
    {"getNumUnits of UTF-16 and UTF-32", {"num-units"}, LARGE, isWide, 8, 5},
    {"getNumBytes of UTF-16 and UTF-32", {"num-bytes"}, LARGE, isWide, 8, 5},
    {"finding a converter beside opening one", {"lookup"}, "", isAny, 30, 30},
    {"tables of a double-byte set, microseconds", {"load"}, "", isDoubleByte, 50, 50, Measure::MICROSECONDS},
    {"the same in a new process", {"load-first"}, "", isDoubleByte, 50, 50, Measure::MICROSECONDS},
    {"tables of EUC-JP, Shift_JIS-2004, GB 18030, microseconds", {"load"}, "", isLong, 50, 50, Measure::MICROSECONDS},
    {"the same in a new process", {"load-first"}, "", isLong, 50, 50, Measure::MICROSECONDS},
};
// clang-format on

double valueOf(Measure measure, Result const& result, std::string const& contender)
{
    switch (measure) {
        case Measure::GIGABYTES: return result.speed(contender);
        case Measure::MICROSECONDS: return result.seconds.at(contender) * 1e6;
        default: return result.ratio(contender);
    }
}

struct Worst {
    Result const* result = nullptr;
    double value = 0;
    std::string missing;  ///< what could not be measured, separated by commas
};

Worst worstOf(Floor const& floor, char const* size, std::vector<Result> const& results, std::string const& contender)
{
    Worst worst;
    for (Result const& result : results) {
        CaseName const& c = result.name;
        if (!isOneOf(c.operation, floor.operations) || c.size != size || !floor.covers(c))
            continue;
        if (!result.has(contender)) {
            worst.missing += (worst.missing.empty() ? "" : ", ") + c.row();
            continue;
        }
        double const value = valueOf(floor.measure, result, contender);
        if (value == 0)  // no peer has the set
            continue;
        bool const worse = floor.measure == Measure::MICROSECONDS ? value > worst.value : value < worst.value;
        if (!worst.result || worse) {
            worst.result = &result;
            worst.value = value;
        }
    }
    return worst;
}

}  // namespace

std::vector<FloorResult> judged(std::vector<Result> const& results, std::vector<KernelSet> const& sets)
{
    std::vector<FloorResult> all;
    for (KernelSet const& set : sets) {
        for (Floor const& floor : FLOORS) {
            double const bound = set.name == "avx512" ? floor.avx512 : set.name == "avx2" ? floor.avx2 : 0;
            Worst const worst = worstOf(floor, floor.size, results, set.contender());
            Worst const below = floor.size == LARGE ? worstOf(floor, BELOW, results, set.contender()) : Worst();
            FloorResult result;
            result.title = floor.title;
            result.kernels = set;
            result.bound = bound;
            result.worst = worst.result ? formatted("%.3g", worst.value) : "";
            result.where = worst.result ? worst.result->name.row() : "";
            result.missing = worst.missing;
            result.below = below.result ? formatted("%.3g", below.value) : "";
            bool const reached = floor.measure == Measure::MICROSECONDS ? worst.value <= bound : worst.value >= bound;
            result.isMet = worst.result && worst.missing.empty() && reached;
            all.push_back(result);
        }
    }
    return all;
}

void writeFloors(std::ostream& out, std::vector<FloorResult> const& floors)
{
    for (size_t i = 0; i != floors.size();) {
        KernelSet const& set = floors[i].kernels;
        int judged = 0;
        int met = 0;
        int left = 0;
        std::ostringstream rows;
        rows << "| case | floor | worst | where | met | worst at 4 KiB |\n|---|---|---|---|---|---|\n";
        for (; i != floors.size() && floors[i].kernels.name == set.name; ++i) {
            FloorResult const& floor = floors[i];
            bool const isJudged = floor.bound > 0;
            if (floor.worst.empty() && floor.missing.empty()) {
                left += isJudged;
                continue;
            }
            rows << "| " << floor.title << " | " << (isJudged ? formatted("%g", floor.bound) : "") << " | "
                 << floor.worst << " | " << floor.where
                 << (floor.missing.empty() ? "" : " (**missing**: " + floor.missing + ")") << " | "
                 << (!isJudged               ? ""
                     : floor.isMet           ? "yes"
                     : floor.missing.empty() ? "**no**"
                                             : "**missing**")
                 << " | " << floor.below << " |\n";
            judged += isJudged;
            met += isJudged && floor.isMet;
        }
        if (judged == 0)
            continue;
        out << "\n### " << set.title << "\n\n" << rows.str() << '\n' << met << " of " << judged << " floors are met";
        if (left != 0)
            out << "; " << left << " have no case in this run";
        out << ".\n";
    }
}

void writeFloorFile(std::ostream& out, std::vector<FloorResult> const& floors)
{
    out << "case,kernels,floor,worst,where,met,worst at 4 KiB\n";
    for (FloorResult const& floor : floors)
        if (floor.bound > 0)
            out << '"' << floor.title << "\"," << floor.kernels.title << ',' << formatted("%g", floor.bound) << ','
                << floor.worst << ',' << floor.where << ',' << (floor.isMet ? "yes" : "no") << ',' << floor.below
                << '\n';
}

}  // namespace kx7bench
