// kx7text - kx7conv: messages in the order of the inputs, and the progress line.
#ifndef KX7_CLI_MESSAGES_H
#define KX7_CLI_MESSAGES_H

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kx7conv {

/** What is written to standard error, from any thread. */
class Messages {
public:
    /** `showsProgress`: there is a progress line, if standard error is a terminal. */
    explicit Messages(bool showsProgress);

    /** Writes a message about the input of a number, once all inputs before it are finished. */
    void post(uint64_t input, std::string const& message);

    /** There will be no more messages about that input. */
    void finish(uint64_t input);

    /** Shows how far an input is, now and then. `size`: 0 where it is not known. */
    void progress(std::string const& name, uint64_t done, uint64_t size);

    /** Wipes the progress line. */
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    struct Waiting {
        std::vector<std::string> messages;
        bool isFinished = false;
    };

    void write(std::string const& message);
    void wipe();

    std::mutex m_mutex;
    uint64_t m_current = 0;  ///< the first input that is not finished
    std::map<uint64_t, Waiting> m_waiting;

    bool const m_showsProgress;
    bool m_lineShown = false;
    std::string m_progressName;
    Clock::time_point m_progressBegan;
    Clock::time_point m_progressShown;
};

}  // namespace kx7conv

#endif
