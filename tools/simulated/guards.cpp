#include "simulated/guards.h"

#include <pthread.h>

namespace {

thread_local int guards = 0;

}  // namespace

// The linker leads the calls of these functions here (--wrap).
// NOLINTBEGIN(bugprone-reserved-identifier): its names
extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t*);
int __real_pthread_mutex_unlock(pthread_mutex_t*);

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (guards == 0 && beforeGuard) {
        beforeGuard();
    }
    ++guards;
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    --guards;
    return __real_pthread_mutex_unlock(mutex);
}

}  // extern "C"

// NOLINTEND(bugprone-reserved-identifier)
