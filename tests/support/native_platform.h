// What only tests on the native machine can set.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace gputune::test {

// A display that the display kernel opens under this name, as this video present source.
void SetDisplay(std::wstring const& name, std::uint32_t source);

// The loads with flags that the library under test has asked for, and how many libraries it has unloaded.
struct Load {
    std::wstring path;
    std::uint32_t flags;
};
std::vector<Load> const& LoadsWithFlags();
int UnloadCount();

}  // namespace gputune::test
