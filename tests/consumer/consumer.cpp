// kx7text tests - a program that uses each part of the library as an installed one, and fails where a result is wrong.
//
// C++11, and C++17 where the compiler speaks it, by the installed headers alone. What it names of the library has to be
// exported: entry points, objects, inline functions' callees, and what a class derived from a converter needs.
#include <kx7/kx7.h>

#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <typeinfo>

#if __cplusplus >= 201703L
#include <kx7/convert.h>
#include <kx7/text/KX7UStringStd.h>
#endif

namespace {

int failures = 0;

void check(bool isRight, char const* what)
{
    if (isRight)
        return;
    std::fprintf(stderr, "consumer: %s: wrong\n", what);
    ++failures;
}

void useEntryPoints()
{
    unsigned char utf8[64];
    check(LocalToUTF8(utf8, "caf\xE9", sizeof utf8, KX7CS_WCP1252) == 5 && memcmp(utf8, "caf\xC3\xA9", 6) == 0,
          "LocalToUTF8");
    unsigned short utf16[8];
    check(LocalToUTF16(utf16, "\x82\xA0", 8, KX7CS_WCP932) == 1 && utf16[0] == 0x3042, "LocalToUTF16");
    char local[8];
    check(UTF16ToLocal(local, utf16, sizeof local, KX7CS_EUC_JP) == 2 && memcmp(local, "\xA4\xA2", 3) == 0,
          "UTF16ToLocal");
    check(GetNullCharSize(KX7CS_UTF32) == 4 && GetNumUnits("abc", KX7CS_UTF8) == 3, "sizes");
    check(KX7CharSetFromString(KX7CharSetToString(KX7CS_GB18030)) == KX7CS_GB18030, "names");
}

void useText()
{
    KX7UString text("Stra\xDF"
                    "e;Weg",
                    KX7CS_WCP1252);
    KX7UStringList parts = text.split(static_cast<unsigned short>(';'));
    check(parts.size() == 2 && parts.at(1) == KX7UString("Weg", KX7CS_UTF8), "split");
    check(strcmp(text.toUpper(true).c_str(KX7CS_UTF8), "STRA\xC3\x9F"
                                                       "E;WEG") == 0,
          "c_str");
    check(KX7UChar::toUpperCase(0xE9) == 0xC9 && KX7UChar(0x41u).isLetter(), "KX7UChar");
    std::istringstream words("one two");
    KX7UString word;
    words >> word;
    check(word.length() == 3 && KX7UString::npos == 0xFFFFFFFF, "operator>>");
#ifdef __cpp_exceptions
    bool isCaught = false;
    try {
        parts.at(2);
    }
    catch (std::out_of_range const&) {
        isCaught = true;
    }
    check(isCaught, "exception");
#endif
}

/** A converter of a caller's own: code page 1252 in lower case. */
class LowerCase : public KX7CharSetConverterSBCS {
public:
    LowerCase() : KX7CharSetConverterSBCS(MAP, static_cast<KX7CharSet>(70000)) {}

private:
    static unsigned short const MAP[];
};

unsigned short const LowerCase::MAP[] = {'A', 'a', 'B', 'b', 0, 0};

void useConverters()
{
    unsigned short utf16[8];
    bool isIllegal = false;
    KX7CharSetConverter* const converter = KX7CharSetConverter::getConverter(KX7CS_WCP1251);
    check(converter == &g_oConverterWCP1251, "getConverter");
#ifdef __cpp_rtti
    check(typeid(*converter) == typeid(KX7CharSetConverterSBCS) &&
              dynamic_cast<KX7CharSetConverterSBCS*>(converter) != nullptr,
          "type of a converter");
#endif
    check(converter->toUTF16(utf16, "\xE0", 7, ILLCHAR_STOP, &isIllegal, -1) == 1 && utf16[0] == 0x430, "toUTF16");

    static LowerCase lowerCase;
    g_oCnvtMgr.insert(static_cast<KX7CharSet>(70000), &lowerCase, true);
    check(LocalToUTF16(utf16, "AB", 8, static_cast<KX7CharSet>(70000)) == 2 && utf16[1] == 'b', "own converter");

    LookupTable<unsigned short> table;
    table.put(0x1234, 7);
    check(table.get(0x1234) == 7 && table.get(1) == 0 && LookupTable<unsigned short>::m_gNullTable[255] == 0,
          "LookupTable");
}

#if __cplusplus >= 201703L
void useWholeTexts()
{
    kx7::Units const text = kx7::decode("caf\xE9", KX7CS_WCP1252);
    check(text.isLossless() && text.text == u"caf\u00E9", "decode");
    kx7::Bytes const bytes = kx7::encode(u"\u20AC", KX7CS_ISO_8859_1, {kx7::ErrorPolicy::ESCAPE});
    check(bytes.text == "U+20AC" && bytes.errorCount == 1, "encode");

    kx7::Transcoder transcoder(KX7CS_UTF8, KX7CS_UTF16);
    char units[kx7::Transcoder::MINIMUM_CAPACITY];
    kx7::StreamResult const step = transcoder.convert(std::string_view("a"), {units, sizeof units}, true);
    check(step.status == kx7::Status::DONE && step.written == 2, "Transcoder");
    check(kx7::findCharSet("latin1") == KX7CS_ISO_8859_1 && !kx7::validateUtf8("\xC0\x80"), "labels and validation");
}
#endif

/** Converted while static objects are made. */
struct Early {
    unsigned int length;
    Early() : length(0)
    {
        unsigned char utf8[8];
        length = LocalToUTF8(utf8, "\xE9", sizeof utf8, KX7CS_ISO_8859_1);
    }
} const early;

}  // namespace

int main()
{
    check(early.length == 2, "conversion in a static object");
    useEntryPoints();
    useText();
    useConverters();
#if __cplusplus >= 201703L
    useWholeTexts();
#endif
    return failures == 0 ? 0 : 1;
}
