// kx7text - kx7conv: the options, their rules and their help.
#include "Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <thread>

#include "Quoting.h"

namespace kx7conv {

namespace {

[[noreturn]] void refuse(char const* option, std::string const& value, char const* wanted)
{
    throw UsageError(std::string(option) + ": " + alwaysQuoted(value) + " is not " + wanted);
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
    bool const isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (codePoint == 0 || codePoint > 0x10FFFF || isSurrogate)
        refuse(option, value, "a character U+0001 to U+10FFFF");
    return codePoint;
}

Format formatOf(char const* option, std::string const& value)
{
    if (!value.empty() && value != "json")
        refuse(option, value, "json");
    return value.empty() ? Format::TEXT : Format::JSON;
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

/** The usage in our own words, names in columns, and values as they are written. */
struct HelpFormatter : CLI::Formatter {
    HelpFormatter() { column_width(27); }

    std::string make_usage(CLI::App const*, std::string) const override
    {
        return "Usage: kx7conv -f CS [-t CS] [options] [FILE... | -]\n"
               "Converts text between character sets. Reads the files one after another, or standard\n"
               "input, and writes to standard output unless told otherwise.\n";
    }

    std::string make_option_name(CLI::Option const* option, bool) const override
    {
        std::string shortName = option->get_snames().empty() ? "  " : "-" + option->get_snames()[0];
        if (option->get_lnames().empty())
            return shortName;
        return shortName + (option->get_snames().empty() ? "  --" : ", --") + option->get_lnames()[0];
    }

    std::string make_option_opts(CLI::Option const* option) const override
    {
        std::string const& text = option->get_option_text();
        return text.empty() || text[0] == '[' ? text : " " + text;
    }
};

using Apply = std::function<void(std::string const& value)>;

void addFlag(CLI::App& app, char const* names, bool& flag, char const* help)
{
    app.add_flag(names, flag, help)->disable_flag_override();
}

void addName(CLI::App& app, char const* names, char const* valueName, std::string& name, char const* help)
{
    auto const refuseEmpty = [](std::string const& value) { return std::string(value.empty() ? "'' is no name" : ""); };
    app.add_option(names, name, help)->check(CLI::Validator(refuseEmpty, ""))->option_text(valueName);
}

template <class T>
void addChoice(CLI::App& app, char const* name, char const* valueName, T& choice,
               std::map<std::string, T> const& choices, char const* help)
{
    auto const apply = [&choice, choices](std::string const& value) { choice = choices.at(value); };
    app.add_option_function<std::string>(name, apply, help)->check(CLI::IsMember(choices))->option_text(valueName);
}

void addOption(CLI::App& app, char const* names, char const* valueName, Apply const& apply, char const* help)
{
    app.add_option_function<std::string>(names, apply, help)->option_text(valueName);
}

/** Its values are attached only, as in --stats=json; the default that the names hold is that of none. */
void addFlagWithValue(CLI::App& app, char const* names, char const* valueName, std::vector<std::string>& values,
                      char const* help)
{
    app.add_flag(names, values, help)->option_text(valueName);
}

/**
 * Parts the arguments into the files, which it appends to `files`, and the options and their values, which it returns.
 * To CLI11, "[a,b]" would be two files, and -iSUFFIX several options.
 */
std::vector<std::string> partArguments(CLI::App const& app, int argc, char const* const* argv,
                                       std::vector<char const*>& files)
{
    auto const takesValue = [&app](std::string const& name) {
        CLI::Option const* const option = app.get_option_no_throw(name);
        return option && option->get_items_expected_max() != 0;
    };
    std::vector<std::string> options;
    for (int i = 1; i < argc; ++i) {
        std::string const argument = argv[i];
        bool takesNext = false;
        if (argument == "--") {
            files.insert(files.end(), argv + i + 1, argv + argc);
            break;
        }
        if (argument.size() < 2 || argument[0] != '-') {
            files.push_back(argv[i]);
        }
        else if (argument[1] == '-') {
            // To CLI11, the next argument would be the value.
            if (argument.find('=') == argument.size() - 1)
                throw UsageError(argument + " has no value");
            takesNext = takesValue(argument);
            options.push_back(argument);
        }
        else {
            // Flags, up to an option whose value or suffix the rest is.
            size_t at = 1;
            while (at < argument.size() && argument[at] != 'i' && !takesValue({'-', argument[at]}))
                ++at;
            bool const isInPlace = argument[at] == 'i';
            takesNext = !isInPlace && at + 1 == argument.size();
            std::string const rest = isInPlace ? argument.substr(at + 1) : std::string();
            if (!isInPlace || at != 1)
                options.push_back(isInPlace ? argument.substr(0, at) : argument);
            if (isInPlace)
                options.push_back("--in-place" + (rest.empty() ? rest : "=" + rest));
        }
        if (takesNext && i + 1 < argc)
            options.emplace_back(argv[++i]);
    }
    return options;
}

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
    checkTogether(options.namesFrom == "-" && std::any_of(options.files.begin(), options.files.end(),
                                                          [](char const* file) { return strcmp(file, "-") == 0; }),
                  "standard input cannot be an input and the list of --files-from");
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
        options.files.push_back("-");
}

}  // namespace

Options parseOptions(int argc, char const* const* argv)
{
    Options options;
    std::vector<std::string> suffixes;
    std::vector<std::string> statsFormats;
    std::vector<std::string> listFormats;
    bool skips = false;
    bool guesses = false;

    CLI::App app;
    app.formatter(std::make_shared<HelpFormatter>());
    addName(app, "-f,--from", "CS", options.from,
            "character set of the input: a code-page number (1251), a name\n(KX7CS_WCP1251, wcp1251) or a label "
            "(windows-1251)");
    addName(app, "-t,--to", "CS", options.to, "character set of the output; UTF-8 if not given");
    addChoice<kx7::Labels>(app, "--labels", "REGISTRY", options.labels,
                           {{"iana", kx7::Labels::IANA_FIRST}, {"whatwg", kx7::Labels::WHATWG_FIRST}},
                           "what labels mean of which both have another idea: iana (if not\ngiven) or whatwg, where "
                           "latin1 is windows-1252");
    addChoice<OnError>(app, "--errors", "MODE", options.onError,
                       {{"strict", OnError::STOP},
                        {"replace", OnError::REPLACE},
                        {"skip", OnError::SKIP},
                        {"escape", OnError::ESCAPE}},
                       "what to do with illegal bytes and with characters that the\noutput cannot represent:\n"
                       "strict   end that input there, with a message (if not given);\n"
                       "replace  write U+FFFD and \"?\";\n"
                       "skip     write nothing for them;\n"
                       "escape   write U+FFFD and \"U+20AC\"");
    addFlag(app, "-c", skips, "the same as --errors skip");
    addOption(
        app, "--substitute", "U+XXXX",
        [&](std::string const& value) { options.substitute = codePointOfText("--substitute", value); },
        "replace with this character");
    addFlag(app, "--fail-on-loss", options.failOnLoss,
            "status 1 if anything was replaced, skipped or escaped; then no\nfile is replaced either");
    addFlag(app, "--literal", options.literal,
            "exactly the library's published conversion of each input, quirks\nincluded: it ends at a zero; "
            "--errors replace if not given");
    addFlag(app, "--check", options.check, "write nothing, report every error and how many there are");
    addOption(
        app, "--max-errors", "N",
        [&](std::string const& value) { options.maxErrors = numberOf("--max-errors", value); },
        "errors that --check reports for each input; 10 if not given");
    addName(app, "-o,--output", "FILE", options.output,
            "write to FILE, which is replaced when all went well; it may be\none of the inputs");
    addFlagWithValue(app, "-i{},--in-place{}", "[=SUFFIX]", suffixes,
                     "replace each input when all went well with it; with a SUFFIX the\n"
                     "old file is kept under its name and that; also -iSUFFIX");
    addName(app, "--output-dir", "DIR", options.outputFolder,
            "write each output into DIR, under the name of its input; files\nfound by -r keep their folders");
    addOption(
        app, "-j,--jobs", "N", [&](std::string const& value) { applyJobs(options, value); },
        "convert in N threads, 0: one a processor; output and messages\nare those of one thread");
    addFlag(app, "-r,--recursive", options.recursive,
            "convert the files in folders and below, in the order of their\nnames");
    addName(app, "--files-from", "FILE", options.namesFrom,
            "convert the files that FILE names, one a line, after the others;\n\"-\" is standard input");
    addFlag(app, "-0,--null", options.zeroSeparated, "names in --files-from end with a zero byte, not a line feed");
    addChoice<ByteOrderMark>(
        app, "--bom", "MODE", options.byteOrderMark,
        {{"keep", ByteOrderMark::KEEP}, {"strip", ByteOrderMark::STRIP}, {"add", ByteOrderMark::ADD}},
        "a byte order mark at the front of an input: keep (if not given)\nor strip; add: each output begins with one");
    addFlag(app, "--line-buffered", options.lineBuffered, "write each line by itself, once it is complete");
    addChoice<bool>(app, "--progress", "WHEN", options.progress, {{"auto", true}, {"never", false}},
                    "auto: bytes, rate and time left on standard error if that is a\nterminal; never (if not given)");
    addFlagWithValue(app, "--stats{}", "[=json]", statsFormats, "say on standard error what was converted");
    addFlagWithValue(app, "--list{}", "[=json]", listFormats,
                     "print the number, name and labels of every character set and end");
    addFlag(app, "--guess", guesses,
            "print every character set in which the input is clean, likeliest\nfirst, and end");
    app.set_version_flag("--version", "kx7conv " KX7CONV_VERSION, "print the version and end");
    app.set_help_flag("-h,--help", "print this and end");
    app.footer("Exit status: 0 fine or loss asked for, 1 illegal or unrepresentable data, 2 usage or\n"
               "character set, 3 input or output. Of several files the highest counts.");

    try {
        options.files.reserve(static_cast<size_t>(argc));
        std::vector<std::string> arguments = partArguments(app, argc, argv, options.files);
        std::reverse(arguments.begin(), arguments.end());  // as CLI11 wants them
        app.parse(arguments);
    }
    catch (CLI::CallForHelp const&) {
        options.action = Action::ANSWER;
        options.answer = app.help();
        return options;
    }
    catch (CLI::CallForVersion const& version) {
        options.action = Action::ANSWER;
        options.answer = version.what() + std::string("\n");
        return options;
    }
    catch (CLI::ParseError const& error) {
        throw UsageError(error.what());
    }
    options.errorsGiven = skips || app.count("--errors") != 0;
    checkTogether(skips && app.count("--errors") != 0 && options.onError != OnError::SKIP,
                  "--errors and -c contradict each other");
    if (skips)
        options.onError = OnError::SKIP;
    if (!suffixes.empty())
        applyInPlace(options, suffixes.back());
    if (!statsFormats.empty())
        options.stats = formatOf("--stats", statsFormats.back());
    if (!listFormats.empty()) {
        options.action = Action::LIST;
        options.list = formatOf("--list", listFormats.back());
        return options;
    }
    if (guesses)
        options.action = Action::GUESS;
    settle(options);
    return options;
}

}  // namespace kx7conv
