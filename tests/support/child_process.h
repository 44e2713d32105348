#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

/// Runs `work` in a forked child, which ends with 1 when a check in it has failed.
template <typename Work>
pid_t start_child(Work work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    return child;
}

/// Whether it has ended without a failure.
inline bool ended_well(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

/// Runs `work` as somebody without any rights.
template <typename Work>
void as_nobody(Work work) {
    EXPECT_TRUE(ended_well(start_child([&] {
        EXPECT_TRUE(::geteuid() != 0 || ::setuid(65534) == 0);
        work();
    })));
}

} // namespace support
