// kx7text tests - text converted before main and after it, by static objects of a program or of a shared library, and
// by threads as they end.
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"

namespace {

bool convertsRight()
{
    unsigned char utf8[16];
    char local[16];
    unsigned short units[4];
    KX7UString const s("\xD0\xD1", KX7CS_ISO_8859_5);
    KX7UString const inDefault("abc");
    return LocalToUTF8(utf8, "caf\xE9", sizeof utf8, KX7CS_WCP1252) == 5 &&
           strcmp(reinterpret_cast<char*>(utf8), "caf\xC3\xA9") == 0 &&
           UTF8ToLocal(local, utf8, sizeof local, KX7CS_ISO_8859_2) == 4 && strcmp(local, "caf\xE9") == 0 &&
           UTF8ToUTF16(units, utf8, 4) == 3 && units[2] == 'f' && units[3] == 0 && s.length() == 2 &&
           s.data()[0] == 0x430 && s.data()[1] == 0x431 && inDefault.length() == 3 &&
           KX7UChar::toUpperCase(0xFF) == 0x178 && KX7UChar::toLowerCase(0x178) == 0xFF &&
           KX7UChar::getCharClass(0x41) == 0x44 && KX7CharSetConverter::getConverter(KX7CS_UTF8) == &g_oConverterUTF8 &&
           g_oCnvtMgr.getConverter(KX7CS_ISO_8859_5) == &g_oConverterISO_8859_5;
}

/** Ends the process with a failure: too late for main to tell. */
void requireRight()
{
    if (!convertsRight())
        _exit(3);
}

struct AtBothEnds {
    AtBothEnds() : wasRight(convertsRight()) { atexit(requireRight); }
    ~AtBothEnds() { requireRight(); }
    bool wasRight;
};

/** What a thread does last. */
struct AtThreadEnd {
    ~AtThreadEnd() { requireRight(); }
    bool isUsed = false;
};

thread_local AtThreadEnd atThreadEnd;

#ifndef KX7_STATIC_USER_LIBRARY

/**
 * A thread that converts before main, during it and after it, until this object goes. Not in a library, whose unloading
 * would wait for the thread with the loader's lock, which the thread needs to end.
 */
struct Converting {
    Converting()
        : thread([this] {
              atThreadEnd.isUsed = true;
              do
                  requireRight();
              while (!ending);
          })
    {
    }
    ~Converting()
    {
        ending = true;
        thread.join();
    }
    std::atomic<bool> ending{false};
    std::thread thread;
};

Converting converting;

#endif

AtBothEnds const atBothEnds;
KX7UString const keptText("\x80", KX7CS_WCP1252);

bool startWasRight()
{
    return atBothEnds.wasRight && keptText.length() == 1 && keptText.data()[0] == 0x20AC;
}

}  // namespace

#ifdef KX7_STATIC_USER_LIBRARY

extern "C" int staticUserIsRight();
extern "C" int staticUserIsRight()
{
    return startWasRight() && convertsRight() ? 1 : 0;
}

#else

#ifdef KX7_WITH_STATIC_USER
extern "C" int staticUserIsRight();
#else
static int staticUserIsRight()
{
    return 1;
}
#endif

int main()
{
    atThreadEnd.isUsed = true;
    return startWasRight() && convertsRight() && staticUserIsRight() ? 0 : 1;
}

#endif
