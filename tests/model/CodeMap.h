// kx7text tests - a mapping of a multibyte character set as plain data.
#ifndef KX7_TESTS_MODEL_CODEMAP_H
#define KX7_TESTS_MODEL_CODEMAP_H

#include <utility>
#include <vector>

namespace kx7test {

/** Pairs of code and code point: a byte as it is, two bytes as first * 256 + second. */
using CodePairs = std::vector<std::pair<unsigned int, unsigned int>>;

/** Both directions of a mapping; 0 is what a code or code point without a partner has. */
class CodeMap {
public:
    explicit CodeMap(CodePairs const& pairs) : m_codePoints(0x10000), m_codes(0x110000)
    {
        for (auto const& [code, codePoint] : pairs) {
            m_codePoints.at(code) = codePoint;
            if (codePoint <= 0x10FFFF)
                m_codes[codePoint] = code;
        }
    }

    unsigned int codePointOf(unsigned int code) const { return m_codePoints.at(code); }
    unsigned int codeOf(unsigned int codePoint) const { return m_codes.at(codePoint); }

private:
    std::vector<unsigned int> m_codePoints;
    std::vector<unsigned int> m_codes;
};

}  // namespace kx7test

#endif
