#include "platform/messages/window_table.h"

#include "platform/base/never_destroyed.h"

#include <array>
#include <deque>
#include <mutex>

namespace tarnel {

constinit std::array<std::atomic<WindowChunk*>, max_window_chunks> window_chunks{};

namespace {

constexpr int generation_shift = 18;

struct Table {
    std::mutex table_lock;
    std::uint32_t chunk_count = 0;
    std::deque<WindowSlot*> free; // used in turn, so that a handle comes back as late as possible
};

Table& table() {
    static NeverDestroyed<Table> instance;
    return instance.get();
}

void add_chunk(Table& windows) {
    auto* chunk = new WindowChunk;
    std::uint32_t place = windows.chunk_count * window_slots_per_chunk;
    for (WindowSlot& slot : *chunk) {
        slot.place = place++;
        windows.free.push_back(&slot);
    }
    window_chunks[windows.chunk_count++].store(chunk, std::memory_order_release);
}

} // namespace

WindowSlot* take_window_slot(HWND& handle) {
    Table& windows = table();
    const std::lock_guard guard(windows.table_lock);
    if (windows.free.empty()) {
        if (windows.chunk_count == max_window_chunks) {
            return nullptr;
        }
        add_chunk(windows);
    }
    WindowSlot* slot = windows.free.front();
    windows.free.pop_front();
    const std::uint64_t generation = ++slot->generation;
    handle =
        reinterpret_cast<HWND>(generation << generation_shift | std::uint64_t{slot->place} << 2);
    return slot;
}

void give_back_window_slot(WindowSlot& slot) {
    Table& windows = table();
    const std::lock_guard guard(windows.table_lock);
    windows.free.push_back(&slot);
}

} // namespace tarnel
