// kx7text fuzzing - strings read from streams that come in pieces or break off, and written to them, against a model.
#include <sstream>
#include <streambuf>
#include <utility>

#include "tests/fuzz/Fuzz.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;

namespace {

constexpr size_t NOWHERE = ~size_t{0};

/** Gives its bytes in pieces, and throws once before the byte at `broken`. */
class Pieces : public std::streambuf {
public:
    Pieces(std::string bytes, size_t length, size_t broken)
        : m_bytes(std::move(bytes)), m_length(length), m_broken(broken)
    {
    }

protected:
    int_type underflow() override
    {
        if (m_at == m_broken) {
            m_broken = NOWHERE;
            throw 1;
        }
        size_t const end = std::min({m_bytes.size(), m_at + m_length, m_at < m_broken ? m_broken : NOWHERE});
        if (end == m_at)
            return traits_type::eof();
        setg(&m_bytes[m_at], &m_bytes[m_at], &m_bytes[0] + end);
        m_at = end;
        return traits_type::to_int_type(*gptr());
    }

private:
    std::string m_bytes;
    size_t const m_length;
    size_t m_broken;
    size_t m_at = 0;
};

int byteOf(Pieces& pieces)
{
    try {
        return pieces.sbumpc();
    }
    catch (int) {
        return pieces.sbumpc();
    }
}

bool isSpace(char c)
{
    return strchr(" \t\n\v\f\r", c) && c != 0;
}

/** What a reader has to do. */
struct Model {
    std::string bytes;
    size_t broken;
    size_t at = 0;
    std::streamsize width = 0;
    std::ios_base::iostate state = std::ios_base::goodbit;

    enum Next { BYTE, END, BREAK };

    Next next()
    {
        if (at == broken) {
            broken = NOWHERE;
            return BREAK;
        }
        return at == bytes.size() ? END : BYTE;
    }

    /** Bytes until `ends`, the width, 0xFF or the end. */
    template <class Ends>
    std::string take(std::streamsize limit, Ends ends, bool consumesEnd)
    {
        std::string taken;
        while (limit <= 0 || static_cast<std::streamsize>(taken.size()) + 1 < limit) {
            Next const what = next();
            if (what == BREAK)
                break;
            if (what == END || bytes[at] == '\xFF') {
                state |= std::ios_base::eofbit;
                break;
            }
            if (ends(bytes[at])) {
                at += consumesEnd;
                break;
            }
            taken += bytes[at++];
        }
        return taken;
    }

    std::string word()
    {
        Next what;
        while ((what = next()) == BYTE && isSpace(bytes[at]))
            ++at;
        if (what == END)
            state |= std::ios_base::eofbit;
        return what == BYTE ? take(std::exchange(width, 0), isSpace, false) : std::string();
    }

    std::string line(char delimiter)
    {
        return take(
            std::exchange(width, 0), [delimiter](char c) { return c == delimiter; }, true);
    }
};

void write(KX7UString const& s, Input& input)
{
    std::ostringstream out;
    unsigned int const how = input.byte();
    auto const width = static_cast<std::streamsize>(input.below(40));
    out.width(width);
    out.fill('.');
    out << (how & 1 ? std::left : how & 2 ? std::right : std::internal) << s;
    std::string expected = KX7UString(s).c_str(KX7CS_OS_DEFAULT);
    if (static_cast<std::streamsize>(expected.size()) < width) {
        std::string const fill(static_cast<size_t>(width) - expected.size(), '.');
        expected = how & 1 ? expected + fill : fill + expected;
    }
    require(out.str() == expected && out.width() == 0, "written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    Input input(data, size);
    size_t const length = 1 + input.below(32);
    size_t const broken = input.below(256);
    auto const operations = input.text<char>(input.below(24));
    Model model = {input.rest<char>(), broken < 128 ? broken : NOWHERE};
    Pieces pieces(model.bytes, length, model.broken);
    std::istream in(&pieces);
    KX7UString s;
    Input steps(reinterpret_cast<uint8_t const*>(operations.data()), operations.size());
    while (steps.left() != 0) {
        unsigned int const step = steps.byte();
        if (step & 0x40)
            model.width = static_cast<std::streamsize>(steps.below(8)) - 1;
        if (step & 0x80)
            model.state = std::ios_base::goodbit;
        in.width(model.width);
        in.clear(model.state);
        std::string bytes;
        char const delimiter = static_cast<char>(steps.byte());
        switch (step & 3) {
            case 0:
                bytes = model.word();
                in >> s;
                break;
            case 1:
                bytes = model.line(delimiter);
                getline(in, s, delimiter);
                break;
            case 2:
                bytes = model.line('\r');
                getline(in, s);
                break;
            default: write(s, steps); continue;
        }
        if (bytes.empty())
            model.state |= std::ios_base::failbit;
        KX7UString const expected(bytes.data(), static_cast<unsigned int>(bytes.size()), KX7CS_OS_DEFAULT);
        expectText(s, textOf(expected));
        require(in.rdstate() == model.state, "state");
        require(in.width() == model.width, "width");
    }
    // What is left in the stream is what the model has left.
    model.broken = NOWHERE;
    std::string rest;
    for (int byte; (byte = byteOf(pieces)) != EOF;)
        rest += static_cast<char>(byte);
    require(rest == model.bytes.substr(model.at), "rest");
    return 0;
}
