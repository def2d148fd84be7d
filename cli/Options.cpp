// kx7text - kx7conv: the options, their rules and their help.
#include "Options.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "kx7/converters/Utf16.h"

namespace kx7conv {

namespace {

enum class Argument {
    NONE,
    REQUIRED,
    OPTIONAL  ///< attached only: -iSUFFIX, --stats=json
};

struct Option {
    char shortName;  ///< 0: none
    char const* longName;
    Argument argument;
    char const* valueName;
    char const* help;
    void (*apply)(Options& options, std::string const& value);
};

[[noreturn]] void refuse(char const* option, std::string const& value, char const* wanted)
{
    throw UsageError(std::string(option) + ": '" + value + "' is not " + wanted);
}

std::string nonEmpty(char const* option, std::string const& value)
{
    if (value.empty())
        refuse(option, value, "a name");
    return value;
}

uint64_t numberOf(char const* option, std::string const& value)
{
    bool const isNumber =
        !value.empty() && value.size() <= 18 && value.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber)
        refuse(option, value, "a number");
    return std::stoull(value);
}

/** A code point as "U+20AC", in any case and with or without "U+". */
unsigned int codePointOfText(char const* option, std::string const& value)
{
    bool const prefixed = value.size() > 2 && (value[0] == 'U' || value[0] == 'u') && value[1] == '+';
    std::string const digits = prefixed ? value.substr(2) : value;
    bool const isHex = !digits.empty() && digits.size() <= 6 &&
                       digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
    auto const codePoint = isHex ? static_cast<unsigned int>(std::stoul(digits, nullptr, 16)) : 0;
    if (codePoint == 0 || codePoint > kx7::LAST_CODE_POINT || kx7::isSurrogate(codePoint))
        refuse(option, value, "a character U+0001 to U+10FFFF");
    return codePoint;
}

Format formatOf(char const* option, std::string const& value)
{
    if (!value.empty() && value != "json")
        refuse(option, value, "json");
    return value.empty() ? Format::TEXT : Format::JSON;
}

void setOnError(Options& options, OnError onError)
{
    if (options.errorsGiven && options.onError != onError)
        throw UsageError("--errors and -c contradict each other");
    options.errorsGiven = true;
    options.onError = onError;
}

void applyErrors(Options& options, std::string const& value)
{
    if (value == "strict")
        setOnError(options, OnError::STOP);
    else if (value == "replace")
        setOnError(options, OnError::REPLACE);
    else if (value == "skip")
        setOnError(options, OnError::SKIP);
    else if (value == "escape")
        setOnError(options, OnError::ESCAPE);
    else
        refuse("--errors", value, "strict, replace, skip or escape");
}

void applyByteOrderMark(Options& options, std::string const& value)
{
    if (value == "keep")
        options.byteOrderMark = ByteOrderMark::KEEP;
    else if (value == "strip")
        options.byteOrderMark = ByteOrderMark::STRIP;
    else if (value == "add")
        options.byteOrderMark = ByteOrderMark::ADD;
    else
        refuse("--bom", value, "keep, strip or add");
}

void applyInPlace(Options& options, std::string const& suffix)
{
    if (suffix.find('/') != std::string::npos)
        refuse("-i", suffix, "a suffix, which has no '/'");
    options.inPlace = true;
    options.backupSuffix = suffix;
}

void applyJobs(Options& options, std::string const& value)
{
    uint64_t const jobs = numberOf("-j", value);
    uint64_t const most = 64;
    options.jobs = static_cast<unsigned int>(std::min(jobs != 0 ? jobs : std::thread::hardware_concurrency(), most));
    options.jobs = std::max(options.jobs, 1U);
}

void applyProgress(Options& options, std::string const& value)
{
    if (value != "auto" && value != "never")
        refuse("--progress", value, "auto or never");
    options.progress = value == "auto";
}

constexpr Option OPTIONS[] = {
    {'f', "from", Argument::REQUIRED, "CS",
     "character set of the input: a code-page number (1251), a name\n(KX7CS_WCP1251, wcp1251) or a label "
     "(windows-1251)",
     [](Options& options, std::string const& value) { options.from = nonEmpty("-f", value); }},
    {'t', "to", Argument::REQUIRED, "CS", "character set of the output; UTF-8 if not given",
     [](Options& options, std::string const& value) { options.to = nonEmpty("-t", value); }},
    {0, "errors", Argument::REQUIRED, "MODE",
     "what to do with illegal bytes and with characters that the output\ncannot represent:\n"
     "strict   end that input there, with a message (if not given);\n"
     "replace  write U+FFFD and \"?\";\n"
     "skip     write nothing for them;\n"
     "escape   write U+FFFD and \"U+20AC\"",
     applyErrors},
    {'c', nullptr, Argument::NONE, nullptr, "the same as --errors skip",
     [](Options& options, std::string const&) { setOnError(options, OnError::SKIP); }},
    {0, "substitute", Argument::REQUIRED, "U+XXXX", "replace with this character",
     [](Options& options, std::string const& value) { options.substitute = codePointOfText("--substitute", value); }},
    {0, "fail-on-loss", Argument::NONE, nullptr,
     "status 1 if anything was replaced, skipped or escaped; then no\nfile is replaced either",
     [](Options& options, std::string const&) { options.failOnLoss = true; }},
    {0, "literal", Argument::NONE, nullptr,
     "exactly the library's published conversion of each input, quirks\nincluded: it ends at a zero; --errors replace "
     "if not given",
     [](Options& options, std::string const&) { options.literal = true; }},
    {0, "check", Argument::NONE, nullptr, "write nothing, report every error and how many there are",
     [](Options& options, std::string const&) { options.check = true; }},
    {0, "max-errors", Argument::REQUIRED, "N", "errors that --check reports for each input; 10 if not given",
     [](Options& options, std::string const& value) { options.maxErrors = numberOf("--max-errors", value); }},
    {'o', "output", Argument::REQUIRED, "FILE",
     "write to FILE, which is replaced when all went well; it may be one\nof the inputs",
     [](Options& options, std::string const& value) { options.output = nonEmpty("-o", value); }},
    {'i', "in-place", Argument::OPTIONAL, "SUFFIX",
     "replace each input when all went well with it; with a SUFFIX the\nold file is kept under its name and that",
     applyInPlace},
    {0, "output-dir", Argument::REQUIRED, "DIR",
     "write each output into DIR, under the name of its input; files\nfound by -r keep their folders",
     [](Options& options, std::string const& value) { options.outputFolder = nonEmpty("--output-dir", value); }},
    {'j', "jobs", Argument::REQUIRED, "N",
     "convert in N threads, 0: one a processor; output and messages are\nthose of one thread", applyJobs},
    {'r', "recursive", Argument::NONE, nullptr, "convert the files in folders and below, in the order of their names",
     [](Options& options, std::string const&) { options.recursive = true; }},
    {0, "files-from", Argument::REQUIRED, "FILE",
     "convert the files that FILE names, one a line, after the others;\n\"-\" is standard input",
     [](Options& options, std::string const& value) { options.namesFrom = nonEmpty("--files-from", value); }},
    {'0', "null", Argument::NONE, nullptr, "names in --files-from end with a zero byte, not a line feed",
     [](Options& options, std::string const&) { options.zeroSeparated = true; }},
    {0, "bom", Argument::REQUIRED, "MODE",
     "a byte order mark at the front of an input: keep (if not given)\nor strip; add: each output begins with one",
     applyByteOrderMark},
    {0, "line-buffered", Argument::NONE, nullptr, "write each line by itself, once it is complete",
     [](Options& options, std::string const&) { options.lineBuffered = true; }},
    {0, "progress", Argument::REQUIRED, "WHEN",
     "auto: bytes, rate and time left on standard error if that is a\nterminal; never (if not given)", applyProgress},
    {0, "stats", Argument::OPTIONAL, "json", "say on standard error what was converted",
     [](Options& options, std::string const& value) { options.stats = formatOf("--stats", value); }},
    {0, "list", Argument::OPTIONAL, "json", "print the number and the name of every character set and end",
     [](Options& options, std::string const& value) {
         options.action = Action::LIST;
         options.list = formatOf("--list", value);
     }},
    {0, "guess", Argument::NONE, nullptr,
     "print every character set in which the input is clean, likeliest\nfirst, and end",
     [](Options& options, std::string const&) { options.action = Action::GUESS; }},
    {0, "version", Argument::NONE, nullptr, "print the version and end",
     [](Options& options, std::string const&) { options.action = Action::VERSION; }},
    {'h', "help", Argument::NONE, nullptr, "print this and end",
     [](Options& options, std::string const&) { options.action = Action::HELP; }},
};

/** The arguments, taken one by one. */
class Parser {
public:
    Parser(int argc, char const* const* argv) : m_next(argv + std::min(argc, 1)), m_end(argv + argc) {}

    Options run()
    {
        bool onlyFiles = false;
        while (m_next != m_end && m_options.action != Action::HELP && m_options.action != Action::VERSION) {
            char const* const argument = *m_next++;
            if (onlyFiles || argument[0] != '-' || argument[1] == 0)
                m_options.files.emplace_back(argument);
            else if (argument[1] != '-')
                shortOptions(argument + 1);
            else if (argument[2] != 0)
                longOption(argument + 2);
            else
                onlyFiles = true;
        }
        return m_options;
    }

private:
    void longOption(std::string const& text)
    {
        size_t const equals = std::min(text.find('='), text.size());
        std::string const name = text.substr(0, equals);
        auto const* const option = std::find_if(std::begin(OPTIONS), std::end(OPTIONS), [&](Option const& candidate) {
            return candidate.longName && name == candidate.longName;
        });
        if (option == std::end(OPTIONS))
            throw UsageError("no option --" + name + "; --help shows those that there are");
        bool const hasValue = equals != text.size();
        if (hasValue && option->argument == Argument::NONE)
            throw UsageError("--" + name + " takes no value");
        std::string value = hasValue ? text.substr(equals + 1) : std::string();
        if (!hasValue && option->argument == Argument::REQUIRED)
            value = nextArgument("--" + name);
        apply(*option, "--" + name, value);
    }

    /** Options in one argument; what follows one that takes a value is its value. */
    void shortOptions(char const* names)
    {
        while (*names != 0) {
            char const name = *names++;
            auto const* const option =
                std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                             [&](Option const& candidate) { return candidate.shortName == name; });
            std::string const text = std::string("-") + name;
            if (option == std::end(OPTIONS))
                throw UsageError("no option " + text + "; --help shows those that there are");
            std::string value;
            if (option->argument != Argument::NONE) {
                value = names;
                if (value.empty() && option->argument == Argument::REQUIRED)
                    value = nextArgument(text);
                names += strlen(names);
            }
            apply(*option, text, value);
        }
    }

    std::string nextArgument(std::string const& option)
    {
        if (m_next == m_end)
            throw UsageError(option + " needs a value");
        return *m_next++;
    }

    void apply(Option const& option, std::string const& text, std::string const& value)
    {
        bool& given = m_given[&option - OPTIONS];
        if (given && option.argument == Argument::REQUIRED)
            throw UsageError(text + " is given twice");
        given = true;
        option.apply(m_options, value);
    }

    char const* const* m_next;
    char const* const* m_end;
    Options m_options;
    bool m_given[std::size(OPTIONS)] = {};
};

void checkTogether(bool excluded, char const* message)
{
    if (excluded)
        throw UsageError(message);
}

/** Options that exclude each other, and those that follow from others. */
void settle(Options& options)
{
    int const outputs = !options.output.empty() + options.inPlace + !options.outputFolder.empty() + options.check;
    checkTogether(outputs > 1, "-o, -i, --output-dir and --check exclude each other");
    checkTogether(options.check && options.errorsGiven, "--check excludes --errors and -c");
    checkTogether(options.zeroSeparated && options.namesFrom.empty(), "-0 is for --files-from");
    if (options.substitute != 0) {
        checkTogether(options.errorsGiven && options.onError != OnError::REPLACE,
                      "--substitute is for --errors replace");
        options.errorsGiven = true;
        options.onError = OnError::REPLACE;
    }
    if (options.literal) {
        checkTogether(options.check || options.failOnLoss || options.substitute != 0 || options.lineBuffered ||
                          options.byteOrderMark != ByteOrderMark::KEEP,
                      "--literal excludes --check, --fail-on-loss, --substitute, --line-buffered and --bom");
        checkTogether(options.onError == OnError::SKIP,
                      "--literal excludes --errors skip: the library has no such mode");
        if (!options.errorsGiven)
            options.onError = OnError::REPLACE;
    }
    if (options.files.empty() && options.namesFrom.empty())
        options.files.emplace_back("-");
}

}  // namespace

Options parseOptions(int argc, char const* const* argv)
{
    Options options = Parser(argc, argv).run();
    if (options.action == Action::CONVERT || options.action == Action::GUESS)
        settle(options);
    return options;
}

std::string helpText()
{
    std::string text = "Usage: kx7conv -f CS [-t CS] [options] [FILE... | -]\n"
                       "Converts text between character sets. Reads the files one after another, or standard\n"
                       "input, and writes to standard output unless told otherwise.\n\n";
    size_t const column = 25;
    for (Option const& option : OPTIONS) {
        std::string line = option.shortName ? std::string("  -") + option.shortName : std::string("    ");
        if (option.longName)
            line += std::string(option.shortName ? ", --" : "  --") + option.longName;
        if (option.argument == Argument::REQUIRED)
            line += std::string(" ") + option.valueName;
        else if (option.argument == Argument::OPTIONAL)
            line += std::string("[=") + option.valueName + "]";
        if (line.size() >= column) {
            text += line + "\n";
            line.clear();
        }
        line.resize(column, ' ');
        for (char const* c = option.help; *c != 0; ++c) {
            line += *c;
            if (*c == '\n')
                line += std::string(column, ' ');
        }
        text += line + "\n";
    }
    text += "\nA suffix is attached to -i without a space: -i.bak.\n"
            "Exit status: 0 fine or loss asked for, 1 illegal or unrepresentable data, 2 usage or\n"
            "character set, 3 input or output. Of several files the highest counts.\n";
    return text;
}

}  // namespace kx7conv
