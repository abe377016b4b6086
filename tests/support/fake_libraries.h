// Between the native machine's loader and the libraries that a test has put on it (FakeSystem.h). Nothing when it is
// none of those.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace gputune::test {

// The handle; null for a load that fails as ordered. The last error is set.
std::optional<void*> LoadFakeLibrary(std::wstring const& what, std::uint32_t flags);

bool UnloadFakeLibrary(void* handle);

std::optional<void*> FindInFakeLibrary(void* handle, char const* name);

}  // namespace gputune::test
