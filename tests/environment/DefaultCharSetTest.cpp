// kx7text tests - the character set that is detected for an environment.
//
// It is settled when the library is loaded, so every question is put to a process of its own: the program given as the
// argument.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <string>

namespace {

std::string program;

/** What the program prints in an environment: "detected served". */
std::string detected(char const* language, char const* argument = "", char const* otherVariable = nullptr)
{
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    pid_t const child = fork();
    if (child == 0) {
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        if (language)
            setenv("LANG", language, 1);
        else
            unsetenv("LANG");
        for (char const* const name : {"LC_ALL", "LC_CTYPE"}) {
            if (otherVariable)
                setenv(name, otherVariable, 1);
            else
                unsetenv(name);
        }
        execl(program.c_str(), program.c_str(), argument, static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    std::string output;
    char c;
    while (read(ends[0], &c, 1) == 1)
        output += c;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0)
        return "failed";
    return output.substr(0, output.find('\n'));
}

std::string both(int charSet)
{
    return std::to_string(charSet) + " " + std::to_string(charSet == 51950 ? 65001 : charSet);
}

std::string const UNKNOWN = "28591 28591";

struct CodesetRow {
    char const* key;      ///< as the detection looks it up
    char const* spelled;  ///< as systems write it
    int charSet;
};
CodesetRow const CODESETS[] = {
    {"UTF8", "UTF-8", 65001},
    {"ISO88591", "ISO-8859-1", 28591},
    {"ISO88592", "ISO-8859-2", 28592},
    {"ISO88593", "ISO-8859-3", 28593},
    {"ISO88594", "ISO-8859-4", 28594},
    {"ISO88595", "ISO-8859-5", 28595},
    {"ISO88596", "ISO-8859-6", 28596},
    {"ISO88597", "ISO-8859-7", 28597},
    {"ISO88598", "ISO-8859-8", 28598},
    {"ISO88599", "ISO-8859-9", 28599},
    {"ISO885910", "ISO-8859-10", 28600},
    {"ISO885911", "ISO-8859-11", 28601},
    {"ISO885913", "ISO8859-13", 28603},
    {"ISO885914", "iso8859-14", 28604},
    {"ISO885915", "ISO-8859-15", 28605},
    {"ISO885916", "ISO-8859-16", 28606},
    {"JA", "ja", 51932},
    {"EUCJP", "eucJP", 51932},
    {"EUCKR", "EUC-KR", 51949},
    {"EUCTW", "euc-tw", 51950},
    {"SJIS", "SJIS", 932},
    {"UJIS", "ujis", 932},
    {"PCK", "PCK", 932},
    {"GB18030", "GB-18030", 54936},
    {"BIG5", "Big5", 30950},
};

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(tolower(c));
    return text;
}

std::string hyphenated(std::string const& text)
{
    std::string result = "-";
    for (char const c : text)
        result += std::string(1, c) + "--";
    return result;
}

}  // namespace

TEST(DefaultCharSet, IsThatOfTheCodesetInEverySpelling)
{
    for (CodesetRow const& row : CODESETS) {
        std::string const key = row.key;
        for (std::string const& language :
             {key, lower(key), std::string(row.spelled), "xx_YY." + key, "xx_YY." + std::string(row.spelled),
              "xx_YY." + lower(row.spelled) + "@modifier", key + "@modifier", "." + key,
              "xx_YY." + hyphenated(lower(key))})
            EXPECT_EQ(detected(language.c_str()), both(row.charSet)) << language;
    }
}

TEST(DefaultCharSet, KnowsThreeNamesThatEndInEUC)
{
    struct {
        char const* key;
        int charSet;
    } const rows[] = {{"CN", 51936}, {"KR", 51949}, {"TW", 51950}};
    for (auto const& row : rows) {
        std::string const key = row.key;
        for (std::string const& language : {key + ".EUC", lower(key) + ".euc", "xx_" + key + ".EUC",
                                            "xx_" + lower(key) + ".Euc", "-xx_-" + key + "-.EUC", "_" + key + ".EUC"})
            EXPECT_EQ(detected(language.c_str()), both(row.charSet)) << language;
        for (std::string const& language : {"xx_" + key + ".EUC@modifier", "a_b_" + key + ".EUC", key + ".E-UC",
                                            key + ".EUC-", key + "EUC", "a." + key + ".EUC", key})
            EXPECT_EQ(detected(language.c_str()), UNKNOWN) << language;
    }
}

TEST(DefaultCharSet, OfTheUsualExamples)
{
    struct {
        char const* language;
        int charSet;
    } const rows[] = {
        {"en_US.UTF-8", 65001},
        {"de_DE.ISO-8859-15@euro", 28605},
        {"ja_JP.eucJP", 51932},
        {"ja_JP.PCK", 932},
        {"ja", 51932},
        {"zh_CN.EUC", 51936},
        {"ja_JP.EUC", 28591},
        {"ja_JP.Shift_JIS", 28591},
        {"C", 28591},
        {"en_US.utf8", 65001},
        {"en_US", 28591},
        {"POSIX", 28591},
        {"ru_RU.CP1251", 28591},
        {"C.UTF-8", 65001},
        {"ja_JP", 28591},
    };
    for (auto const& row : rows)
        EXPECT_EQ(detected(row.language), both(row.charSet)) << row.language;
}

TEST(DefaultCharSet, IsLatin1WhereNothingIsFound)
{
    char const* const languages[] = {
        "",
        ".EUC",
        "EUC",
        "_.EUC",
        ".",
        "@",
        "-",
        "_",
        "..",
        "a.",
        "a.@x",
        "@UTF-8",
        "a.UTF_8",
        "a.b.UTF-8",
        "a.EUC.EUC",
        "\x7F",
        "a.\x7F",
        "utf 8",
        "a.UTF-8 ",
        "a.UTF8x",
        "\xFF\xFE",
        "a.\xC3\xA9",
        "UTF\xEF\xBC\x98",
    };
    for (char const* const language : languages)
        EXPECT_EQ(detected(language), UNKNOWN) << language;
    EXPECT_EQ(detected(std::string(100000, 'x').c_str()), UNKNOWN);
}

TEST(DefaultCharSet, OfThreeUnitsHasNoEUCSuffix)
{
    EXPECT_EQ(detected("ja@"), both(51932)) << "the modifier goes";
    EXPECT_EQ(detected(".ja"), both(51932)) << "the language goes";
    EXPECT_EQ(detected("_ja"), UNKNOWN) << "the territory stays";
    EXPECT_EQ(detected("pck"), both(932));
}

TEST(DefaultCharSet, TakesTheModifierAfterTheCodesetOnly)
{
    EXPECT_EQ(detected("xx@a.UTF-8"), both(65001));
    EXPECT_EQ(detected("xx.UTF-8@a.b"), both(65001));
    EXPECT_EQ(detected("xx.UTF-8@@"), both(65001));
    EXPECT_EQ(detected("ja@x"), both(51932));
}

TEST(DefaultCharSet, WithoutLANGIsThatOfTheProcessLocaleWhichIsCAtLoad)
{
    EXPECT_EQ(detected(nullptr), UNKNOWN);
    EXPECT_EQ(detected(nullptr, "", "ja_JP.SJIS"), UNKNOWN);
}

TEST(DefaultCharSet, LooksAtNoOtherVariable)
{
    EXPECT_EQ(detected("xx.UTF-8", "", "ja_JP.SJIS"), both(65001));
    EXPECT_EQ(detected("", "", "ja_JP.SJIS"), UNKNOWN);
}

TEST(DefaultCharSet, IsSettledWhenTheLibraryIsLoaded)
{
    EXPECT_EQ(detected("xx.BIG5", "later"), both(30950));
    EXPECT_EQ(detected(nullptr, "later"), UNKNOWN);
}

TEST(DefaultCharSet, IsNotServedByWhatIsRegisteredForTheDefaultItself)
{
    EXPECT_EQ(detected("xx.BIG5", "registered"), both(30950));
    EXPECT_EQ(detected("xx.EUC-TW", "registered"), both(51950)) << "a set without a converter";
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2)
        return 2;
    program = argv[1];
    return RUN_ALL_TESTS();
}
