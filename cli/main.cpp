// kx7text - kx7conv: converts text files between character sets. This file: options and exit status.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sstream>

#include "CharSetLookup.h"
#include "Io.h"
#include "Transcoder.h"

namespace {

enum ExitStatus {
    EXIT_FINE = 0,
    EXIT_BAD_DATA = 1,  ///< illegal bytes or unrepresentable characters, with --errors strict
    EXIT_USAGE = 2,     ///< options, or a character set that is unknown or has no converter
    EXIT_IO = 3         ///< an input that cannot be read, output that cannot be written
};

struct Options {
    std::string from;
    std::string to = "UTF8";
    std::string errors = "strict";
    std::vector<std::string> files;
    bool list = false;
};

/** Options that make no sense; what() is the message. */
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};

/** The arguments as CLI11 wants them, last first. */
std::vector<std::string> arguments(int argc, char** argv)
{
    std::vector<std::string> result(std::make_reverse_iterator(argv + argc),
                                    std::make_reverse_iterator(argv + std::min(argc, 1)));
    // CLI11 would take a file called "[a]" for a list with the one name "a".
    for (std::string& argument : result)
        if (!argument.empty() && argument.front() == '[')
            argument.insert(0, "./");
    return result;
}

kx7::CharSetName const& charSetOf(std::string const& text)
{
    kx7::CharSetName const* const charSet = kx7::findCharSet(text);
    if (!charSet)
        throw UsageError("unknown character set '" + text + "'; --list shows those that there are");
    if (!kx7::hasConverter(charSet->charSet))
        throw UsageError(std::string("character set ") + charSet->name + " has no converter");
    return *charSet;
}

kx7::OnError onErrorOf(std::string const& errors)
{
    return errors == "replace" ? kx7::OnError::REPLACE : errors == "escape" ? kx7::OnError::ESCAPE : kx7::OnError::STOP;
}

ExitStatus convertFile(kx7::Transcoder& transcoder, std::string const& path)
{
    try {
        kx7::Input input(path);
        try {
            transcoder.convert(input);
            return EXIT_FINE;
        }
        catch (kx7::DataError const& error) {
            kx7::report(input.name() + ":" + error.what());
            return EXIT_BAD_DATA;
        }
    }
    catch (kx7::InputError const& error) {
        kx7::report(error.what());
        return EXIT_IO;
    }
}

void printList()
{
    std::string text;
    for (kx7::CharSetName const& charSet : kx7::CHAR_SET_NAMES)
        if (kx7::hasConverter(charSet.charSet))
            text += std::to_string(charSet.charSet) + "\t" + charSet.name + "\n";
    kx7::writeOutput(text.data(), text.size());
}

void convertFiles(Options const& options, ExitStatus& status)
{
    if (options.from.empty())
        throw UsageError("--from is required");
    auto const transcoder =
        std::make_unique<kx7::Transcoder>(charSetOf(options.from), charSetOf(options.to), onErrorOf(options.errors));
    for (std::string const& file : options.files)
        status = std::max(status, convertFile(*transcoder, file));
}

/**
 * Does what the arguments ask for. `status` is that of the files so far, at any time.
 * Throws CLI::ParseError, UsageError and OutputError.
 */
void run(int argc, char** argv, ExitStatus& status)
{
    Options options;
    CLI::App app("Converts text between character sets. Reads the files one after another, or standard input,\n"
                 "and writes to standard output.",
                 "kx7conv");
    app.add_option("-f,--from", options.from,
                   "character set of the input: a code-page number (1251) or a name (KX7CS_WCP1251, wcp1251)")
        ->type_name("CS");
    app.add_option("-t,--to", options.to, "character set of the output; UTF-8 if not given")->type_name("CS");
    app.add_option("--errors", options.errors,
                   "what to do with illegal bytes and with characters that the output cannot represent:\n"
                   "strict (if not given): end that file with a message;\n"
                   "replace: write U+FFFD and \"?\"; escape: write U+FFFD and \"U+20AC\"")
        ->type_name("MODE")
        ->check(CLI::IsMember({"strict", "replace", "escape"}));
    app.add_option("FILE", options.files, "input files; \"-\" is standard input")->type_name("");
    app.add_flag("--list", options.list, "print the number and the name of every character set and end");
    app.set_version_flag("--version", "kx7conv " KX7CONV_VERSION);
    app.footer("Exit status: 0 fine, 1 illegal or unrepresentable data (strict only), 2 usage or character set,\n"
               "3 input or output. Of several files the highest counts.");
    try {
        app.parse(arguments(argc, argv));
    }
    catch (CLI::Success const& helpOrVersion) {
        std::ostringstream text;
        app.exit(helpOrVersion, text, text);
        kx7::writeOutput(text.str().data(), text.str().size());
        kx7::closeOutput();
        return;
    }
    if (options.files.empty())
        options.files.emplace_back("-");

    if (options.list)
        printList();
    else
        convertFiles(options, status);
    kx7::closeOutput();
}

}  // namespace

int main(int argc, char** argv)
{
    // A reader that has gone shows as EPIPE instead.
    signal(SIGPIPE, SIG_IGN);

    ExitStatus status = EXIT_FINE;
    try {
        run(argc, argv, status);
    }
    catch (CLI::ParseError const& error) {
        kx7::report(error.what());
        status = EXIT_USAGE;
    }
    catch (UsageError const& error) {
        kx7::report(error.what());
        status = EXIT_USAGE;
    }
    catch (kx7::OutputError const& error) {
        // A reader that has seen enough, as in `kx7conv ... | head`, is no failure.
        if (error.code() != std::errc::broken_pipe) {
            kx7::report(error.what());
            status = EXIT_IO;
        }
    }
    return status;
}
