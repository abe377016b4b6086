// What the vendor's library answers.
#pragma once

namespace gputune::sim {

constexpr int kOk = 0;
constexpr int kError = -1;
constexpr int kInvalidParameter = -3;
constexpr int kInvalidAdapterIndex = -5;
constexpr int kNotSupported = -8;
constexpr int kNoMoreData = -100;

}  // namespace gputune::sim
