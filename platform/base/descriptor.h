#pragma once

#include <cerrno>
#include <utility>

namespace tarnel {

/// Owns one file descriptor and closes it; -1 is none.
class Descriptor {
  public:
    Descriptor() = default;

    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}

    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    ~Descriptor();

    int get() const { return descriptor_; }

    /// Gives the descriptor away.
    int release() { return std::exchange(descriptor_, -1); }

    explicit operator bool() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

/// Calls `call` again for as long as a signal interrupts it.
template <typename Call>
auto retry_on_signal(Call call) {
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR) {
            return result;
        }
    }
}

} // namespace tarnel
