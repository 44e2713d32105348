#pragma once

namespace tarnel {

/// Sets a flag as long as it lives.
class Flag {
  public:
    explicit Flag(int& flag) : flag_(flag) { flag_ = 1; }

    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

    ~Flag() { flag_ = 0; }

  private:
    int& flag_;
};

} // namespace tarnel
