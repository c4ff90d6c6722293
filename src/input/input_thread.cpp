#include "input/input_thread.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>

#include "base/thread.h"
#include "input/cancel_window.h"
#include "input/listener.h"
#include "input/probe.h"

namespace {

constexpr int kPriority = 0;
constexpr int kPolicy = 1;  // SCHED_FIFO
constexpr int kDetached = 1;

/// Who runs. A thread that has cleared `running` touches no descriptor any more; its identifier is
/// used only while `running` is set.
struct Life {
    std::mutex guard;
    std::condition_variable ended;
    bool running = false;
    bool lastStarted = false;
    pthread_t thread = 0;
};

Life& life() {
    static Life* one = new Life;  // outlives every thread
    return *one;
}

/// Its end is the thread's last deed, by return or by cancellation.
class Run {
 public:
    Run() = default;
    ~Run() {
        const std::lock_guard hold(life().guard);
        life().running = false;
        life().ended.notify_all();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
};

}  // namespace

void startInputThread(InputSlices& slices) {
    bool started = false;
    {
        const std::lock_guard hold(life().guard);
        int problem = 0;
        life().thread = CreateThread(inputCtrl, kPriority, kPolicy, kDetached, &slices, &problem);
        started = life().thread != 0 && problem == 0;
        life().running = started;
        life().lastStarted = started;
    }
    if (!started) {
        slices.devices.listenerAlive = 0;  // the next look at the devices tries again
        std::puts("thread create error");
    }
}

void stopInputThread() {
    std::unique_lock hold(life().guard);
    if (life().running) {
        pthread_cancel(life().thread);
    }
    life().ended.wait(hold, [] { return !life().running; });
}

void reportInputThreadCancel() {
    bool started = false;
    {
        const std::lock_guard hold(life().guard);
        started = life().lastStarted;
    }
    if (started) {
        std::puts("input thread cancel");
    } else {
        std::fputs("input thread cancel error\n", stderr);
    }
}

void* inputCtrl(void* slices) {
    forbidCancel();
    const Run run;
    auto& [devices, console] = *static_cast<InputSlices*>(slices);
    openInputFd(devices);
    std::puts("open event ok");
    check_input_event(devices, console.lights);
    if (listenInputFd(devices, console) == 0) {
        std::puts("hot input event");
    }
    return nullptr;
}
