// What only tests on the native machine can set.
#pragma once

#include <cstdint>
#include <string>

namespace gputune::test {

// A display that the display kernel opens under this name, as this video present source.
void SetDisplay(std::wstring const& name, std::uint32_t source);

}  // namespace gputune::test
