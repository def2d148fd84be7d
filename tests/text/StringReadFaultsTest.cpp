// kx7text tests - strings read from streams whose buffer, or whose tied stream, fails.
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <streambuf>

#include "kx7/text/KX7UString.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;

namespace {

auto const GOOD = std::ios_base::goodbit;
auto const END = std::ios_base::eofbit;
auto const FAIL = std::ios_base::failbit;

std::istream& readWord(std::istream& in, KX7UString& s)
{
    return in >> s;
}

std::istream& readLine(std::istream& in, KX7UString& s)
{
    return getline(in, s, '\n');
}

enum class Fault { THROWS, ENDS };

/**
 * A stream buffer that keeps nothing: each byte is looked at by underflow() and consumed by uflow(), one of which fails
 * at one byte, however often it is asked.
 */
class FaultyBuffer : public std::streambuf {
public:
    FaultyBuffer(std::string const& bytes, size_t lookedAt, size_t consumed, Fault fault)
        : m_bytes(bytes), m_lookedAt(lookedAt), m_consumed(consumed), m_fault(fault)
    {
    }

    size_t consumedBytes() const { return m_next; }

protected:
    int_type underflow() override { return m_next == m_lookedAt ? fail() : current(); }

    int_type uflow() override
    {
        ++m_calls;
        if (m_next == m_consumed)
            return fail();
        int_type const byte = current();
        if (byte != traits_type::eof())
            ++m_next;
        return byte;
    }

private:
    int_type current() const
    {
        // A reader that asks for ever comes to an end here, and not at the memory of the machine.
        if (m_next == m_bytes.size() || m_calls > m_bytes.size())
            return traits_type::eof();
        return traits_type::to_int_type(m_bytes[m_next]);
    }

    int_type fail() const
    {
        if (m_fault == Fault::THROWS)
            throw std::runtime_error("broken");
        return traits_type::eof();
    }

    std::string m_bytes;
    size_t m_lookedAt;
    size_t m_consumed;
    Fault m_fault;
    size_t m_next = 0;
    size_t m_calls = 0;
};

constexpr size_t NEVER = SIZE_MAX;

enum class Reader { WORD, LINE };

struct FaultRow {
    Reader reader;
    std::string bytes;
    size_t blanks;  ///< that a reader of words passes over
    size_t length;  ///< bytes of text after them, before what ends it
};

/** One fault at each byte in turn: the bytes before it are read, and no reader asks for ever. */
void expectFaults(FaultRow const& row, bool consuming, Fault fault)
{
    for (size_t at = 0; at <= row.blanks + row.length; ++at) {
        std::string const what = row.bytes + (consuming ? ": consuming" : ": looking at") + " byte " +
                                 std::to_string(at) + (fault == Fault::THROWS ? " throws" : " ends");
        FaultyBuffer buffer(row.bytes, consuming ? NEVER : at, consuming ? at : NEVER, fault);
        std::istream in(&buffer);
        KX7UString s = stringOf(u"old");
        if (row.reader == Reader::WORD)
            EXPECT_NO_THROW(in >> s) << what;
        else
            EXPECT_NO_THROW(getline(in, s, '\n')) << what;
        bool const ended = at == row.blanks + row.length;
        size_t const length = at <= row.blanks ? 0 : at - row.blanks;
        expectText(s, std::u16string(length, u'x'), what);
        // What ends a word is never consumed; what ends a line is.
        bool const reached = !(consuming && ended && row.reader == Reader::WORD);
        std::ios_base::iostate state = reached && fault == Fault::ENDS ? END : GOOD;
        if (length == 0)
            state |= FAIL;
        EXPECT_EQ(in.rdstate(), state) << what;
        EXPECT_EQ(buffer.consumedBytes(), at) << what << ": a byte is consumed where it is taken, and nowhere else";
    }
}

}  // namespace

TEST(StringRead, EndsWhereTheBufferFailsToLookAtOrToConsumeAByte)
{
    FaultRow const rows[] = {
        {Reader::WORD, "xxx ", 0, 3},
        {Reader::WORD, "   xxx ", 3, 3},
        {Reader::LINE, "xxx\n", 0, 3},
        {Reader::LINE, "\n", 0, 0},
    };
    for (FaultRow const& row : rows)
        for (bool const consuming : {false, true})
            for (Fault const fault : {Fault::THROWS, Fault::ENDS})
                expectFaults(row, consuming, fault);
}

TEST(StringRead, LeavesTheWidthWhereConsumingABlankFails)
{
    for (Fault const fault : {Fault::THROWS, Fault::ENDS}) {
        FaultyBuffer buffer("  x", NEVER, 1, fault);
        std::istream in(&buffer);
        in.width(3);
        KX7UString s;
        in >> s;
        EXPECT_EQ(in.width(), 3) << "the input failed before the word";
    }
}

namespace {

/** Counts how often it is flushed, and fails then. */
class FlushedBuffer : public std::streambuf {
public:
    enum class Flush { WELL, FAILS, THROWS };

    explicit FlushedBuffer(Flush flush) : m_flush(flush) {}

    int flushes() const { return m_flushes; }

protected:
    int sync() override
    {
        ++m_flushes;
        if (m_flush == Flush::THROWS)
            throw std::runtime_error("nothing can be written");
        return m_flush == Flush::FAILS ? -1 : 0;
    }

private:
    Flush m_flush;
    int m_flushes = 0;
};

}  // namespace

TEST(StringRead, FlushesTheTiedStreamWhoseFailureStaysThere)
{
    struct {
        char const* what;
        FlushedBuffer::Flush flush;
        std::ios_base::iostate exceptions;
        std::ios_base::iostate state;
    } const rows[] = {
        {"flushed well", FlushedBuffer::Flush::WELL, std::ios_base::badbit, GOOD},
        {"fails", FlushedBuffer::Flush::FAILS, GOOD, std::ios_base::badbit},
        {"fails, and its stream throws", FlushedBuffer::Flush::FAILS, std::ios_base::badbit, std::ios_base::badbit},
        {"throws", FlushedBuffer::Flush::THROWS, GOOD, std::ios_base::badbit},
        {"throws, and its stream too", FlushedBuffer::Flush::THROWS, std::ios_base::badbit, std::ios_base::badbit},
    };
    for (auto const& row : rows) {
        for (auto const read : {readWord, readLine}) {
            FlushedBuffer buffer(row.flush);
            std::ostream tied(&buffer);
            tied.exceptions(row.exceptions);
            std::istringstream in("abc\n");
            in.exceptions(std::ios_base::badbit);
            in.tie(&tied);
            KX7UString s = stringOf(u"old");
            EXPECT_NO_THROW(read(in, s)) << row.what;
            EXPECT_EQ(buffer.flushes(), 1) << row.what;
            expectText(s, u"abc", row.what);
            EXPECT_EQ(in.rdstate(), GOOD) << row.what;
            EXPECT_EQ(tied.rdstate(), row.state) << row.what;
        }
    }
}

TEST(StringRead, FlushesTheTiedStreamOfAGoodStreamOnly)
{
    for (auto const read : {readWord, readLine}) {
        FlushedBuffer buffer(FlushedBuffer::Flush::WELL);
        std::ostream tied(&buffer);
        std::istringstream in("abc\n");
        in.tie(&tied);
        in.setstate(std::ios_base::eofbit);
        KX7UString s;
        read(in, s);
        EXPECT_EQ(buffer.flushes(), 0) << "as the standard's readers do";
    }
}
