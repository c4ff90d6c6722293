#pragma once

#include <pthread.h>

/// Starts a thread on `start(argument)`, detached when `detach` is not 0.
///
/// `priority` and `policy` are put into the thread's attributes, whose inherit-scheduler setting
/// stays the platform's default; so they take effect only as far as that default lets them.
/// Returns the thread's identifier, or 0 when the creation call gives a negative result. A failure
/// that the platform reports as a positive error number is not recognised: the identifier then
/// means no thread. A caller that uses the identifier passes `problem`, which receives that number
/// (0 when the thread runs). Any thread.
pthread_t CreateThread(void* (*start)(void*), int priority, int policy, int detach, void* argument,
                       int* problem = nullptr);
