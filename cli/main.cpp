// kx7text - kx7conv: converts text files between character sets. This file: what is to be done, and the exit status.
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <malloc.h>
#include <optional>
#include <strings.h>
#include <unistd.h>

#include "Conversion.h"
#include "Guess.h"
#include "Io.h"
#include "Options.h"
#include "Quoting.h"
#include "kx7/convert.h"

namespace {

using namespace kx7conv;

KX7CharSet charSetOf(std::string const& text, kx7::Labels labels)
{
    std::optional<KX7CharSet> const charSet = kx7::findCharSet(text, labels);
    if (!charSet)
        throw UsageError("unknown character set " + alwaysQuoted(text) + "; --list shows those that there are");
    if (!kx7::hasConverter(*charSet))
        throw UsageError(std::string("character set ") + kx7::charSetInfo(*charSet)->name + " has no converter");
    return *charSet;
}

void print(std::string const& text)
{
    Output output;
    output.write(text.data(), text.size());
    output.finish();
}

/** What --from takes for a character set beside its number and name, the label preferred first. */
std::vector<std::string> labelsOf(kx7::CharSetInfo const& info, kx7::Labels registry)
{
    char const* const preferred = registry == kx7::Labels::IANA_FIRST || !info.whatwg ? info.iana : info.whatwg;
    std::vector<std::string> labels;
    for (kx7::CharSetLabel const& entry : kx7::charSetLabels()) {
        if (kx7::findCharSet(entry.label, registry) != info.charSet)
            continue;
        bool const isPreferred = preferred && strcasecmp(entry.label, preferred) == 0;
        labels.insert(isPreferred ? labels.begin() : labels.end(), isPreferred ? preferred : entry.label);
    }
    return labels;
}

std::string joined(std::vector<std::string> const& words, char const* before, char const* between, char const* after)
{
    std::string text;
    for (std::string const& word : words)
        text += (text.empty() ? before : between) + word;
    return text.empty() ? text : text + after;
}

std::string listText(Format format, kx7::Labels registry)
{
    std::vector<std::string> lines;
    auto const add = [&](KX7CharSet charSet, std::string const& name, std::vector<std::string> const& labels) {
        std::string const number = std::to_string(charSet);
        if (format == Format::JSON)
            lines.push_back("{\"number\": " + number + ", \"name\": \"" + name + "\", \"labels\": [" +
                            joined(labels, "\"", "\", \"", "\"") + "]}");
        else
            lines.push_back(number + "\t" + name + joined(labels, "\t", " ", ""));
    };
    for (kx7::CharSetInfo const& info : kx7::charSets())
        if (kx7::hasConverter(info.charSet))
            add(info.charSet, info.name, labelsOf(info, registry));
    add(KX7CS_OS_DEFAULT, "KX7CS_OS_DEFAULT", {});
    return format == Format::JSON ? joined(lines, "[\n  ", ",\n  ", "\n]\n") : joined(lines, "", "\n", "\n");
}

/** One line a set: number and name, after the name of the input if there are several. */
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
            Input input(file);
            files.check(input);
            if (output.existingFile() && FileId(input.status()) == *output.existingFile())
                throw UsageError(input.name() + ": is the output, too");
            std::vector<kx7::CharSetInfo const*> const charSets = guess(input);
            std::string text;
            for (kx7::CharSetInfo const* const charSet : charSets)
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
        catch (UsageError const& error) {
            report(error.what());
            status = std::max<int>(status, EXIT_USAGE);
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
    if (options.literal)
        kx7::registerCharSets();
    CharSet const from(charSetOf(options.from, options.labels));
    CharSet const to(charSetOf(options.to, options.labels));
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
        case Action::LIST: print(listText(options.list, options.labels)); break;
        case Action::GUESS: status = guessAll(options); break;
        case Action::CONVERT: convertAll(options, status); break;
    }
}

/** What is opened must not take the place of a standard descriptor that is closed: messages would be written into it.
 */
void occupyStandardDescriptors()
{
    for (int const file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(file, F_GETFD) == -1)
            open("/", O_PATH);  // there without any device, and neither read nor written
}

}  // namespace

int main(int argc, char** argv)
{
    occupyStandardDescriptors();

#ifdef M_ARENA_MAX
    // A heap for each of many threads takes more memory than they use.
    mallopt(M_ARENA_MAX, 2);
#endif

    // A reader that has gone shows as EPIPE instead, a file beyond the limit of the process as EFBIG.
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);

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
