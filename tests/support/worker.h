#pragma once

#include "platform/threads/thread.h"
#include "platform/threads/wait.h"

#include <gtest/gtest.h>

#include <functional>

namespace support {

/// A thread of the layer that runs a function; its end is awaited by the destructor.
class Worker {
  public:
    explicit Worker(std::function<DWORD()> work) : work_(std::move(work)) {
        handle = CreateThread(nullptr, 0, &Worker::run, this, 0, nullptr);
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    ~Worker() {
        EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(CloseHandle(handle));
    }

    HANDLE handle;

  private:
    static DWORD run(LPVOID self) { return static_cast<Worker*>(self)->work_(); }

    std::function<DWORD()> work_;
};

} // namespace support
