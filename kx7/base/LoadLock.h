// kx7text - scopes of the mutexes that guard what is built on first use (internal).
#ifndef KX7_BASE_LOADLOCK_H
#define KX7_BASE_LOADLOCK_H

#include <pthread.h>

namespace kx7 {

/** Held shared by every thread in a LoadLock, and alone by one that forks (LoadLock.cpp). */
extern pthread_rwlock_t forkLock;

/**
 * Holds a POSIX mutex while it lives. The process does not fork meanwhile, so that no child finds the mutex locked by a
 * thread that it does not have. A thread has one of these at a time.
 */
class LoadLock {
public:
    explicit LoadLock(pthread_mutex_t& mutex) : m_mutex(mutex), m_holdsFork(pthread_rwlock_rdlock(&forkLock) == 0)
    {
        pthread_mutex_lock(&m_mutex);
    }
    ~LoadLock()
    {
        pthread_mutex_unlock(&m_mutex);
        if (m_holdsFork)
            pthread_rwlock_unlock(&forkLock);
    }
    LoadLock(LoadLock const&) = delete;
    LoadLock& operator=(LoadLock const&) = delete;

private:
    pthread_mutex_t& m_mutex;
    bool m_holdsFork;  ///< not in a thread that forks and converts in a handler of its own
};

}  // namespace kx7

#endif
