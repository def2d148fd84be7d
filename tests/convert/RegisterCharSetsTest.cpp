// kx7text tests - the sets of kx7::web in the registry. What is registered stays so: each test in a process of its own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/convert.h"
#include "kx7/converters/KX7CharSetConverterSBCS.h"

namespace {

/** Ends the process of a test. */
[[noreturn]] void finish(bool isRight)
{
    std::_Exit(isRight ? EXIT_SUCCESS : EXIT_FAILURE);
}

#define EXPECT_IN_ITS_OWN_PROCESS(call) EXPECT_EXIT(finish(call), testing::ExitedWithCode(EXIT_SUCCESS), "")

/** The published functions convert every byte and text of each set as the layer does, and have its name. */
bool publishedFunctionsServeEachSet()
{
    kx7::registerCharSets();
    for (KX7CharSet const charSet : kx7::web::ALL) {
        char const* const name = kx7::charSetInfo(charSet)->name;
        if (strcmp(KX7CharSetToString(charSet), name) != 0 || KX7CharSetFromString(name) != charSet)
            return false;
        std::string every;
        for (unsigned int byte = 1; byte < 0x100; ++byte)
            every += static_cast<char>(byte);
        kx7::Options const replacing = {kx7::ErrorPolicy::REPLACE};
        std::u16string const expected = kx7::decode(every, charSet, replacing).text;
        std::string const expectedUtf8 = kx7::transcode(every, charSet, KX7CS_UTF8, replacing).text;

        unsigned short units[256];
        unsigned char utf8[1024];
        char back[256];
        if (LocalToUTF16(units, every.c_str(), 256, charSet) != expected.size() ||
            std::u16string(units, units + expected.size()) != expected ||
            KX7CharSetConverter::getConverter(charSet)->getNumUnits(every.c_str(), 255) != expected.size() ||
            LocalToUTF8(utf8, every.c_str(), sizeof utf8, charSet) != expectedUtf8.size() ||
            std::string(utf8, utf8 + expectedUtf8.size()) != expectedUtf8)
            return false;
        std::string const bytes = kx7::encode(expected, charSet, {kx7::ErrorPolicy::REPLACE, U'?'}).text;
        if (UTF16ToLocal(back, units, 256, charSet) != bytes.size() || back != bytes ||
            UTF8ToLocal(back, utf8, 256, charSet) != bytes.size() || back != bytes ||
            KX7UString(every.c_str(), charSet) != KX7UString(units))
            return false;
    }
    return true;
}

/** The layer converts as it did, and another call changes nothing. */
bool theLayerStaysTheSame()
{
    for (int i = 0; i < 3; ++i) {
        if (kx7::decode("\x8F\xE0", kx7::web::IBM866).text != u"\x41F\x440" ||
            kx7::decode("\xAA", kx7::web::WINDOWS_1253).isLossless() ||
            kx7::findCharSet("windows-1253") != kx7::web::WINDOWS_1253 ||
            kx7::decode("\xAA", KX7CS_WCP1253).text != u"\xAA" || !kx7::hasConverter(kx7::web::X_MAC_CYRILLIC))
            return false;
        kx7::registerCharSets();
    }
    return true;
}

/** A converter of the program's own stays, in the layer too. */
bool whatIsRegisteredGoesFirst(bool isBefore)
{
    static KX7CharSetConverterSBCS own("mine", kx7::web::IBM866);
    if (isBefore)
        kx7::registerCharSets();
    KX7CharSetConverter* const first = KX7CharSetConverter::getConverter(kx7::web::IBM866);
    g_oCnvtMgr.insert(kx7::web::IBM866, &own, true);
    kx7::registerCharSets();
    KX7CharSetConverter* const found = KX7CharSetConverter::getConverter(kx7::web::IBM866);
    bool const isWhole = kx7::decode("\x8F", kx7::web::IBM866).isLossless();
    return isBefore ? found == first && isWhole : found == &own && !isWhole;
}

TEST(RegisterCharSetsDeathTest, PublishedFunctionsServeEachSet)
{
    EXPECT_IN_ITS_OWN_PROCESS(publishedFunctionsServeEachSet());
}

TEST(RegisterCharSetsDeathTest, TheLayerStaysTheSame)
{
    EXPECT_IN_ITS_OWN_PROCESS(theLayerStaysTheSame());
}

TEST(RegisterCharSetsDeathTest, AConverterThatIsRegisteredFirstStays)
{
    EXPECT_IN_ITS_OWN_PROCESS(whatIsRegisteredGoesFirst(false));
    EXPECT_IN_ITS_OWN_PROCESS(whatIsRegisteredGoesFirst(true));
}

}  // namespace
