// kx7text - scope of a converter's load mutex (internal).
#ifndef KX7_CONVERTERS_LOADLOCK_H
#define KX7_CONVERTERS_LOADLOCK_H

#include <pthread.h>

namespace kx7 {

/** Holds a POSIX mutex while it lives. */
class LoadLock {
public:
    explicit LoadLock(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
    ~LoadLock() { pthread_mutex_unlock(&m_mutex); }
    LoadLock(LoadLock const&) = delete;
    LoadLock& operator=(LoadLock const&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

}  // namespace kx7

#endif
