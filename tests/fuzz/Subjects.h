// kx7text fuzzing - every converter with its model.
#ifndef KX7_TESTS_FUZZ_SUBJECTS_H
#define KX7_TESTS_FUZZ_SUBJECTS_H

#include "tests/model/Utf8Model.h"
#include "tests/support/MultibyteSets.h"
#include "tests/support/Probe.h"
#include "tests/support/SingleByteLists.h"

namespace kx7test {

/** A probe of each of the 41 converters. */
inline std::vector<std::unique_ptr<Probe>> const& probes()
{
    static auto const all = [] {
        static std::vector<std::unique_ptr<Model const>> models;
        std::vector<std::unique_ptr<Probe>> result;
        models.push_back(std::make_unique<Utf8Model>());
        result.push_back(std::make_unique<Probe>(g_oConverterUTF8, *models.back()));
        for (MultibyteSet const& set : multibyteSets())
            result.push_back(std::make_unique<Probe>(set.converter, *set.model));
        for (SingleByteList const& set : SINGLE_BYTE_LISTS) {
            models.push_back(std::make_unique<SingleByteModel>(pairsOf(set.list)));
            result.push_back(std::make_unique<Probe>(set.converter, *models.back()));
        }
        return result;
    }();
    return all;
}

}  // namespace kx7test

#endif
