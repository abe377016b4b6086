#include "amd/adl_memory.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <new>

#include "platform/Mutex.h"
#include "platform/memory.h"

namespace gputune::amd {

namespace {

// ADL may call the allocation callback from threads of its own.
struct Blocks {
    platform::Mutex mutex;
    std::map<void const*, std::size_t> sizes;
};

// Never destroyed: ADL outlives the library's static clean-up.
Blocks& AllBlocks() {
    alignas(Blocks) static unsigned char storage[sizeof(Blocks)];
    static auto* const blocks = new (storage) Blocks;
    return *blocks;
}

}  // namespace

void* ADL_STDCALL AllocateForAdl(int size) noexcept {
    if (size < 0) {
        return nullptr;
    }
    // An empty list is a block, too: null would tell the library that memory has run out.
    void* const block = std::malloc(size == 0 ? 1 : static_cast<std::size_t>(size));
    if (block == nullptr) {
        return nullptr;
    }
    try {
        Blocks& blocks = AllBlocks();
        std::scoped_lock const lock(blocks.mutex);
        blocks.sizes[block] = static_cast<std::size_t>(size);
    } catch (...) {
        std::free(block);
        return nullptr;
    }
    return block;
}

void ReleaseFromAdl(void* block) noexcept {
    Blocks& blocks = AllBlocks();
    std::scoped_lock const lock(blocks.mutex);
    if (blocks.sizes.erase(block) != 0) {
        std::free(block);
    }
}

std::size_t SizeOfAdlBlock(void const* block) noexcept {
    Blocks& blocks = AllBlocks();
    std::scoped_lock const lock(blocks.mutex);
    auto const found = blocks.sizes.find(block);
    return found == blocks.sizes.end() ? platform::ReadableBytes(block) : found->second;
}

}  // namespace gputune::amd
