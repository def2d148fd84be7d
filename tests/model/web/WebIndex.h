// kx7text tests - the indexes of the Encoding Standard.
#ifndef KX7_TESTS_MODEL_WEB_WEBINDEX_H
#define KX7_TESTS_MODEL_WEB_WEBINDEX_H

#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kx7test {

/** What the standard calls null: no code point, no pointer. */
constexpr int WEB_NULL = -1;

/** The folder that `tools/tables/encodingstandard.py --unpack` wrote: KX7_WEB_DATA of the environment or the build. */
inline std::string webDataFolder()
{
    if (char const* const folder = getenv("KX7_WEB_DATA"))
        return folder;
#ifdef KX7_WEB_DATA
    return KX7_WEB_DATA;
#else
    throw std::runtime_error("KX7_WEB_DATA names no folder");
#endif
}

/** The lines of a file there. */
inline std::vector<std::string> webDataLines(std::string const& name)
{
    std::ifstream file(webDataFolder() + "/" + name);
    if (!file)
        throw std::runtime_error(webDataFolder() + "/" + name + ": cannot be read");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/** Pointers and their code points; the first pointer of a code point that has several. */
class WebIndex {
public:
    using Entries = std::vector<std::pair<int, int>>;

    explicit WebIndex(Entries entries) : m_entries(std::move(entries))
    {
        for (auto const& [pointer, codePoint] : m_entries) {
            m_codePoints.emplace(pointer, codePoint);
            m_first.emplace(codePoint, pointer);
            m_last[codePoint] = pointer;
        }
    }

    /** The index of a file "index-NAME.txt", read once. */
    static WebIndex const& named(std::string const& name)
    {
        static std::map<std::string, std::unique_ptr<WebIndex>> read;
        std::unique_ptr<WebIndex>& index = read[name];
        if (index)
            return *index;
        Entries entries;
        for (std::string const& line : webDataLines("index-" + name + ".txt")) {
            if (line.empty() || line[0] == '#')
                continue;
            size_t const tab = line.find('\t');
            entries.emplace_back(std::stoi(line), std::stoi(line.substr(tab + 1), nullptr, 16));
        }
        index = std::make_unique<WebIndex>(std::move(entries));
        return *index;
    }

    /** The same without the entries whose pointer is excluded. */
    WebIndex without(std::function<bool(int)> const& excluded) const
    {
        Entries entries;
        for (auto const& entry : m_entries) {
            if (!excluded(entry.first))
                entries.push_back(entry);
        }
        return WebIndex(std::move(entries));
    }

    /** "index code point" */
    int codePoint(int pointer) const { return found(m_codePoints, pointer); }

    /** "index pointer" */
    int pointer(int codePoint) const { return found(m_first, codePoint); }

    int lastPointer(int codePoint) const { return found(m_last, codePoint); }

    Entries const& entries() const { return m_entries; }

private:
    static int found(std::map<int, int> const& values, int key)
    {
        auto const at = values.find(key);
        return at == values.end() ? WEB_NULL : at->second;
    }

    Entries m_entries;
    std::map<int, int> m_codePoints, m_first, m_last;
};

}  // namespace kx7test

#endif
