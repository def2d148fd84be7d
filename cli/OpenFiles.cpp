// kx7text - kx7conv: how many inputs are open at once.
#include "OpenFiles.h"

#include <fcntl.h>
#include <sys/resource.h>

namespace kx7conv {

namespace {

/** Of an input: itself, its output, their folders, and what is opened to put the output into its place. */
constexpr unsigned int DESCRIPTORS_PER_INPUT = 5;

/** A list of names, the folders on the way to the one that is read, changed folders, an output that all share. */
constexpr unsigned int OTHER_DESCRIPTORS = 12;

/** The descriptors that can still be opened, but no more than `most`. */
unsigned int freeDescriptors(unsigned int most)
{
    rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) == -1)
        return most;
    unsigned int count = 0;
    for (rlim_t file = 0; file < limit.rlim_cur && count < most; ++file)
        count += fcntl(static_cast<int>(file), F_GETFD) == -1;
    return count;
}

}  // namespace

OpenFiles::OpenFiles(unsigned int most)
{
    unsigned int const count = freeDescriptors(most * DESCRIPTORS_PER_INPUT + OTHER_DESCRIPTORS);
    m_free =
        count < DESCRIPTORS_PER_INPUT + OTHER_DESCRIPTORS ? 1 : (count - OTHER_DESCRIPTORS) / DESCRIPTORS_PER_INPUT;
}

void OpenFiles::enter()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_left.wait(lock, [this] { return m_free != 0; });
    --m_free;
}

void OpenFiles::leave()
{
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        ++m_free;
    }
    m_left.notify_one();
}

}  // namespace kx7conv
