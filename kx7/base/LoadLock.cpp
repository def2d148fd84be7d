// kx7text - forks wait until no thread builds a table.
#include "kx7/base/LoadLock.h"

namespace kx7 {

// A fork that waits goes before further loads where the C library has that kind: else they could keep it off for long.
#ifdef PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP
#define KX7_FORK_LOCK PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP
#else
#define KX7_FORK_LOCK PTHREAD_RWLOCK_INITIALIZER
#endif

pthread_rwlock_t forkLock = KX7_FORK_LOCK;

namespace {

void beforeFork()
{
    pthread_rwlock_wrlock(&forkLock);
}

void afterForkInParent()
{
    pthread_rwlock_unlock(&forkLock);
}

void afterForkInChild()
{
    // Made anew: the lock knows its owner by a thread number that the child does not have.
    forkLock = KX7_FORK_LOCK;
}

__attribute__((constructor(101))) void registerHandlers()
{
    pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
}

}  // namespace

}  // namespace kx7
