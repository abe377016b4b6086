// Result codes of AMD's library, beside those of adl_records.h.
#pragma once

namespace gputune::sim {

constexpr int kAdlError = -1;
constexpr int kAdlInvalidParameter = -3;
constexpr int kAdlInvalidAdapterIndex = -5;
constexpr int kAdlNotSupported = -8;

}  // namespace gputune::sim
