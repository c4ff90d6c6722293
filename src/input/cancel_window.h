#pragma once

#include <pthread.h>

/// The only places where the input thread may be cancelled are its waits and the time between two
/// passes over the devices: cancellation is off for the rest of its life, so nothing half done is
/// ever torn.

/// Turns cancellation off for the calling thread.
inline void forbidCancel() {
    int before = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
}

/// Ends the calling thread here if it is to be cancelled.
inline void allowCancel() {
    int before = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before);
    pthread_testcancel();
    pthread_setcancelstate(before, &before);
}

/// Allows cancellation while it lives.
class CancelWindow {
 public:
    CancelWindow() { pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before_); }
    ~CancelWindow() {
        int unused = 0;
        pthread_setcancelstate(before_, &unused);
    }
    CancelWindow(const CancelWindow&) = delete;
    CancelWindow& operator=(const CancelWindow&) = delete;

 private:
    int before_ = PTHREAD_CANCEL_DISABLE;
};
