#include "platform/memory.h"

#include <windows.h>

#include <cstdint>

namespace gputune::platform {

std::size_t ReadableBytes(void const* address) {
    MEMORY_BASIC_INFORMATION region;
    if (::VirtualQuery(address, &region, sizeof region) == 0 || region.State != MEM_COMMIT ||
        (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) != 0) {
        return 0;
    }
    auto const end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    return end - reinterpret_cast<std::uintptr_t>(address);
}

}  // namespace gputune::platform
