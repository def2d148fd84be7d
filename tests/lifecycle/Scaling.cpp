// kx7text tests - the time of every operation grows as its text does: from 1 MiB to 64 MiB, twice the text takes at
// most 2.2 times as long, or a tenth longer than it takes to copy: what outgrows a cache takes longer anyway.
//
//     scaling [PART OF A NAME [PART OF A TEXT'S NAME]]
//
// What is measured is 64 MiB each time, as 64 texts of 1 MiB, 32 of 2 MiB and so on, so that caches serve all sizes
// alike, and that the sums may grow by a tenth only. Processor time, the least of some rounds: a row that is too slow
// gets further ones before it counts, since another program on the machine can make it so, but none can make it faster.
#include <malloc.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/convert.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"

namespace {

constexpr size_t MIB = size_t{1} << 20;
constexpr size_t TOTAL = 64 * MIB;
constexpr int SIZES = 7;             // 1, 2, 4 … 64 MiB
constexpr double MOST_GROWTH = 2.2;  // if memory itself takes twice as long
constexpr int ROUNDS = 3;            // the first one also builds tables and touches pages
constexpr int PASSES = 6;

double processorTime()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/** The kinds of rows, each with the texts of those before it and more. */
enum class Kind {
    ONE_SET,  ///< strings, and what knows one encoding only
    ANY_SET,  ///< what it does depends on the character set
    LAYER     ///< whole texts of kx7/convert.h, which may hold zero bytes, as wide ones do
};

/** A text of a character set and what it is in UTF-16 and UTF-8. */
struct Sample {
    char const* name;
    KX7CharSet charSet;
    std::string bytes;
    Kind first;  ///< the first kind of row that it is for
};
/** The bytes of units in the byte order of the machine. */
template <class Unit>
std::string bytesOf(std::basic_string<Unit> const& units)
{
    return {reinterpret_cast<char const*>(units.data()), units.size() * sizeof(Unit)};
}

std::vector<Sample> const SAMPLES = {
    {"windows-1252", KX7CS_WCP1252, "caf\xE9 \x80. ", Kind::ONE_SET},
    {"code page 932", KX7CS_WCP932, "a\x82\xA0\xB1 ", Kind::ANY_SET},
    {"Big5", KX7CS_BIG5, "a\xA4\xA4\xC6\x7E ", Kind::ANY_SET},
    {"Shift_JIS-2004", KX7CS_SJIS0213, "a\x82\xA0 ", Kind::ANY_SET},
    {"EUC-KR", KX7CS_EUC_KR, "a\xB0\xA1 ", Kind::ANY_SET},
    {"EUC-JP", KX7CS_EUC_JP, "a\xA4\xA2\x8E\xB1 ", Kind::ANY_SET},
    {"GB 18030", KX7CS_GB18030, "a\xD6\xD0\x94\x39\xFC\x36 ", Kind::ANY_SET},
    {"UTF-8", KX7CS_UTF8, "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80 ", Kind::ONE_SET},
    {"UTF-8, broken", KX7CS_UTF8, "\xC3 \xE4\xB8 \xF0\x9F\x98 \xFF a", Kind::ONE_SET},
    {"UTF-16 escape", KX7CS_UTF16ESC, "aU+4E2D ", Kind::ANY_SET},
    {"UTF-16", KX7CS_UTF16, bytesOf<char16_t>(u"a\xE9\x4E2D\xD83D\xDE00 "), Kind::LAYER},
    {"UTF-16, broken", KX7CS_UTF16, bytesOf<char16_t>(u"plain text a\xDE00\x4E2D\xD83D "), Kind::LAYER},
    {"UTF-32", KX7CS_UTF32, bytesOf<char32_t>(U"a\xE9\x4E2D\U0001F600 "), Kind::LAYER},
    {"UTF-32, broken", KX7CS_UTF32, bytesOf<char32_t>(U"plain text \x110000\x4E2D "), Kind::LAYER},
    {"Big5, broken", KX7CS_BIG5, "plain text \xA4 \xFF\xA4\xA4\x80", Kind::LAYER},
};

/** 64 MiB as texts of one size each, what becomes of each in its own place. */
class Corpus {
public:
    Corpus(Sample const& sample, size_t textBytes)
        : charSet(sample.charSet), capacity(static_cast<unsigned int>(3 * textBytes))
    {
        std::string text;
        while (text.size() + sample.bytes.size() < textBytes)
            text += sample.bytes;
        kx7::Units const one = kx7::decode(text, sample.charSet, {kx7::ErrorPolicy::REPLACE});
        std::vector<unsigned short> oneUnits(one.text.begin(), one.text.end());
        if (sample.charSet == KX7CS_UTF16) {  // whose broken units no decoder gives
            oneUnits.resize(text.size() / 2);
            memcpy(oneUnits.data(), text.data(), text.size());
        }
        oneUnits.push_back(0);
        // A part of a list for every 4,096 units.
        for (size_t at = 4095; at + 1 < oneUnits.size(); at += 4096)
            oneUnits[at] = ';';
        for (size_t n = 0; n < TOTAL / textBytes; ++n) {
            bytes.push_back(text);
            units.push_back(oneUnits);
            strings.emplace_back(oneUnits.data());
            others.emplace_back(oneUnits.data());
            lists.push_back(strings.back().split(static_cast<unsigned short>(';')));
        }
    }

    KX7CharSet charSet;
    unsigned int capacity;  ///< bytes that a result may have
    std::vector<std::string> bytes;
    std::vector<std::vector<unsigned short>> units;
    std::vector<KX7UString> strings;
    std::vector<KX7UString> others;
    std::vector<KX7UStringList> lists;
    std::vector<std::unique_ptr<KX7UString>> made;  ///< built where they stay
    std::vector<std::unique_ptr<KX7UStringList>> madeLists;
    std::vector<std::u16string> madeUnits;
    std::vector<std::string> madeBytes;

    char* out(size_t i) const
    {
        static std::vector<char> dest(3 * TOTAL + 8);
        return dest.data() + i * capacity;
    }
    unsigned char* outUTF8(size_t i) const { return reinterpret_cast<unsigned char*>(out(i)); }
    unsigned short* outUnits(size_t i) const { return reinterpret_cast<unsigned short*>(out(i)); }
    unsigned char const* asUTF8(size_t i) const { return reinterpret_cast<unsigned char const*>(bytes[i].c_str()); }
    int size() const { return static_cast<int>(capacity - 8); }
    int sizeInUnits() const { return static_cast<int>(capacity / 2 - 8); }
    KX7CharSetConverter& converter() const { return *KX7CharSetConverter::getConverter(charSet); }
};

// Read by nobody; keeps results that would otherwise be left out.
volatile unsigned int sink = 0;

using C = Corpus;

struct Row {
    char const* name;
    Kind kind;
    void (*run)(C& c, size_t i);  ///< of the text with that number
};

kx7::Options const REPLACE = {kx7::ErrorPolicy::REPLACE};

std::u16string_view unitsOf(C const& c, size_t i)
{
    return {reinterpret_cast<char16_t const*>(c.units[i].data()), c.units[i].size() - 1};
}

/** All of `source` in pieces that end anywhere. */
template <class Stream, class Source, class Unit>
void convertInPieces(Stream stream, kx7::Span<Source> source, kx7::Span<Unit> dest)
{
    constexpr size_t PIECE = 65521;
    while (!source.empty()) {
        size_t const size = std::min(source.size(), PIECE);
        kx7::StreamResult const step = stream.convert({source.data(), size}, dest, size == source.size());
        source = source.after(step.consumed);
        dest = dest.after(step.written);
        if (step.status != kx7::Status::DONE)
            abort();
    }
    sink = static_cast<unsigned int>(stream.errorCount());
}

/** Goes on after each error. */
template <class View>
void validateOn(View text, kx7::Validity (*validate)(View))
{
    unsigned int errors = 0;
    for (kx7::Validity found = validate(text); !found; found = validate(text)) {
        text.remove_prefix(found.offset + found.length);
        ++errors;
    }
    sink = errors;
}

unsigned short const ABSENT[] = {'a', 0x7B, 0};

Row const ROWS[] = {
    {"LocalToUTF8", Kind::ANY_SET,
     [](C& c, size_t i) { sink = LocalToUTF8(c.outUTF8(i), c.bytes[i].c_str(), c.size(), c.charSet); }},
    {"LocalToUTF16", Kind::ANY_SET,
     [](C& c, size_t i) { sink = LocalToUTF16(c.outUnits(i), c.bytes[i].c_str(), c.sizeInUnits(), c.charSet); }},
    {"UTF8ToLocal", Kind::ANY_SET,
     [](C& c, size_t i) { sink = UTF8ToLocal(c.out(i), c.asUTF8(i), c.size(), c.charSet); }},
    {"UTF16ToLocal", Kind::ANY_SET,
     [](C& c, size_t i) { sink = UTF16ToLocal(c.out(i), c.units[i].data(), c.size(), c.charSet); }},
    {"GetNumUnits", Kind::ANY_SET, [](C& c, size_t i) { sink = GetNumUnits(c.bytes[i].c_str(), c.charSet); }},
    {"GetNumBytes", Kind::ANY_SET, [](C& c, size_t i) { sink = GetNumBytes(c.units[i].data(), c.charSet); }},
    {"toUTF16, stopping", Kind::ANY_SET,
     [](C& c, size_t i) {
         sink = c.converter().toUTF16(c.outUnits(i), c.bytes[i].c_str(), c.capacity / 2 - 8, ILLCHAR_STOP, nullptr, -1);
     }},
    {"fromUTF16, escapes", Kind::ANY_SET,
     [](C& c, size_t i) {
         sink = c.converter().fromUTF16(c.out(i), c.units[i].data(), c.capacity - 8, ILLCHAR_ESCAPE, nullptr);
     }},
    {"toUTF8", Kind::ONE_SET,
     [](C& c, size_t i) {
         sink = c.converter().toUTF8(c.outUTF8(i), c.bytes[i].c_str(), c.capacity - 8, ILLCHAR_REPLACE, nullptr);
     }},
    {"fromUTF8", Kind::ONE_SET,
     [](C& c, size_t i) {
         sink = c.converter().fromUTF8(c.out(i), c.asUTF8(i), c.capacity - 8, ILLCHAR_REPLACE, nullptr);
     }},
    {"UTF16ToUTF8", Kind::ONE_SET,
     [](C& c, size_t i) { sink = UTF16ToUTF8(c.outUTF8(i), c.units[i].data(), c.capacity - 8); }},
    {"UTF8ToUTF16", Kind::ONE_SET,
     [](C& c, size_t i) { sink = UTF8ToUTF16(c.outUnits(i), c.asUTF8(i), c.capacity / 2 - 8); }},
    {"LocalPathToUTF8", Kind::ONE_SET,
     [](C& c, size_t i) { sink = LocalPathToUTF8(c.outUTF8(i), c.bytes[i].c_str(), c.size()); }},
    {"UTF8ToLocalPath", Kind::ONE_SET, [](C& c, size_t i) { sink = UTF8ToLocalPath(c.out(i), c.asUTF8(i), c.size()); }},
    {"KX7CharSetWStrlen", Kind::ONE_SET, [](C& c, size_t i) { sink = KX7CharSetWStrlen(c.units[i].data()); }},
    {"KX7CharSetWStrEqual", Kind::ONE_SET,
     [](C& c, size_t i) {
         sink = static_cast<unsigned int>(KX7CharSetWStrEqual(c.units[i].data(), c.others[i].data()));
     }},
    {"string from bytes", Kind::ONE_SET,
     [](C& c, size_t i) { c.made.emplace_back(new KX7UString(c.bytes[i].c_str(), c.charSet)); }},
    {"string from units", Kind::ONE_SET,
     [](C& c, size_t i) { c.made.emplace_back(new KX7UString(c.units[i].data())); }},
    {"string copied", Kind::ONE_SET, [](C& c, size_t i) { c.made.emplace_back(new KX7UString(c.strings[i])); }},
    {"string assigned", Kind::ONE_SET, [](C& c, size_t i) { c.others[i] = c.strings[i]; }},
    {"string toUpper", Kind::ONE_SET, [](C& c, size_t i) { c.others[i].toUpper(); }},
    {"string toLower", Kind::ONE_SET, [](C& c, size_t i) { c.others[i].toLower(); }},
    {"string trim", Kind::ONE_SET, [](C& c, size_t i) { c.others[i].trim(); }},
    {"string compare", Kind::ONE_SET,
     [](C& c, size_t i) { sink = static_cast<unsigned int>(c.strings[i].compare(c.others[i])); }},
    {"string compareNoCase", Kind::ONE_SET,
     [](C& c, size_t i) { sink = static_cast<unsigned int>(c.strings[i].compareNoCase(c.others[i])); }},
    {"string find unit", Kind::ONE_SET, [](C& c, size_t i) { sink = c.strings[i].find(ABSENT[1]); }},
    {"string find text", Kind::ONE_SET, [](C& c, size_t i) { sink = c.strings[i].find(KX7UString(ABSENT)); }},
    {"string rfind unit", Kind::ONE_SET,
     [](C& c, size_t i) { sink = c.strings[i].rfind(ABSENT[1], c.strings[i].length() - 1); }},
    {"string rfind text", Kind::ONE_SET, [](C& c, size_t i) { sink = c.strings[i].rfind(KX7UString(ABSENT)); }},
    {"string mid", Kind::ONE_SET, [](C& c, size_t i) { c.made.emplace_back(new KX7UString(c.strings[i].mid(7))); }},
    {"string +", Kind::ONE_SET,
     [](C& c, size_t i) { c.made.emplace_back(new KX7UString(c.strings[i] + c.others[i])); }},
    {"string replace", Kind::ONE_SET, [](C& c, size_t i) { c.others[i].replace(1, 1, KX7UString(ABSENT), 0); }},
    {"string erase", Kind::ONE_SET, [](C& c, size_t i) { c.others[i].erase(1, 1); }},
    {"string c_str", Kind::ONE_SET,
     [](C& c, size_t i) { sink = c.others[i].c_str(KX7CS_UTF8) && c.others[i].c_str(KX7CS_UTF16ESC); }},
    {"string numChars", Kind::ONE_SET, [](C& c, size_t i) { sink = c.strings[i].numChars(); }},
    {"string split", Kind::ONE_SET,
     [](C& c, size_t i) {
         c.madeLists.emplace_back(new KX7UStringList(c.strings[i].split(static_cast<unsigned short>(';'))));
     }},
    {"list combine", Kind::ONE_SET,
     [](C& c, size_t i) { c.made.emplace_back(new KX7UString(c.lists[i].combine(KX7UString(ABSENT)))); }},
    {"decode", Kind::LAYER,
     [](C& c, size_t i) { c.madeUnits.push_back(kx7::decode(c.bytes[i], c.charSet, REPLACE).text); }},
    {"encode", Kind::LAYER,
     [](C& c, size_t i) { c.madeBytes.push_back(kx7::encode(unitsOf(c, i), c.charSet, REPLACE).text); }},
    {"transcode", Kind::LAYER,
     [](C& c, size_t i) { c.madeBytes.push_back(kx7::transcode(c.bytes[i], c.charSet, KX7CS_UTF8, REPLACE).text); }},
    {"Decoder", Kind::ONE_SET,
     [](C& c, size_t i) {
         convertInPieces(kx7::Decoder(c.charSet, REPLACE), kx7::Span<char const>(c.bytes[i]),
                         kx7::Span<char16_t>(reinterpret_cast<char16_t*>(c.out(i)), c.capacity / 2));
     }},
    {"Encoder", Kind::ONE_SET,
     [](C& c, size_t i) {
         convertInPieces(kx7::Encoder(c.charSet, REPLACE), kx7::Span<char16_t const>(unitsOf(c, i)),
                         kx7::Span<char>(c.out(i), c.capacity));
     }},
    {"Transcoder", Kind::ONE_SET,
     [](C& c, size_t i) {
         convertInPieces(kx7::Transcoder(c.charSet, KX7CS_UTF8, REPLACE), kx7::Span<char const>(c.bytes[i]),
                         kx7::Span<char>(c.out(i), c.capacity));
     }},
    {"validateUtf8", Kind::ONE_SET,
     [](C& c, size_t i) { validateOn(std::string_view(c.bytes[i]), kx7::validateUtf8); }},
    {"validateUtf16", Kind::ONE_SET,
     [](C& c, size_t i) {
         validateOn(unitsOf(c, i), static_cast<kx7::Validity (*)(std::u16string_view)>(kx7::validateUtf16));
     }},
    {"list copied", Kind::ONE_SET, [](C& c, size_t i) { c.madeLists.emplace_back(new KX7UStringList(c.lists[i])); }},
};

/** What memory itself takes: the standard library measures terminated text and copies it into memory from the heap. */
Row const CONTROL = {"std::string", Kind::ONE_SET,
                     [](C& c, size_t i) { c.madeBytes.emplace_back(c.bytes[i].c_str()); }};

using Times = std::array<double, SIZES>;

/**
 * The greatest growth from smaller sizes to the next, as for one text. A dip among the smaller ones is no growth, nor
 * is a bump that some larger size does not have.
 */
double growthOf(Times const& times)
{
    double growth = 0;
    for (size_t i = 1; i < SIZES; ++i)
        growth = std::max(growth, 2 * *std::min_element(times.begin() + i, times.end()) /
                                      *std::max_element(times.begin(), times.begin() + i));
    return growth;
}

/** A row with a sample, and how it has done so far. */
struct Measured {
    Row const* row;
    Times least;  ///< seconds for 64 MiB, of all rounds
    int rounds = 0;

    explicit Measured(Row const& measured) : row(&measured) { least.fill(1e9); }

    bool isSlow(Measured const& control) const
    {
        return growthOf(least) > MOST_GROWTH * std::max(1.0, growthOf(control.least) / 2);
    }

    /** The texts of size `k`, once. */
    void measure(Corpus& corpus, size_t k)
    {
        corpus.made.reserve(corpus.bytes.size());
        corpus.madeLists.reserve(corpus.bytes.size());
        corpus.madeUnits.reserve(corpus.bytes.size());
        corpus.madeBytes.reserve(corpus.bytes.size());
        double const start = processorTime();
        for (size_t i = 0; i < corpus.bytes.size(); ++i)
            row->run(corpus, i);
        least[k] = std::min(least[k], processorTime() - start);
        corpus.made.clear();
        corpus.madeLists.clear();
        corpus.madeUnits.clear();
        corpus.madeBytes.clear();
    }

    void print(char const* verdict, Sample const& sample) const
    {
        printf("%-7s %-28s %-16s at most %.2f times, %5.0f MB/s, %d rounds\n", verdict, row->name, sample.name,
               growthOf(least), 64.0 * 1.048576 / least[SIZES - 1], rounds);
    }
};

/**
 * Measures rows with a sample, and the control. The texts of each size are there by themselves: they lie in the same
 * memory then, some of which a virtual machine may have made slower than other.
 */
void measure(Sample const& sample, std::vector<Measured>& rows, Measured& control)
{
    std::vector<Measured*> slow;
    for (Measured& row : rows)
        slow.push_back(&row);
    for (int pass = 0; pass < PASSES && !slow.empty(); ++pass) {
        slow.push_back(&control);
        for (size_t k = 0; k < SIZES; ++k) {
            Corpus corpus(sample, MIB << k);
            for (Measured* const row : slow)
                for (int round = 0; round < ROUNDS; ++round)
                    row->measure(corpus, k);
        }
        for (Measured* const row : slow)
            row->rounds += ROUNDS;
        slow.pop_back();
        slow.erase(
            std::remove_if(slow.begin(), slow.end(), [&control](Measured const* row) { return !row->isSlow(control); }),
            slow.end());
    }
}

}  // namespace

int main(int argc, char** argv)
{
    // Small pages of the largest texts take a fifth longer on some virtual machines. The C library reads this as it
    // starts.
    constexpr char const LARGE_PAGES[] = "glibc.malloc.hugetlb=1";
    if (!getenv("GLIBC_TUNABLES") && setenv("GLIBC_TUNABLES", LARGE_PAGES, 1) == 0)
        execv("/proc/self/exe", argv);
    // The allocator keeps what it has: pages that come and go with the largest texts are no matter of the library.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
    mallopt(M_TOP_PAD, 1 << 28);
    int failures = 0;
    int held = 0;
    for (Sample const& sample : SAMPLES) {
        if (argc > 2 && !strstr(sample.name, argv[2]))
            continue;
        std::vector<Measured> rows;
        for (Row const& row : ROWS)
            if (sample.first <= row.kind && (argc < 2 || strstr(row.name, argv[1])))
                rows.emplace_back(row);
        if (rows.empty())
            continue;
        Measured control(CONTROL);
        measure(sample, rows, control);
        control.print("control", sample);
        for (Measured const& row : rows) {
            bool const isSlow = row.isSlow(control);
            if (isSlow)
                for (double const time : row.least)
                    printf("    %.1f ms\n", 1e3 * time);
            row.print(isSlow ? "FAILED" : "ok", sample);
            ++held;
            failures += isSlow ? 1 : 0;
        }
        fflush(stdout);
    }
    printf("%d rows, %d too slow\n", held, failures);
    return failures == 0 && held != 0 ? 0 : 1;
}
