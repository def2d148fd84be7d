// kx7text tests - loads and unloads a library that converts text, over and over: reload LIBRARY TIMES [DEPENDENCY].
//
// LIBRARY is the conversion library itself or one that uses it, DEPENDENCY what has to leave memory with it. The
// program is linked with neither.
#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "kx7/charset/KX7CharSet.h"

namespace {

[[noreturn]] void fail(char const* what, char const* detail)
{
    fprintf(stderr, "reload: %s: %s\n", what, detail ? detail : "");
    exit(1);
}

template <class Function>
Function* functionOf(void* library, char const* name)
{
    return reinterpret_cast<Function*>(dlsym(library, name));
}

/** One character set for each way of building tables. */
KX7CharSet const CHAR_SETS[] = {KX7CS_WCP1252, KX7CS_WCP932, KX7CS_SJIS0213, KX7CS_EUC_KR, KX7CS_EUC_JP, KX7CS_GB18030};
int const CHAR_SET_COUNT = sizeof CHAR_SETS / sizeof *CHAR_SETS;

void convert(void* library, KX7CharSet cs)
{
    if (auto* const isRight = functionOf<int()>(library, "staticUserIsRight")) {
        if (!isRight())
            fail("conversion in a library's static object", "wrong");
        return;
    }
    auto* const toUTF8 = functionOf<decltype(LocalToUTF8)>(library, "LocalToUTF8");
    auto* const fromUTF8 = functionOf<decltype(UTF8ToLocal)>(library, "UTF8ToLocal");
    if (!toUTF8 || !fromUTF8)
        fail("dlsym", dlerror());
    unsigned char utf8[16];
    char local[16];
    if (toUTF8(utf8, "\xD6\xDF", sizeof utf8, KX7CS_ISO_8859_5) != 4 || memcmp(utf8, u8"\u0436\u043F", 5) != 0)
        fail("LocalToUTF8", "wrong");
    if (fromUTF8(local, utf8, sizeof local, cs) == 0)
        fail("UTF8ToLocal", "nothing");
    if (toUTF8(utf8, "abc", sizeof utf8, cs) != 3 || memcmp(utf8, "abc", 4) != 0)
        fail("LocalToUTF8", "wrong");
}

void loadOnce(char const* path, char const* dependency, KX7CharSet cs)
{
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library)
        fail("dlopen", dlerror());
    convert(library, cs);
    if (dlclose(library) != 0)
        fail("dlclose", dlerror());
    for (char const* const gone : {path, dependency})
        if (gone && dlopen(gone, RTLD_NOW | RTLD_NOLOAD))
            fail("still loaded after dlclose", gone);
}

struct Memory {
    size_t allocated;
    size_t residentPages;
    int mappings;
};

Memory memoryOfProcess()
{
    Memory memory = {};
    memory.allocated = mallinfo2().uordblks;
    if (FILE* const statm = fopen("/proc/self/statm", "r")) {
        if (fscanf(statm, "%*u %zu", &memory.residentPages) != 1)
            fail("fscanf", "statm");
        fclose(statm);
    }
    if (FILE* const maps = fopen("/proc/self/maps", "r")) {
        for (int c = getc(maps); c != EOF; c = getc(maps))
            memory.mappings += c == '\n';
        fclose(maps);
    }
    return memory;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    char const* const dependency = argc > 3 ? argv[3] : nullptr;
    int const times = atoi(argv[2]);
    for (int i = 0; i < 200; ++i)  // until the loader's own tables have nearly their size
        loadOnce(argv[1], dependency, CHAR_SETS[i % CHAR_SET_COUNT]);
    Memory const before = memoryOfProcess();
    for (int i = 0; i < times; ++i)
        loadOnce(argv[1], dependency, CHAR_SETS[i % CHAR_SET_COUNT]);
    Memory const after = memoryOfProcess();
    printf("allocated %zu then %zu bytes, resident %zu then %zu pages, %d then %d mappings\n", before.allocated,
           after.allocated, before.residentPages, after.residentPages, before.mappings, after.mappings);
#ifndef KX7_SANITIZED  // sanitizers keep what was freed
    size_t const oneBlockEachTime = 16 * static_cast<size_t>(times);
    size_t const pagesOfOneMiB = (size_t{1} << 20) / static_cast<size_t>(sysconf(_SC_PAGESIZE));
    if (after.allocated >= before.allocated + oneBlockEachTime || after.mappings > before.mappings ||
        after.residentPages > before.residentPages + pagesOfOneMiB)
        fail("memory", "grows");
#endif
    return 0;
}
