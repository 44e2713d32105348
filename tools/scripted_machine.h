#pragma once

#include <atomic>
#include <string>
#include <thread>

/// A machine that plays a short script on a pseudo terminal, so that the tool can be tried without
/// one: a record of coordinates every 200 ms, until the object goes.
class ScriptedMachine {
  public:
    ScriptedMachine();
    ScriptedMachine(const ScriptedMachine&) = delete;
    ScriptedMachine& operator=(const ScriptedMachine&) = delete;
    ~ScriptedMachine();

    /// The port that it is connected to.
    const std::string& port() const { return port_; }

  private:
    void play() const;

    int line_ = -1;
    std::string port_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};
