// Which GPU vendor is present, told from the names of the system's display controllers.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace gputune {

enum class GpuVendor : std::uint32_t { Unknown = 0, Amd = 1, Intel = 2, Nvidia = 3 };

// Decide by the captions, in order: the first that names a supported product line. Only discrete lines count, so that
// integrated graphics in front of a card are passed over.
GpuVendor VendorOfCaptions(std::span<std::wstring const> captions);

// Ask the system for its display controllers, log them, and decide. Unknown when none is supported or the question
// failed.
GpuVendor GetVendor();

}  // namespace gputune
