// kx7text - kx7conv: messages in the order of the inputs, and the progress line.
#include "Messages.h"

#include <cstdio>
#include <unistd.h>

#include "Io.h"

namespace kx7conv {

namespace {

constexpr auto PROGRESS_INTERVAL = std::chrono::milliseconds(200);

std::string mebibytes(double bytes)
{
    char text[64];
    snprintf(text, sizeof text, "%.1f MiB", bytes / (1 << 20));
    return text;
}

}  // namespace

Messages::Messages(bool showsProgress) : m_showsProgress(showsProgress && isatty(STDERR_FILENO) == 1)
{
}

void Messages::post(uint64_t input, std::string const& message)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (input == m_current)
        write(message);
    else
        m_waiting[input].messages.push_back(message);
}

void Messages::finish(uint64_t input)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_waiting[input].isFinished = true;
    auto next = m_waiting.begin();
    while (next != m_waiting.end() && next->first == m_current) {
        for (std::string const& message : next->second.messages)
            write(message);
        next->second.messages.clear();
        if (!next->second.isFinished)
            return;
        next = m_waiting.erase(next);
        ++m_current;
    }
}

void Messages::progress(std::string const& name, uint64_t done, uint64_t size)
{
    if (!m_showsProgress)
        return;
    std::lock_guard<std::mutex> const lock(m_mutex);
    Clock::time_point const now = Clock::now();
    if (name != m_progressName) {
        m_progressName = name;
        m_progressBegan = now;
        m_progressShown = now;
    }
    if (now - m_progressShown < PROGRESS_INTERVAL)
        return;
    m_progressShown = now;
    double const rate = static_cast<double>(done) / std::chrono::duration<double>(now - m_progressBegan).count();
    std::string line = name + ": " + mebibytes(static_cast<double>(done));
    if (size != 0)
        line += " of " + mebibytes(static_cast<double>(size));
    line += ", " + mebibytes(rate) + "/s";
    if (size > done && rate > 0)
        line += ", " + std::to_string(static_cast<uint64_t>(static_cast<double>(size - done) / rate) + 1) + " s left";
    line = messageLine(line);
    line.pop_back();
    writeError("\r" + line + "\x1B[K");
    m_lineShown = true;
}

void Messages::clear()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    wipe();
}

void Messages::write(std::string const& message)
{
    wipe();
    report(message);
}

void Messages::wipe()
{
    if (m_lineShown)
        writeError("\r\x1B[K");
    m_lineShown = false;
}

}  // namespace kx7conv
