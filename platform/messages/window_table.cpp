#include "platform/messages/window_table.h"

#include "platform/base/never_destroyed.h"

#include <array>
#include <deque>
#include <mutex>

namespace tarnel {
namespace {

constexpr std::uint32_t slots_per_chunk = 256;
constexpr std::uint32_t max_chunks = 256;
constexpr int generation_shift = 18;
constexpr std::uint64_t place_mask = slots_per_chunk * max_chunks - 1;

using Chunk = std::array<WindowSlot, slots_per_chunk>;

struct Table {
    std::mutex table_lock;
    std::array<std::atomic<Chunk*>, max_chunks> chunks{};
    std::uint32_t chunk_count = 0;
    std::deque<WindowSlot*> free; // used in turn, so that a handle comes back as late as possible
};

Table& table() {
    static NeverDestroyed<Table> instance;
    return instance.get();
}

void add_chunk(Table& windows) {
    auto* chunk = new Chunk;
    std::uint32_t place = windows.chunk_count * slots_per_chunk;
    for (WindowSlot& slot : *chunk) {
        slot.place = place++;
        windows.free.push_back(&slot);
    }
    windows.chunks[windows.chunk_count++].store(chunk, std::memory_order_release);
}

} // namespace

WindowSlot* window_slot(HWND window) {
    const std::uint64_t place = reinterpret_cast<std::uint64_t>(window) >> 2 & place_mask;
    const auto& chunk = table().chunks[place / slots_per_chunk];
    Chunk* const slots = window ? chunk.load(std::memory_order_acquire) : nullptr;
    return slots ? &(*slots)[place % slots_per_chunk] : nullptr;
}

WindowSlot* take_window_slot(HWND& handle) {
    Table& windows = table();
    const std::lock_guard guard(windows.table_lock);
    if (windows.free.empty()) {
        if (windows.chunk_count == max_chunks) {
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
