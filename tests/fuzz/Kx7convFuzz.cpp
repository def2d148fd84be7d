// kx7text fuzzing - kx7conv in this process: arguments of any kind are read or refused; inputs that come in pieces are
// converted, by options that the input chooses, into what a model makes of them.
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "cli/Options.h"
#include "kx7/convert.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/CharSets.h"

using namespace kx7test;
using kx7conv::OnError;

/** The program's main, by this name here. */
int kx7convMain(int argc, char** argv);

namespace {

/** Arguments of any kind; no file is opened. */
void readArguments(Input& input)
{
    std::vector<std::string> arguments;
    std::string const all = input.rest<char>();
    for (size_t begin = 0; begin < all.size();) {
        size_t const end = std::min(all.find('\0', begin), all.size());
        arguments.push_back(all.substr(begin, end - begin));
        begin = end + 1;
    }
    std::vector<char const*> argv = {"kx7conv"};
    for (std::string const& argument : arguments)
        argv.push_back(argument.c_str());
    try {
        kx7conv::Options const options = kx7conv::parseOptions(static_cast<int>(argv.size()), argv.data());
        if (options.action != kx7conv::Action::CONVERT)
            return;
        require(!options.files.empty() || !options.namesFrom.empty(), "nothing to convert");
        require(options.jobs >= 1 && options.jobs <= 64, "number of threads");
    }
    catch (kx7conv::UsageError const& error) {
        require(*error.what() != 0, "refused without a word");
    }
}

/** The place of all files; removed at the end. */
struct Folder {
    Folder()
    {
        char shared[] = "/dev/shm/kx7conv-fuzz-XXXXXX";
        char ordinary[] = "/tmp/kx7conv-fuzz-XXXXXX";
        char const* const made = mkdtemp(shared) ? shared : mkdtemp(ordinary);
        require(made, "folder");
        path = made;
    }

    ~Folder() { std::filesystem::remove_all(path); }

    std::string operator/(std::string const& name) const { return path + "/" + name; }

    std::string path;
};

void store(std::string const& path, std::string const& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

/** What the file holds; "(none)" where there is none. */
std::string stored(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "(none)";
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/** A socket from which each read gets a piece of the text. */
int pieces(std::string const& text, size_t length)
{
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) == 0, "socketpair");
    length = std::max(length, text.size() / 100 + 1);  // no more than a socket holds
    for (size_t at = 0; at < text.size(); at += length)
        require(write(ends[1], text.data() + at, std::min(length, text.size() - at)) > 0, "socket is full");
    close(ends[1]);
    return ends[0];
}

/** Puts another file in the place of a standard one. */
class Redirected {
public:
    Redirected(int standard, int other)
        : m_standard(standard), m_kept(fcntl(standard, F_DUPFD_CLOEXEC, 10)), m_other(other)
    {
        dup2(other, standard);
    }
    ~Redirected()
    {
        dup2(m_kept, m_standard);
        close(m_kept);
        close(m_other);
    }
    Redirected(Redirected const&) = delete;
    Redirected& operator=(Redirected const&) = delete;

    /** All that was written. */
    std::string text() const
    {
        std::string result(static_cast<size_t>(lseek(m_other, 0, SEEK_END)), '\0');
        require(pread(m_other, &result[0], result.size(), 0) == static_cast<ssize_t>(result.size()), "pread");
        return result;
    }

private:
    int const m_standard;
    int const m_kept;
    int const m_other;
};

struct Outcome {
    int status;
    std::string out;
    std::string messages;
};

Outcome run(std::vector<std::string> const& arguments, int standardInput)
{
    std::vector<char*> argv;
    for (std::string const& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    Redirected const in(STDIN_FILENO, standardInput);
    Redirected const out(STDOUT_FILENO, memfd_create("out", MFD_CLOEXEC));
    Redirected const messages(STDERR_FILENO, memfd_create("messages", MFD_CLOEXEC));
    int const status = kx7convMain(static_cast<int>(arguments.size()), argv.data());
    return {status, out.text(), messages.text()};
}

enum class To { STANDARD_OUTPUT, FILE, IN_PLACE, FOLDER, NOWHERE };

struct Setup {
    KX7CharSet from;
    KX7CharSet to;
    OnError onError;
    char32_t substitute;
    kx7conv::ByteOrderMark mark;
};

struct Converted {
    std::string text;
    size_t faults = 0;
};

std::string strictly(std::u16string const& text, KX7CharSet to)
{
    kx7::Bytes const bytes = kx7::encode(text, to);
    return bytes.isLossless() ? bytes.text : std::string();
}

std::u16string utf16(char32_t codePoint)
{
    if (codePoint < 0x10000)
        return std::u16string(1, static_cast<char16_t>(codePoint));
    return {static_cast<char16_t>(0xD7C0 + (codePoint >> 10)), static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF))};
}

std::string insteadOfBytes(Setup const& setup)
{
    if (setup.onError == OnError::SKIP)
        return "";
    if (setup.substitute != 0)
        return strictly(utf16(setup.substitute), setup.to);
    std::string const replacement = strictly(u"\uFFFD", setup.to);
    return replacement.empty() ? strictly(u"?", setup.to) : replacement;
}

std::string insteadOfUnits(std::u16string_view units, Setup const& setup)
{
    if (setup.onError == OnError::SKIP)
        return "";
    if (setup.onError == OnError::REPLACE)
        return strictly(setup.substitute != 0 ? utf16(setup.substitute) : u"?", setup.to);
    std::u16string escape;
    for (char16_t const unit : units) {
        char text[8];
        snprintf(text, sizeof text, "U+%04X", static_cast<unsigned int>(unit));
        escape.append(text, text + 6);
    }
    return strictly(escape, setup.to);
}

/** What has to become of an input: whatever is clean by the functions of whole texts, the rest one by one. */
Converted convert(std::string_view source, Setup const& setup)
{
    Converted result;
    std::string const mark = strictly(u"\uFEFF", setup.from);
    if (setup.mark != kx7conv::ByteOrderMark::KEEP && !mark.empty() && source.substr(0, mark.size()) == mark)
        source.remove_prefix(mark.size());
    for (;;) {
        kx7::Units const decoded = kx7::decode(source, setup.from);
        std::u16string_view units = decoded.text;
        for (;;) {
            kx7::Bytes const encoded = kx7::encode(units, setup.to);
            result.text += encoded.text;
            if (encoded.isComplete())
                break;
            ++result.faults;
            if (setup.onError == OnError::STOP)
                return result;
            units.remove_prefix(static_cast<size_t>(encoded.first.unitOffset));
            result.text += insteadOfUnits(units.substr(0, encoded.first.length), setup);
            units.remove_prefix(encoded.first.length);
        }
        if (decoded.isComplete())
            return result;
        ++result.faults;
        if (setup.onError == OnError::STOP)
            return result;
        result.text += insteadOfBytes(setup);
        source.remove_prefix(static_cast<size_t>(decoded.first.byteOffset) + decoded.first.length);
    }
}

void convertFiles(Input& input)
{
    static Folder const folder;
    constexpr char const* MODES[] = {"strict", "replace", "skip", "escape"};
    constexpr char const* MARKS[] = {"keep", "strip", "add"};
    constexpr char32_t SUBSTITUTES[] = {0, '_', 0xE9, 0x3042, 0x1F600};
    CharSetRow const& from = charSetRows()[input.below(charSetRows().size())];
    CharSetRow const& to = charSetRows()[input.below(charSetRows().size())];
    Setup setup = {from.charSet, to.charSet, static_cast<OnError>(input.below(4)), 0,
                   static_cast<kx7conv::ByteOrderMark>(input.below(3))};
    if (setup.onError == OnError::REPLACE)
        setup.substitute = SUBSTITUTES[input.below(5)];
    auto const where = static_cast<To>(input.below(5));
    unsigned int const flags = input.byte();
    bool const failsOnLoss = flags & 1;
    bool const isPiped = flags & 2 && (where == To::STANDARD_OUTPUT || where == To::FILE || where == To::NOWHERE);
    bool const usesStats = flags & 4;
    size_t const pieceLength = 1 + input.below(32);
    std::string texts[2];
    texts[0] = input.text<char>(input.left() / 2);
    texts[1] = input.rest<char>();

    std::vector<std::string> arguments = {"kx7conv", "-f" + std::to_string(setup.from), "-t" + std::to_string(setup.to),
                                          std::string("--bom=") + MARKS[static_cast<int>(setup.mark)],
                                          "-j" + std::to_string(1 + (flags >> 6))};
    if (where == To::NOWHERE)
        arguments.emplace_back("--check");
    else
        arguments.emplace_back(std::string("--errors=") + MODES[static_cast<int>(setup.onError)]);
    if (where != To::NOWHERE && setup.substitute != 0) {
        char text[32];
        snprintf(text, sizeof text, "--substitute=U+%04X", static_cast<unsigned int>(setup.substitute));
        arguments.emplace_back(text);
    }
    if (where == To::NOWHERE)
        setup.onError = OnError::SKIP;
    if (failsOnLoss)
        arguments.emplace_back("--fail-on-loss");
    if (usesStats)
        arguments.emplace_back("--stats");
    if (flags & 8)
        arguments.emplace_back("--line-buffered");
    if (where == To::FILE)
        arguments.push_back("-o" + folder / "out");
    if (where == To::IN_PLACE)
        arguments.emplace_back("-i.old");
    if (where == To::FOLDER)
        arguments.push_back("--output-dir=" + folder / "out.d");

    std::string const names[] = {folder / "in/a", folder / "in/b"};
    std::filesystem::create_directory(folder / "in");
    store(names[0], texts[0]);
    store(names[1], texts[1]);
    store(folder / "out", "before");
    if (flags & 16 && !isPiped) {
        arguments.insert(arguments.end(), {"-r", folder / "in"});
    }
    else {
        arguments.push_back(isPiped ? "-" : names[0]);
        arguments.push_back(names[1]);
    }
    Outcome const outcome = run(arguments, isPiped ? pieces(texts[0], pieceLength) : open("/dev/null", O_RDONLY));

    Converted converted[2];
    bool bad[2];
    std::string const mark = setup.mark == kx7conv::ByteOrderMark::ADD ? strictly(u"\uFEFF", setup.to) : "";
    bool const refused =
        (setup.mark == kx7conv::ByteOrderMark::ADD && mark.empty()) ||
        (where != To::NOWHERE && setup.substitute != 0 && strictly(utf16(setup.substitute), setup.to).empty());
    for (size_t i = 0; i < 2; ++i) {
        converted[i] = convert(texts[i], setup);
        bad[i] = converted[i].faults != 0 && (setup.onError == OnError::STOP || failsOnLoss || where == To::NOWHERE);
    }
    int const status = refused ? 2 : bad[0] || bad[1];
    std::string const all = refused ? "" : mark + converted[0].text + converted[1].text;
    require(outcome.status == status, "status");
    require(usesStats || outcome.messages.empty() == (status == 0), "messages");
    require(outcome.out == (where == To::STANDARD_OUTPUT ? all : ""), "standard output");
    require(stored(folder / "out") == (where == To::FILE && status == 0 ? all : "before"), "output");
    for (size_t i = 0; i < 2; ++i) {
        std::string const name = i == 0 ? "a" : "b";
        bool const written = !refused && !bad[i];
        bool const replaced = where == To::IN_PLACE && written;
        std::string const text = mark + converted[i].text;
        require(stored(names[i]) == (replaced ? text : texts[i]), "file in place");
        require(stored(names[i] + ".old") == (replaced ? texts[i] : "(none)"), "old file");
        require(stored(folder / ("out.d/" + name)) == (where == To::FOLDER && written ? text : "(none)"),
                "file in folder");
    }
    for (auto const& entry : std::filesystem::directory_iterator(folder.path))
        std::filesystem::remove_all(entry);
}

/** The sets that --guess names are those in which the text is clean. */
void guess(Input& input)
{
    size_t const pieceLength = 1 + input.below(32);
    std::string const text = input.rest<char>();
    Outcome const outcome = run({"kx7conv", "--guess"}, pieces(text, pieceLength));
    std::string lines = "\n" + outcome.out;
    size_t expected = 0;
    for (CharSetRow const& row : charSetRows()) {
        bool const isClean = kx7::decode(text, row.charSet).isLossless();
        bool const isNamed = lines.find("\n" + std::to_string(row.charSet) + "\t") != std::string::npos;
        require(isNamed == isClean, row.name);
        expected += isClean;
    }
    require(static_cast<size_t>(std::count(outcome.out.begin(), outcome.out.end(), '\n')) == expected, "lines");
    require(outcome.status == (expected == 0), "status");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    switch (input.below(8)) {
        case 0:
        case 1: readArguments(input); break;
        case 2: guess(input); break;
        default: convertFiles(input);
    }
    return 0;
}
