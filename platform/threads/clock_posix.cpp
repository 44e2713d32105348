#include "platform/threads/clock.h"

#include <chrono>
#include <ctime>
#include <thread>

DWORD GetTickCount() {
    // The coarse clock is five times cheaper, and every posted message carries its tick.
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<DWORD>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        std::this_thread::yield();
        return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
