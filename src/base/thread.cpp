#include "base/thread.h"

pthread_t CreateThread(void* (*start)(void*), int priority, int policy, int detach, void* argument,
                       int* problem) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    sched_param scheduling{};
    scheduling.sched_priority = priority;
    pthread_attr_setschedparam(&attributes, &scheduling);
    pthread_attr_setschedpolicy(&attributes, policy);
    if (detach != 0) {
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    }
    pthread_t thread = 0;
    const int result = pthread_create(&thread, &attributes, start, argument);
    if (problem != nullptr) {
        *problem = result;
    }
    if (result < 0) {
        return 0;
    }
    pthread_attr_destroy(&attributes);
    return thread;
}
