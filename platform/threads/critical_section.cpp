#include "platform/threads/critical_section.h"

#include <mutex>
#include <new>

namespace {

static_assert(sizeof(std::recursive_mutex) <= sizeof(CRITICAL_SECTION));
static_assert(alignof(std::recursive_mutex) <= alignof(CRITICAL_SECTION));

/// Who has the section mostly leaves it sooner than a sleep would take.
constexpr int looks_before_sleep = 500;

#ifdef __x86_64__
void relax() {
    __builtin_ia32_pause();
}
#else
void relax() {}
#endif

std::recursive_mutex& mutex_of(CRITICAL_SECTION* section) {
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(section->storage));
}

} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    new (section->storage) std::recursive_mutex;
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    std::recursive_mutex& mutex = mutex_of(section);
    for (int looks = 0; looks < looks_before_sleep; ++looks) {
        if (mutex.try_lock()) {
            return;
        }
        relax();
    }
    mutex.lock();
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    mutex_of(section).unlock();
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    mutex_of(section).~recursive_mutex();
}
