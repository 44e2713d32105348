#pragma once

#include <new>
#include <utility>

namespace tarnel {

/// A singleton of the layer: built in place at its first use and never destroyed, so that the
/// libraries above still find it while they are unloaded and the process ends.
template <typename T>
class NeverDestroyed {
  public:
    template <typename... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) {
        new (storage_) T(std::forward<Arguments>(arguments)...);
    }

    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

  private:
    alignas(T) unsigned char storage_[sizeof(T)];
};

} // namespace tarnel
