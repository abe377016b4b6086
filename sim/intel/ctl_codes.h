// Result codes of Intel's control library.
#pragma once

namespace gputune::sim {

constexpr int kCtlSuccess = 0;
constexpr int kCtlNotInitialized = 0x40000001;
constexpr int kCtlNotAvailable = 0x40000007;
constexpr int kCtlUnsupportedVersion = 0x40000009;
constexpr int kCtlUnsupportedFeature = 0x4000000A;
constexpr int kCtlInvalidArgument = 0x4000000B;
constexpr int kCtlNullHandle = 0x4000000D;
constexpr int kCtlNullPointer = 0x4000000E;
constexpr int kCtlInvalidSize = 0x4000000F;
constexpr int kCtlUnsupportedSize = 0x40000010;
constexpr int kCtlOverclockNotSupported = 0x44000001;
constexpr int kCtlFrequencyOutsideRange = 0x44000003;
constexpr int kCtlPowerOutsideRange = 0x44000004;
constexpr int kCtlWaiverNotSet = 0x44000008;

}  // namespace gputune::sim
