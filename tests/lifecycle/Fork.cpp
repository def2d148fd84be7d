// kx7text tests - a process that forks while its threads build tables: every child converts with every set at once.
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/converters/KX7CharSetConverterDBCS.h"
#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/MappingLists.h"
#include "kx7/text/KX7UCharTable.h"

namespace {

constexpr int FORKS = 100;
constexpr int LOADERS = 3;

/** Converters whose tables are not built yet, again and again. */
struct Fresh {
    KX7CharSetConverterSBCS singleByte{oCP1252map, KX7CS_WCP1252};
    KX7CharSetConverterDBCS doubleByte{oCP932map, oCP932Type, KX7CS_WCP932};

    bool converts()
    {
        unsigned short units[4];
        return singleByte.toUTF16(units, "\x80", 3, ILLCHAR_REPLACE, nullptr, -1) == 1 && units[0] == 0x20AC &&
               doubleByte.toUTF16(units, "\x82\xA0", 3, ILLCHAR_REPLACE, nullptr, -1) == 1 && units[0] == 0x3042;
    }
};

// The one that is being loaded as the process forks, kept alive until no child needs it.
std::shared_ptr<Fresh> current = std::make_shared<Fresh>();
std::atomic<bool> ending{false};

void load()
{
    while (!ending) {
        std::shared_ptr<Fresh> const mine = std::make_shared<Fresh>();
        std::atomic_store(&current, mine);
        if (!mine->converts())
            _exit(2);
    }
}

/** Waits a few seconds for the child, which would otherwise hang for ever. */
int statusOf(pid_t child)
{
    for (int waited = 0; waited < 20000; ++waited) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child)
            return status;
        usleep(1000);
    }
    return -1;
}

}  // namespace

int main()
{
    std::vector<std::thread> threads;
    for (int i = 0; i < LOADERS; ++i)
        threads.emplace_back(load);
    int failures = 0;
    for (int i = 0; i < FORKS && failures == 0; ++i) {
        std::shared_ptr<Fresh> const shared = std::atomic_load(&current);
        pid_t const child = fork();
        if (child == 0) {
            alarm(15);  // ended by a signal: it hangs
            bool const right = shared->converts() && strcmp(KX7CharSetToString(KX7CS_UTF8), "KX7CS_UTF8") == 0;
            _exit(right ? 0 : 1);
        }
        int const status = statusOf(child);
        if (status != 0) {
            fprintf(stderr, "child %d: status %d\n", i, status);
            ++failures;
        }
    }
    ending = true;
    for (std::thread& thread : threads)
        thread.join();
    return failures == 0 ? 0 : 1;
}
