// kx7text - kx7conv: converts text files between character sets. This file: what is to be done, and the exit status.
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>

#include "CharSetLookup.h"
#include "Conversion.h"
#include "Guess.h"
#include "Io.h"
#include "Options.h"

namespace {

using namespace kx7conv;

kx7::CharSetName const& charSetOf(std::string const& text)
{
    kx7::CharSetName const* const charSet = findCharSet(text);
    if (!charSet)
        throw UsageError("unknown character set '" + text + "'; --list shows those that there are");
    if (!hasConverter(charSet->charSet))
        throw UsageError(std::string("character set ") + charSet->name + " has no converter");
    return *charSet;
}

void print(std::string const& text)
{
    Output output;
    output.write(text.data(), text.size());
    output.finish();
}

std::string listText(Format format)
{
    std::string text;
    for (kx7::CharSetName const& charSet : kx7::CHAR_SET_NAMES) {
        if (!hasConverter(charSet.charSet))
            continue;
        std::string const number = std::to_string(charSet.charSet);
        if (format == Format::JSON)
            text +=
                (text.empty() ? "[\n" : ",\n") + ("  {\"number\": " + number) + ", \"name\": \"" + charSet.name + "\"}";
        else
            text += number + "\t" + charSet.name + "\n";
    }
    return format == Format::JSON ? text + "\n]\n" : text;
}

/** One line a set: number and name, behind the name of the input if there are several. */
int guessAll(Options const& options)
{
    int status = EXIT_FINE;
    Output output;
    Files files(options);
    bool const named = options.files.size() > 1 || options.recursive || !options.namesFrom.empty();
    for (File file;;) {
        try {
            if (!files.next(file))
                break;
            Input input(file.path);
            std::vector<kx7::CharSetName const*> const charSets = guess(input);
            std::string text;
            for (kx7::CharSetName const* const charSet : charSets)
                text += (named ? input.name() + "\t" : std::string()) + std::to_string(charSet->charSet) + "\t" +
                        charSet->name + "\n";
            output.write(text.data(), text.size());
            if (charSets.empty()) {
                report(input.name() + ": not clean in any character set");
                status = std::max<int>(status, EXIT_BAD_DATA);
            }
        }
        catch (InputError const& error) {
            report(error.what());
            status = EXIT_IO;
        }
    }
    output.finish();
    return status;
}

void reportTotals(Totals const& totals, double seconds, Format format)
{
    char text[512];
    char const* const form = format == Format::JSON
                                 ? "{\"files\": %" PRIu64 ", \"failedFiles\": %" PRIu64 ", \"bytesRead\": %" PRIu64
                                   ", \"bytesWritten\": %" PRIu64 ", \"errors\": %" PRIu64 ", \"seconds\": %.6f}\n"
                                 : "kx7conv: %" PRIu64 " files, %" PRIu64 " failed; %" PRIu64 " bytes read, %" PRIu64
                                   " written; %" PRIu64 " errors; %.3f s\n";
    snprintf(text, sizeof text, form, totals.files, totals.failedFiles, totals.bytesRead, totals.bytesWritten,
             totals.faults, seconds);
    writeError(text);
}

void convertAll(Options const& options, std::atomic<int>& status)
{
    if (options.from.empty())
        throw UsageError("--from is required");
    Codec const from(charSetOf(options.from));
    Codec const to(charSetOf(options.to));
    auto const began = std::chrono::steady_clock::now();
    Conversion conversion(options, from, to, status);
    conversion.run();
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - began;
    if (options.stats != Format::NONE)
        reportTotals(conversion.totals(), seconds.count(), options.stats);
}

/** Does what the arguments ask for. `status` is that of the files so far. Throws UsageError and OutputError. */
void run(int argc, char** argv, std::atomic<int>& status)
{
    Options const options = parseOptions(argc, argv);
    switch (options.action) {
        case Action::ANSWER: print(options.answer); break;
        case Action::LIST: print(listText(options.list)); break;
        case Action::GUESS: status = guessAll(options); break;
        case Action::CONVERT: convertAll(options, status); break;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    // A reader that has gone shows as EPIPE instead.
    signal(SIGPIPE, SIG_IGN);

    std::atomic<int> status{EXIT_FINE};
    try {
        run(argc, argv, status);
    }
    catch (UsageError const& error) {
        report(error.what());
        status = EXIT_USAGE;
    }
    catch (OutputError const& error) {
        // A reader that has seen enough, as in `kx7conv ... | head`, is no failure.
        if (error.code() != std::errc::broken_pipe) {
            report(error.what());
            status = EXIT_IO;
        }
    }
    catch (std::exception const& error) {
        report(error.what());
        status = EXIT_IO;
    }
    return status;
}
