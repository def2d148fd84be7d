// kx7text - kx7conv: the order in which threads do what is done one after another.
#ifndef KX7_CLI_TURNS_H
#define KX7_CLI_TURNS_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>

namespace kx7conv {

/**
 * Numbered turns: 0 comes first, and each turn belongs to one thread. abort() ends them all. Threads may call all
 * members but rethrow() at once.
 */
class Turns {
public:
    /** Waits for a turn, or until somebody aborts. */
    void await(uint64_t turn)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_ended.wait(lock, [&] { return m_turn == turn || m_aborted; });
    }

    /** Ends the turn, which is this thread's. */
    void end()
    {
        {
            std::lock_guard<std::mutex> const lock(m_mutex);
            ++m_turn;
        }
        m_ended.notify_all();
    }

    /** Ends all turns with the exception at hand. The first one counts. */
    void abort()
    {
        {
            std::lock_guard<std::mutex> const lock(m_mutex);
            if (!m_aborted)
                m_failure = std::current_exception();
            m_aborted = true;
        }
        m_ended.notify_all();
    }

    bool isAborted() const { return m_aborted; }

    /** Throws the exception of abort(), if there was one. To be called when the other threads have ended. */
    void rethrow() const
    {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    uint64_t m_turn = 0;
    std::atomic<bool> m_aborted{false};
    std::exception_ptr m_failure;
};

}  // namespace kx7conv

#endif
