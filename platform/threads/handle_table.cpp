#include "platform/threads/handle_table.h"

#include "platform/base/never_destroyed.h"
#include "platform/threads/wait.h"

#include <vector>

namespace tarnel {
namespace {

struct Slot {
    std::shared_ptr<Waitable> object;
    std::uint32_t generation = 1;
};

struct Table {
    std::mutex table_lock;
    std::vector<Slot> slots;
    std::vector<std::size_t> free;
    std::size_t open = 0;
};

Table& table() {
    static NeverDestroyed<Table> instance;
    return instance.get();
}

// Generation, place and, as everywhere on the system, two zero bits: never null, never -1.
constexpr int place_shift = 2;
constexpr int generation_shift = 26;
constexpr std::uint64_t place_mask = (1U << (generation_shift - place_shift)) - 1;

HANDLE to_handle(std::size_t place, std::uint32_t generation) {
    return reinterpret_cast<HANDLE>(std::uint64_t{generation} << generation_shift |
                                    std::uint64_t{place} << place_shift);
}

/// The slot that `handle` names now, or null. Under the table's lock.
Slot* slot_of(Table& handles, HANDLE handle) {
    const auto value = reinterpret_cast<std::uint64_t>(handle);
    const std::size_t place = value >> place_shift & place_mask;
    if (place >= handles.slots.size()) {
        return nullptr;
    }
    Slot& slot = handles.slots[place];
    return slot.object && to_handle(place, slot.generation) == handle ? &slot : nullptr;
}

} // namespace

HANDLE add_handle(std::shared_ptr<Waitable> object) {
    Table& handles = table();
    const std::lock_guard guard(handles.table_lock);
    if (handles.free.empty()) {
        handles.slots.emplace_back();
        handles.free.push_back(handles.slots.size() - 1);
    }
    const std::size_t place = handles.free.back();
    handles.free.pop_back();
    ++handles.open;
    Slot& slot = handles.slots[place];
    slot.object = std::move(object);
    return to_handle(place, slot.generation);
}

std::shared_ptr<Waitable> find_handle(HANDLE handle) {
    Table& handles = table();
    const std::lock_guard guard(handles.table_lock);
    const Slot* slot = slot_of(handles, handle);
    return slot ? slot->object : nullptr;
}

std::size_t open_handle_count() {
    Table& handles = table();
    const std::lock_guard guard(handles.table_lock);
    return handles.open;
}

} // namespace tarnel

BOOL CloseHandle(HANDLE handle) {
    std::shared_ptr<tarnel::Waitable> object;
    {
        tarnel::Table& handles = tarnel::table();
        const std::lock_guard guard(handles.table_lock);
        if (tarnel::Slot* slot = tarnel::slot_of(handles, handle)) {
            object = std::move(slot->object);
            ++slot->generation;
            --handles.open;
            handles.free.push_back(static_cast<std::size_t>(slot - handles.slots.data()));
        }
    }
    if (!object) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    object->handle_closed();
    return TRUE;
}
