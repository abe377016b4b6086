#include "platform/memory.h"

#include <windows.h>

#include <cstdint>

namespace gputune::platform {

std::size_t ReadableBytes(void const* address) {
    constexpr std::size_t kFarEnough = 16 * 1024 * 1024;
    auto const start = reinterpret_cast<std::uintptr_t>(address);
    std::uintptr_t end = start;
    // One allocation may be several regions: pages that were written to count apart from those that were not.
    while (end - start < kFarEnough) {
        MEMORY_BASIC_INFORMATION region;
        if (::VirtualQuery(reinterpret_cast<void const*>(end), &region, sizeof region) == 0 ||
            region.State != MEM_COMMIT || (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) != 0) {
            break;
        }
        end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    }
    return end - start;
}

}  // namespace gputune::platform
