#pragma once

#include "platform/base/types.h"

#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Sends texts to whoever is connected to a port, one client after the other, from a thread of its
/// own: a client that does not read keeps nobody waiting, and is dropped after ten seconds.
class PointServer {
  public:
    /// Fails when the port cannot be had.
    explicit PointServer(UINT port);
    PointServer(const PointServer&) = delete;
    PointServer& operator=(const PointServer&) = delete;

    /// Sends what is left first.
    ~PointServer();

    /// Sends `text` in its turn; without a client it is dropped.
    void send(std::string text);

  private:
    class Connection;

    std::mutex lock_;
    std::vector<std::string> texts_; ///< that are still to be sent
    HWND mailbox_ = nullptr;         ///< of the thread; has it look for texts
    std::thread thread_;
};
