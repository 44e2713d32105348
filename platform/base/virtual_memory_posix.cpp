#include "platform/base/last_error.h"
#include "platform/base/never_destroyed.h"
#include "platform/base/virtual_memory.h"

#include <sys/mman.h>

#include <map>
#include <mutex>

namespace {

/// How long each block is: the system wants to hear it again.
struct Blocks {
    std::mutex blocks_lock;
    std::map<LPVOID, std::size_t> sizes;
};

Blocks& blocks() {
    static tarnel::NeverDestroyed<Blocks> instance;
    return instance.get();
}

} // namespace

LPVOID VirtualAlloc(LPVOID address, std::size_t size, DWORD type, DWORD protection) {
    if (address || size == 0 || type != (MEM_COMMIT | MEM_RESERVE) ||
        protection != PAGE_READWRITE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* const block =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const std::lock_guard guard(blocks().blocks_lock);
    blocks().sizes.emplace(block, size);
    return block;
}

BOOL VirtualFree(LPVOID address, std::size_t size, DWORD type) {
    Blocks& known = blocks();
    const std::lock_guard guard(known.blocks_lock);
    const auto block = known.sizes.find(address);
    if (size != 0 || type != MEM_RELEASE || block == known.sizes.end()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    ::munmap(address, block->second);
    known.sizes.erase(block);
    return TRUE;
}
