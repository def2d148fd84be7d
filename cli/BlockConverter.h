// kx7text - kx7conv: what converts the blocks of an input, and the faults that it finds.
#ifndef KX7_CLI_BLOCKCONVERTER_H
#define KX7_CLI_BLOCKCONVERTER_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kx7conv {

/** The offset of a fault whose place is not known. */
constexpr uint64_t NO_OFFSET = UINT64_MAX;

/** Bytes that are illegal, or a character that the target cannot represent. */
struct Fault {
    uint64_t offset;     ///< of the first byte, in the block
    uint64_t lineFeeds;  ///< before it in the block
    std::string reason;
};

/** What convert() made of a block, beside output and faults. */
struct BlockResult {
    size_t used;         ///< bytes; all, but for an incomplete character at the end of the block
    uint64_t lineFeeds;  ///< in what is used
    bool stopped;        ///< with OnError::STOP, at the first fault; or at the end of the text
};

/** Converts the blocks of an input one after another, or any one of them if it begins and ends between characters. */
class BlockConverter {
public:
    /** Called when output or list of faults are full; takes both. */
    using Drain = std::function<void()>;

    BlockConverter(size_t outputSize) : m_output(outputSize) {}
    virtual ~BlockConverter() = default;

    /** Throws what `drain` throws. */
    virtual BlockResult convert(unsigned char const* bytes, size_t size, bool isFirst, bool isLast,
                                Drain const& drain) = 0;

    unsigned char const* output() const { return m_output.data(); }
    size_t outputSize() const { return m_outputSize; }
    std::vector<Fault> const& faults() const { return m_faults; }
    uint64_t faultCount() const { return m_faultCount; }

    /** Forgets output and faults. */
    void clear()
    {
        m_outputSize = 0;
        m_faults.clear();
        m_faultCount = 0;
    }

protected:
    std::vector<unsigned char> m_output;
    size_t m_outputSize = 0;
    std::vector<Fault> m_faults;
    uint64_t m_faultCount = 0;
};

}  // namespace kx7conv

#endif
