#pragma once

#include "platform/messages/window.h"

#include <array>
#include <atomic>

namespace tarnel {

class MessageQueue;

/// The place of one window. Places are never given back to the heap: a poster may look at one
/// without a lock, and finds out under the owner's queue lock whether it still is the window that
/// it means.
struct WindowSlot {
    /// Changed under the owner's queue lock alone; null while the place is free.
    std::atomic<HWND> handle = nullptr;
    std::atomic<MessageQueue*> owner = nullptr;

    /// Fixed while the window lives.
    const WindowSlot* parent = nullptr;

    // The owning thread's alone.
    WindowProcedure procedure = nullptr;
    void* context = nullptr;
    void (*abandon)(void* context) = nullptr;
    bool destroying = false;
    WindowSlot* previous = nullptr; ///< among the thread's windows
    WindowSlot* next = nullptr;

    // The table's.
    std::uint32_t place = 0;
    std::uint32_t generation = 0;
};

constexpr std::uint32_t window_slots_per_chunk = 256;
constexpr std::uint32_t max_window_chunks = 256;

using WindowChunk = std::array<WindowSlot, window_slots_per_chunk>;

/// Every post and dispatch looks here.
extern constinit std::array<std::atomic<WindowChunk*>, max_window_chunks> window_chunks;

/// The place that `window` names, whether it is still that window or not; null for none.
inline WindowSlot* window_slot(HWND window) {
    constexpr std::uint64_t mask = window_slots_per_chunk * max_window_chunks - 1;
    const std::uint64_t place = reinterpret_cast<std::uint64_t>(window) >> 2 & mask;
    WindowChunk* const chunk =
        window_chunks[place / window_slots_per_chunk].load(std::memory_order_acquire);
    return window && chunk ? &(*chunk)[place % window_slots_per_chunk] : nullptr;
}

/// Takes a free place and gives it a new handle, to be published by the owner; null when 65,536
/// windows exist.
WindowSlot* take_window_slot(HWND& handle);

void give_back_window_slot(WindowSlot& slot);

} // namespace tarnel
