// kx7text tests - questions to encoding_rs, with what the model answers.
#ifndef KX7_TESTS_ORACLE_WEB_PEER_H
#define KX7_TESTS_ORACLE_WEB_PEER_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/model/web/WebHooks.h"
#include "tests/oracle/web/PeerDifferences.h"

namespace kx7test {

inline std::string hexOf(std::string_view bytes)
{
    static char const* const digits = "0123456789ABCDEF";
    std::string hex;
    for (char const c : bytes) {
        hex += digits[static_cast<unsigned char>(c) >> 4];
        hex += digits[c & 0xF];
    }
    return hex;
}

inline std::string hexOf(size_t number)
{
    char text[24];
    snprintf(text, sizeof text, "%zX", number);
    return text;
}

/** "41 20AC", with a space before each. */
inline std::string hexOf(std::u32string const& codePoints)
{
    std::string hex;
    for (char32_t const c : codePoints)
        hex += " " + hexOf(static_cast<size_t>(c));
    return hex;
}

/**
 * The questions of a test. Each is written down with the model's answer, changed by the listed differences;
 * compare() asks them all at once. See peer.rs for the lines.
 */
class Peer {
public:
    explicit Peer(std::string const& name) : m_path(testing::TempDir() + "web_peer_" + name + std::to_string(getpid()))
    {
        m_questions.open(m_path + ".in");
        m_expected.open(m_path + ".expected");
    }

    ~Peer()
    {
        for (char const* const suffix : {".in", ".expected", ".out"})
            std::remove((m_path + suffix).c_str());
    }

    Peer(Peer const&) = delete;
    Peer& operator=(Peer const&) = delete;

    void decode(std::string const& encoding, std::string const& bytes)
    {
        std::string answer;
        for (WebDecoded const& model : WebDecoder{encoding}.decode(bytes)) {
            WebDecoded const result = asPeerDecodes(encoding, bytes, model);
            if (result.isError)
                answer += "!" + hexOf(result.begin) + "-" + hexOf(result.end) + " ";
            else
                answer += hexOf(result.codePoints).substr(1) + " ";
        }
        ask("d " + encoding + " " + hexOf(bytes), answer);
    }

    void encode(std::string const& encoding, std::u32string const& codePoints)
    {
        std::string answer;
        for (WebEncoded const& model : WebEncoder{encoding}.encode(codePoints)) {
            WebEncoded const result = asPeerEncodes(encoding, codePoints, model);
            answer += result.isError ? "!" + hexOf(static_cast<size_t>(result.codePoint)) + " " : hexOf(result.bytes);
        }
        ask("e " + encoding + hexOf(codePoints), answer);
    }

    void ask(std::string const& question, std::string answer)
    {
        while (!answer.empty() && answer.back() == ' ')
            answer.pop_back();
        m_questions << question << '\n';
        m_expected << answer << '\n';
    }

    /** A failure for each answer that is another one; the first ones are shown. */
    void compare()
    {
        m_questions.close();
        m_expected.close();
        std::string const command = std::string(KX7_WEB_PEER) + " < " + m_path + ".in > " + m_path + ".out";
        ASSERT_EQ(system(command.c_str()), 0);
        std::ifstream questions(m_path + ".in"), expected(m_path + ".expected"), answers(m_path + ".out");
        size_t differing = 0;
        size_t count = 0;
        for (std::string question, model, peer; std::getline(questions, question); ++count) {
            ASSERT_TRUE(std::getline(expected, model) && std::getline(answers, peer)) << "no answer to " << question;
            if (model == peer)
                continue;
            differing += 1;
            if (differing <= 20)
                ADD_FAILURE() << question << "\n model " << model << "\n peer  " << peer;
        }
        EXPECT_EQ(differing, 0U) << "of " << count << " answers";
        EXPECT_GT(count, 0U);
        std::string rest;
        EXPECT_FALSE(std::getline(answers, rest)) << "an answer without a question: " << rest;
    }

private:
    std::string m_path;
    std::ofstream m_questions, m_expected;
};

}  // namespace kx7test

#endif
