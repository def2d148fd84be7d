// kx7text tests - 64 MiB through every entry point, in a thread with a 256 KiB stack and without a heap allocation.
#include <pthread.h>
#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"

namespace {
std::atomic<bool> counting{false};
std::atomic<unsigned int> allocations{0};
}  // namespace

#ifndef KX7_SANITIZED  // they bring allocators of their own
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t size) noexcept
{
    allocations += counting;
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept
{
    allocations += counting;
    return __libc_calloc(count, size);
}
void* realloc(void* p, size_t size) noexcept
{
    allocations += counting;
    return __libc_realloc(p, size);
}
void* memalign(size_t alignment, size_t size) noexcept
{
    allocations += counting;
    return __libc_memalign(alignment, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept
{
    allocations += counting;
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** p, size_t alignment, size_t size) noexcept
{
    allocations += counting;
    *p = __libc_memalign(alignment, size);
    return *p ? 0 : ENOMEM;
}
void free(void* p) noexcept
{
    __libc_free(p);
}
}
#endif

namespace {

constexpr size_t SOURCE_BYTES = size_t{64} << 20;
constexpr size_t STACK_BYTES = size_t{256} << 10;

/** Zeros that cost nothing until they are touched. */
template <class T>
T* mapped(size_t count)
{
    void* const p =
        mmap(nullptr, count * sizeof(T), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED) {
        perror("mmap");
        exit(1);
    }
    return static_cast<T*>(p);
}

/** A text, and what it is in other encodings; sources and results repeat it. */
struct Sample {
    char const* name;
    KX7CharSet charSet;
    std::string local;
    std::string utf8;
    std::vector<unsigned short> units;
};
Sample const SAMPLES[] = {
    {"single-byte", KX7CS_WCP1252, "caf\xE9 \x80.", u8"caf\u00E9 \u20AC.", {'c', 'a', 'f', 0xE9, ' ', 0x20AC, '.'}},
    {"code page 932", KX7CS_WCP932, "a\x82\xA0\xB1", u8"a\u3042\uFF71", {'a', 0x3042, 0xFF71}},
    {"EUC-JP", KX7CS_EUC_JP, "a\xA4\xA2\x8E\xB1", u8"a\u3042\uFF71", {'a', 0x3042, 0xFF71}},
    {"EUC-KR", KX7CS_EUC_KR, "a\xB0\xA1", u8"a\uAC00", {'a', 0xAC00}},
    {"Shift_JIS-2004", KX7CS_SJIS0213, "a\x82\xA0", u8"a\u3042", {'a', 0x3042}},
    {"GB 18030", KX7CS_GB18030, "a\xD6\xD0\x94\x39\xFC\x36", u8"a\u4E2D\U0001F600", {'a', 0x4E2D, 0xD83D, 0xDE00}},
    {"UTF-8",
     KX7CS_UTF8,
     u8"a\u00E9\u4E2D\U0001F600",
     u8"a\u00E9\u4E2D\U0001F600",
     {'a', 0xE9, 0x4E2D, 0xD83D, 0xDE00}},
    {"UTF-16", KX7CS_UTF16, std::string("a\0\x2D\x4E", 4), u8"a\u4E2D", {'a', 0x4E2D}},
    {"UTF-32", KX7CS_UTF32, std::string("a\0\0\0\x00\xF6\1\0", 8), u8"a\U0001F600", {'a', 0xD83D, 0xDE00}},
    {"escapes", KX7CS_UTF16ESC, "aU+4E2D", u8"a\u4E2D", {'a', 0x4E2D}},
};

bool failed = false;

void expect(bool right, char const* function, Sample const& sample)
{
    if (!right) {
        fprintf(stderr, "%s, %s: wrong\n", function, sample.name);
        failed = true;
    }
}

/** `dest` holds `piece` so many times over, and a terminator. */
template <class T, class Piece>
bool repeats(T const* dest, Piece const& piece, size_t times)
{
    for (size_t i = 0; i < times; ++i, dest += piece.size())
        if (memcmp(dest, piece.data(), piece.size() * sizeof(T)) != 0)
            return false;
    return *dest == 0;
}

/** Writes a source: `piece`, `times` times, then zeros. Returns `times`. */
template <class T, class Piece>
size_t fill(T* source, Piece const& piece, size_t times)
{
    for (size_t i = 0; i < times; ++i)
        memcpy(source + i * piece.size(), piece.data(), piece.size() * sizeof(T));
    memset(source + times * piece.size(), 0, 64);
    return times;
}

/** How often 64 MiB hold `piece`. */
template <class Piece>
size_t timesIn64MiB(Piece const& piece)
{
    return SOURCE_BYTES / (piece.size() * sizeof(*piece.data())) + 1;
}

void convertAll()
{
    size_t const most = 3 * SOURCE_BYTES + 4096;
    auto* const bytes = mapped<char>(SOURCE_BYTES + 4096);
    auto* const units = mapped<unsigned short>(SOURCE_BYTES / 2 + 4096);
    auto* const dest = mapped<char>(most);
    auto* const destUTF8 = reinterpret_cast<unsigned char*>(dest);
    auto* const destUnits = reinterpret_cast<unsigned short*>(dest);
    auto const capacity = static_cast<int>(most);
    auto const unitCapacity = static_cast<int>(most / 2);

    for (Sample const& sample : SAMPLES) {
        KX7CharSet const cs = sample.charSet;
        // The text once, which builds the tables.
        fill(bytes, sample.local, 1);
        fill(units, sample.units, 1);
        unsigned int const unitsCounted = GetNumUnits(bytes, cs);
        LocalToUTF16(destUnits, bytes, unitCapacity, cs);
        UTF16ToLocal(dest, units, capacity, cs);
        counting = true;

        size_t times = fill(bytes, sample.local, timesIn64MiB(sample.local));
        unsigned int n = 0;
        if (GetNullCharSize(cs) == 1) {  // wide text would end at its first zero byte
            n = LocalToUTF8(destUTF8, bytes, capacity, cs);
            expect(n == times * sample.utf8.size() && repeats(dest, sample.utf8, times), "LocalToUTF8", sample);
        }
        if (cs != KX7CS_UTF16) {  // converts to nothing without a limit
            n = LocalToUTF16(destUnits, bytes, unitCapacity, cs);
            expect(n == times * sample.units.size() && repeats(destUnits, sample.units, times), "LocalToUTF16", sample);
        }
        expect(GetNumUnits(bytes, cs) == times * unitsCounted, "GetNumUnits", sample);

        times = fill(bytes, sample.utf8, timesIn64MiB(sample.utf8));
        auto const* const utf8 = reinterpret_cast<unsigned char const*>(bytes);
        n = UTF8ToLocal(dest, utf8, capacity, cs);
        expect(n == times * sample.local.size() && repeats(dest, sample.local, times), "UTF8ToLocal", sample);

        times = fill(units, sample.units, timesIn64MiB(sample.units));
        n = UTF16ToLocal(dest, units, capacity, cs);
        expect(n == times * sample.local.size() && repeats(dest, sample.local, times), "UTF16ToLocal", sample);
        expect(GetNumBytes(units, cs) == n, "GetNumBytes", sample);
        if (cs == KX7CS_UTF8) {  // what knows no other character set
            n = UTF16ToUTF8(destUTF8, units, static_cast<unsigned int>(capacity));
            expect(n == times * sample.utf8.size() && repeats(dest, sample.utf8, times), "UTF16ToUTF8", sample);
            expect(KX7CharSetWStrlen(units) == times * sample.units.size(), "KX7CharSetWStrlen", sample);
            memcpy(dest, units, (times * sample.units.size() + 1) * sizeof *units);
            expect(KX7CharSetWStrEqual(units, destUnits) == 1, "KX7CharSetWStrEqual", sample);
            destUnits[times * sample.units.size() - 1] ^= 1;
            expect(KX7CharSetWStrEqual(units, destUnits) == 0, "KX7CharSetWStrEqual", sample);
            times = timesIn64MiB(sample.utf8);
            n = UTF8ToUTF16(destUnits, utf8, static_cast<unsigned int>(unitCapacity));
            expect(n == times * sample.units.size() && repeats(destUnits, sample.units, times), "UTF8ToUTF16", sample);
        }

        counting = false;
    }
}

void* inThread(void*)
{
    convertAll();
    return nullptr;
}

/** What is counted is what the library would allocate with. */
bool countingWorks()
{
#ifndef KX7_SANITIZED
    counting = true;
    char* volatile const byNew = new char[100];
    delete[] byNew;
    void* volatile const byMalloc = malloc(1);
    free(byMalloc);
    counting = false;
    bool const works = allocations == 2;
    allocations = 0;
    return works;
#else
    return true;
#endif
}

}  // namespace

int main()
{
    if (!countingWorks()) {
        fprintf(stderr, "allocations are not seen\n");
        return 1;
    }
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstacksize(&attributes, STACK_BYTES) != 0 ||
        pthread_create(&thread, &attributes, inThread, nullptr) != 0) {
        perror("pthread_create");
        return 1;
    }
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    if (allocations != 0)
        fprintf(stderr, "%u allocations\n", allocations.load());
    return failed || allocations != 0 ? 1 : 0;
}
