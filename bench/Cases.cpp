// kx7text benchmarks - the cases: every character set with the texts that it can hold, lookup and loading.
#include "bench/Cases.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>

#include "bench/Report.h"
#include "bench/Texts.h"
#include "kx7/charset/Converters.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/MappingLists.h"

namespace kx7bench {

std::vector<Size> const SIZES = {
    {"16B", 16}, {"64B", 64}, {"4KiB", 4 << 10}, {"64KiB", 64 << 10}, {"1MiB", 1 << 20},
};

std::string CaseName::row() const
{
    std::string text = operation;
    for (std::string const* part : {&set, &script, &form})
        if (!part->empty())
            text += '/' + *part;
    return text;
}

std::string CaseName::full() const
{
    return size.empty() ? row() : row() + '/' + size;
}

namespace {

struct Subject {
    CharSet set;
    std::vector<char const*> scripts;
};

std::vector<Subject> subjects()
{
    std::vector<char const*> every;
    for (Script const& script : scripts())
        every.push_back(script.name);
    std::vector<char const*> const latin = {"ascii", "english", "french", "german"};
    std::vector<char const*> const wide = {"ascii", "cyrillic", "chinese", "emoji"};
    return {
        {{KX7CS_UTF8, "utf8", "UTF-8", "UTF-8"}, every},
        {{KX7CS_UTF16, "utf16", "UTF-16LE", "UTF-16LE"}, wide},
        {{KX7CS_UTF32, "utf32", "UTF-32LE", "UTF-32LE"}, wide},
        {{KX7CS_WCP1252, "1252", "ibm-5348_P100-1997", "CP1252"}, latin},
        {{KX7CS_WCP1251, "1251", "ibm-5347_P100-1998", "CP1251"}, {"cyrillic"}},
        {{KX7CS_KOI8R, "koi8r", "ibm-878_P100-1996", "KOI8-R"}, {"cyrillic"}},
        {{KX7CS_WCP1253, "1253", "ibm-5349_P100-1998", "CP1253"}, {"greek"}},
        {{KX7CS_WCP1255, "1255", "ibm-9447_P100-2002", "CP1255"}, {"hebrew"}},
        {{KX7CS_WCP1256, "1256", "ibm-9448_X100-2005", "CP1256"}, {"arabic"}},
        {{KX7CS_WCP874, "874", "ibm-874_P100-1995", "CP874"}, {"thai"}},
        {{KX7CS_ISO_8859_1, "8859-1", "ISO-8859-1", "ISO-8859-1"}, {"french"}},
        {{KX7CS_WCP932, "932", "ibm-942_P12A-1999", "IBM943"}, {"japanese"}},
        {{KX7CS_SHIFTJIS, "sjis", "ibm-943_P15A-2003", "SJIS"}, {"japanese"}},
        {{KX7CS_SJIS0213, "sjis2004", nullptr, "SHIFT_JISX0213"}, {"japanese"}},
        {{KX7CS_EUC_JP, "eucjp", "EUC-JP", "EUC-JP"}, {"japanese"}},
        {{KX7CS_WCP936, "936", "windows-936-2000", "GBK"}, {"chinese"}},
        {{KX7CS_EUC_CN, "euccn", "EUC-CN", "GB2312"}, {"chinese"}},
        {{KX7CS_GB18030, "gb18030", "gb18030", "GB18030"}, {"chinese", "korean", "emoji"}},
        {{KX7CS_WCP950, "950", "ibm-950_P110-1999", "BIG5"}, {"chinese"}},
        {{KX7CS_BIG5, "big5", "windows-950-2000", "BIG5"}, {"chinese"}},
        {{KX7CS_WCP949, "949", "ibm-949_P110-1999", "UHC"}, {"korean"}},
        {{KX7CS_EUC_KR, "euckr", "EUC-KR", "EUC-KR"}, {"korean"}},
    };
}

struct NamedOperation {
    Operation operation;
    char const* name;
};

NamedOperation const OPERATIONS[] = {
    {Operation::DECODE, "decode"},       {Operation::ENCODE, "encode"},       {Operation::TO_UTF8, "to-utf8"},
    {Operation::FROM_UTF8, "from-utf8"}, {Operation::NUM_UNITS, "num-units"}, {Operation::NUM_BYTES, "num-bytes"},
};

bool isCount(Operation operation)
{
    return operation == Operation::NUM_UNITS || operation == Operation::NUM_BYTES;
}

/** Whether an operation is of interest for a set and a size. */
bool isCase(Operation operation, KX7CharSet set, Size const& size)
{
    bool const throughUTF8 = operation == Operation::TO_UTF8 || operation == Operation::FROM_UTF8;
    // UTF-8 is the other end there; UTF-16 is not decoded without a source limit, which those functions do not give.
    if (throughUTF8 && (set == KX7CS_UTF8 || set == KX7CS_UTF16))
        return false;
    if (isCount(operation) && size.bytes < 4096)
        return false;
    return size.bytes != 64 << 10 || (set == KX7CS_UTF8 && !isCount(operation));
}

using Peers = std::map<std::string, std::unique_ptr<Peer>>;

Peers openPeers(CharSet const& set)
{
    Peers peers;
    for (char const* name : {"kx7", "icu", "iconv"})
        if (std::unique_ptr<Peer> peer = openPeer(name, set))
            peers[name] = std::move(peer);
    return peers;
}

/** The letters that every peer writes and reads alike. */
Script sharedLetters(Script const& script, Peers const& peers)
{
    Script shared = script;
    for (std::u32string& letters : shared.alphabets) {
        std::u32string kept;
        for (char32_t const c : letters) {
            std::u16string const text = c > 0xFFFF ? std::u16string{static_cast<char16_t>((c >> 10) + 0xD7C0),
                                                                    static_cast<char16_t>((c & 0x3FF) + 0xDC00)}
                                                   : std::u16string{static_cast<char16_t>(c)};
            std::string const bytes = peers.at("kx7")->encode(text);
            if (std::all_of(peers.begin(), peers.end(), [&](Peers::value_type const& peer) {
                    return peer.second->encode(text) == bytes && peer.second->decode(bytes) == text;
                }))
                kept += c;
        }
        letters = kept;
    }
    shared.alphabets.erase(std::remove_if(shared.alphabets.begin(), shared.alphabets.end(),
                                          [](std::u32string const& letters) { return letters.empty(); }),
                           shared.alphabets.end());
    return shared;
}

/** A text of as many units as give `size` bytes in the set, or nearly so. */
Sample makeSample(Script const& script, bool markup, size_t size, Peer& set, Peer& utf8)
{
    Sample sample;
    size_t units = size;
    do {
        sample.units = (markup ? markupText : denseText)(script, units, 1);
        sample.bytes = set.encode(sample.units);
        units = units * size / std::max<size_t>(sample.bytes.size(), 1);
    } while (sample.bytes.size() > size + size / 8);
    sample.byteCount = sample.bytes.size();
    sample.bytes.append(4, '\0');
    sample.utf8 = utf8.encode(sample.units);
    sample.pairs = static_cast<size_t>(
        std::count_if(sample.units.begin(), sample.units.end(), [](char16_t c) { return (c & 0xFC00) == 0xD800; }));
    return sample;
}

void visitSample(Sample const& sample, Operation operation, CaseName const& name, Peers const& peers,
                 Visit const& visit)
{
    size_t const size = sample.sourceSize(operation);
    Case c{name, size, {}, true};
    for (Peers::value_type const& peer : peers)
        if (peer.first != "iconv" || !isCount(operation))
            c.contenders.push_back(peer.second->contender(operation, sample));
    if (name.size == "1MiB" && !isCount(operation)) {
        void const* const source = sample.source(operation);
        c.contenders.push_back(contender("memcpy", [=] {
            memcpy(destination(), source, size);
            return size;
        }));
    }
    visit(c);
}

void conversions(Wanted const& wanted, std::function<void(std::string const&)> const& progress, Visit const& visit)
{
    std::unique_ptr<Peer> const utf8 = openPeer("icu", {KX7CS_UTF8, "utf8", "UTF-8", "UTF-8"});
    for (Subject const& subject : subjects()) {
        Peers const peers = openPeers(subject.set);
        for (char const* scriptName : subject.scripts) {
            Script const& script = scriptOf(scriptName);
            Script shared;
            for (bool const markup : {false, true}) {
                for (Size const& size : SIZES) {
                    Sample sample;
                    for (NamedOperation const& operation : OPERATIONS) {
                        CaseName const name{operation.name, subject.set.name, script.name, markup ? "markup" : "dense",
                                            size.name};
                        if (!isCase(operation.operation, subject.set.charSet, size) || !wanted(name.full()))
                            continue;
                        if (shared.alphabets.empty()) {
                            progress(std::string(subject.set.name) + ", " + script.name);
                            shared = sharedLetters(script, peers);
                            if (shared.alphabets.empty()) {
                                std::cerr << "kx7_bench: no letter is alike in " << name.full() << '\n';
                                exit(3);
                            }
                        }
                        if (sample.bytes.empty())
                            sample = makeSample(shared, markup, size.bytes, *peers.at("kx7"), *utf8);
                        visitSample(sample, operation.operation, name, peers, visit);
                    }
                }
            }
        }
    }
}

void lookUps(Wanted const& wanted, Visit const& visit)
{
    for (Subject const& subject : subjects()) {
        CaseName const name{"lookup", subject.set.name, "", "", ""};
        if (!wanted(name.full()))
            continue;
        Peers const peers = openPeers(subject.set);  // so that no peer loads its data in the loop
        Case c{name, 0, {}, false};
        for (Peers::value_type const& peer : peers)
            c.contenders.push_back(peer.second->lookUp());
        visit(c);
    }
}

/** Constructs a converter, makes it build its tables, and destroys it. */
struct Loader {
    char const* set;
    void (*load)();
};

Loader const LOADERS[] = {
    {"932", [] { KX7CharSetConverterDBCS(oCP932map, oCP932Type, KX7CS_WCP932).load(); }},
    {"936", [] { KX7CharSetConverterDBCS(oCP936map, oCP936Type, KX7CS_WCP936).load(); }},
    {"949", [] { KX7CharSetConverterDBCS(oCP949map, oCP949Type, KX7CS_WCP949).load(); }},
    {"950", [] { KX7CharSetConverterDBCS(oCP950map, oCP950Type, KX7CS_WCP950).load(); }},
    {"big5", [] { KX7CharSetConverterDBCS(oBIG5map, oBig5Type, KX7CS_BIG5).load(); }},
    {"sjis", [] { KX7CharSetConverterDBCS(oSHIFTJISmap, oCP932Type, KX7CS_SHIFTJIS).load(); }},
    {"euccn", [] { KX7CharSetConverterEUC_CN_KR(oGB2312map, KX7CS_EUC_CN).load(); }},
    {"euckr", [] { KX7CharSetConverterEUC_CN_KR(oKSX1001map, KX7CS_EUC_KR).load(); }},
    {"eucjp", [] { KX7CharSetConverterEUC_JP(oJIS0208map, oJIS0201map, oJIS0212map, KX7CS_EUC_JP).load(); }},
    {"sjis2004", [] { KX7CharSetConverterDBCSEx(oSJIS0213_2004map, oCP932Type, KX7CS_SJIS0213).load(); }},
    {"gb18030", [] { KX7CharSetConverterGB18030(oGBKmap, KX7CS_GB18030).load(); }},
};

struct FirstLoad {
    double seconds;
    long pageFaults;
};

long pageFaults()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

/** `load` in a process that has not loaded anything: all memory and all of the list are new to it. */
FirstLoad loadInNewProcess(void (*load)())
{
    int ends[2];
    if (pipe(ends) != 0)
        exit(3);
    pid_t const child = fork();
    if (child == 0) {
        // Once before, so that the pages of its own that the clock and the count need are there.
        (void)pageFaults();
        (void)std::chrono::steady_clock::now();
        long const before = pageFaults();
        auto const begin = std::chrono::steady_clock::now();
        load();
        std::chrono::duration<double> const taken = std::chrono::steady_clock::now() - begin;
        FirstLoad const first = {taken.count(), pageFaults() - before};
        _exit(write(ends[1], &first, sizeof first) == sizeof first ? 0 : 1);
    }
    close(ends[1]);
    FirstLoad first = {};
    if (child < 0 || read(ends[0], &first, sizeof first) != sizeof first)
        exit(3);
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return first;
}

/**
 * Memory that is freed stays with the process, so that loading once more meets no page for the first time: with its
 * defaults malloc would hand back the arrays of some sets and not those of others.
 */
void keepFreedMemory()
{
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
}

void loads(Wanted const& wanted, Visit const& visit)
{
    // The new processes first: they inherit what this one has touched.
    for (bool const inNewProcess : {true, false}) {
        if (!inNewProcess)
            keepFreedMemory();
        for (Loader const& loader : LOADERS) {
            CaseName const name{inNewProcess ? "load-first" : "load", loader.set, "", "", ""};
            if (!wanted(name.full()))
                continue;
            auto const load = loader.load;
            Contender kx7 = contender("kx7", [load] {
                load();
                return size_t{0};
            });
            if (inNewProcess) {
                kx7.manualTime = true;
                kx7.measure = [load](benchmark::State& state) {
                    long faults = 0;
                    for (auto step : state) {
                        (void)step;
                        FirstLoad const first = loadInNewProcess(load);
                        state.SetIterationTime(first.seconds);
                        faults += first.pageFaults;
                    }
                    state.counters[PAGE_FAULTS] = static_cast<double>(faults) / static_cast<double>(state.iterations());
                };
            }
            visit({name, 0, {kx7}, false});
        }
    }
}

}  // namespace

void forEachCase(Wanted const& wanted, std::function<void(std::string const&)> const& progress, Visit const& visit)
{
    progress("loading, lookup, text");
    loads(wanted, visit);
    lookUps(wanted, visit);
    forEachTextCase(wanted, visit);
    conversions(wanted, progress, visit);
}

}  // namespace kx7bench
