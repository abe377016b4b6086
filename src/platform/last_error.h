#pragma once

#include <cstdint>

namespace gputune::platform {

// The calling thread's last error code; read it before anything else is called.
std::uint32_t LastError();

void SetLastError(std::uint32_t code);

// Codes of the system that decisions rest on, or that the library sets itself.
constexpr std::uint32_t kErrorFileNotFound = 2;
constexpr std::uint32_t kErrorPathNotFound = 3;
constexpr std::uint32_t kErrorNotEnoughMemory = 8;
constexpr std::uint32_t kErrorInvalidName = 123;
constexpr std::uint32_t kErrorModuleNotFound = 126;
constexpr std::uint32_t kErrorBadArguments = 160;
constexpr std::uint32_t kErrorBadPathname = 161;

}  // namespace gputune::platform
