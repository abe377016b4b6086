// The display outputs as the display kernel knows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace gputune::platform {

// The video present source that a GDI display device name (such as "\\.\DISPLAY1") stands for. Nothing when the kernel
// does not open that name.
std::optional<std::uint32_t> VideoPresentSource(std::wstring_view displayName);

}  // namespace gputune::platform
