#include "tests/support/process_facts.h"

#include "platform/threads/clock.h"
#include "platform/threads/event.h"
#include "platform/threads/wait.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace support {
namespace {

std::size_t entries(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

ProcessFacts count_now() {
    ProcessFacts facts{entries("/proc/self/task"), entries("/proc/self/fd"),
                       tarnel::open_handle_count(), 0};
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        facts.library_mappings += line.find("libTarnelToolBoxLib") != std::string::npos;
    }
    return facts;
}

} // namespace

ProcessFacts process_facts() {
    // What comes once and stays counts from the start: the calling thread's own descriptor, and
    // the thread that a sanitizer starts with the first other thread.
    WaitForSingleObject(CEvent(), 1);
    std::thread([] {}).join();
    return count_now();
}

bool back_to(const ProcessFacts& before) {
    for (int tries = 0; tries < 10'000; ++tries) {
        if (count_now() == before) {
            return true;
        }
        Sleep(1);
    }
    return false;
}

bool no_leaks() {
#if defined(__SANITIZE_ADDRESS__)
    return __lsan_do_recoverable_leak_check() == 0;
#else
    return true;
#endif
}

} // namespace support
