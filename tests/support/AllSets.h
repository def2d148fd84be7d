// kx7text tests - all 41 converters, each with its model and texts for it.
#ifndef KX7_TESTS_SUPPORT_ALLSETS_H
#define KX7_TESTS_SUPPORT_ALLSETS_H

#include "tests/model/Utf8Model.h"
#include "tests/support/MultibyteSets.h"
#include "tests/support/SingleByteLists.h"
#include "tests/support/Texts.h"

namespace kx7test {

inline std::vector<MultibyteSet> const& allSets()
{
    static std::vector<MultibyteSet> const sets = [] {
        std::vector<MultibyteSet> all{
            {"UTF-8", g_oConverterUTF8, std::make_shared<Utf8Model const>(), utf8Fragments(), utf16Fragments(), false}};
        for (SingleByteList const& stored : SINGLE_BYTE_LISTS) {
            BytePairs const pairs = pairsOf(stored.list);
            std::vector<std::string> bytes{"A", "\x1A", "\x81", "\xA1", "\xDB", "\xFF"};
            std::vector<std::u16string> units = detail::unitFragments();
            units.push_back({pairs.back().second});
            all.push_back(
                {stored.name, stored.converter, std::make_shared<SingleByteModel const>(pairs), bytes, units, false});
        }
        for (MultibyteSet const& set : multibyteSets())
            all.push_back(set);
        return all;
    }();
    return sets;
}

}  // namespace kx7test

#endif
