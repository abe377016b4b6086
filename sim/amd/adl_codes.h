// What AMD's library answers, beside kAdlOk and kAdlWarningNoData, which its client knows too.
#pragma once

namespace gputune::sim {

constexpr int kAdlError = -1;
constexpr int kAdlInvalidParameter = -3;
constexpr int kAdlInvalidAdapterIndex = -5;
constexpr int kAdlNotSupported = -8;

}  // namespace gputune::sim
