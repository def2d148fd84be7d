// kx7text tests - the encodings of the Encoding Standard that the library has byte for byte.
#ifndef KX7_TESTS_SUPPORT_WEBENCODINGS_H
#define KX7_TESTS_SUPPORT_WEBENCODINGS_H

#include <set>
#include <string>
#include <vector>

#include "tests/model/web/WebHooks.h"

namespace kx7test {

/** Those whose characters have up to two bytes, or three. */
inline bool isMultibyteWebEncoding(std::string const& encoding)
{
    return encoding == "EUC-JP" || encoding == "EUC-KR" || encoding == "Shift_JIS";
}

/** Their names. */
inline std::vector<std::string> const& exactWebEncodings()
{
    static std::vector<std::string> const names = [] {
        std::set<std::string> const others = {"UTF-8",       "GBK",         "gb18030",  "Big5",
                                              "ISO-2022-JP", "replacement", "UTF-16BE", "UTF-16LE"};
        std::vector<std::string> exact;
        for (auto const& [name, labels] : webEncodings())
            if (others.count(name) == 0)
                exact.push_back(name);
        return exact;
    }();
    return names;
}

inline std::u16string unitsOf(std::u32string const& text)
{
    std::u16string units;
    for (char32_t const c : text) {
        if (c > 0xFFFF)
            units += static_cast<char16_t>(0xD7C0 + (c >> 10));
        units += static_cast<char16_t>(c > 0xFFFF ? 0xDC00 + (c & 0x3FF) : c);
    }
    return units;
}

}  // namespace kx7test

#endif
