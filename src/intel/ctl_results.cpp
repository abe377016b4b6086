#include "intel/ctl_results.h"

#include <algorithm>
#include <iterator>

namespace gputune::intel {

namespace {

struct NamedResult {
    ctl_result_t code;
    std::string_view name;
};

constexpr NamedResult kResults[] = {
    {0x00000000, "[CTL_RESULT_SUCCESS]"},
    {0x40000000, "[CTL_RESULT_ERROR_GENERIC_START]"},
    {0x40000001, "[CTL_RESULT_ERROR_NOT_INITIALIZED]"},
    {0x40000002, "[CTL_RESULT_ERROR_ALREADY_INITIALIZED]"},
    {0x40000003, "[CTL_RESULT_ERROR_DEVICE_LOST]"},
    {0x40000006, "[CTL_RESULT_ERROR_INSUFFICIENT_PERMISSIONS]"},
    {0x40000007, "[CTL_RESULT_ERROR_NOT_AVAILABLE]"},
    {0x40000008, "[CTL_RESULT_ERROR_UNINITIALIZED]"},
    {0x40000009, "[CTL_RESULT_ERROR_UNSUPPORTED_VERSION]"},
    {0x4000000A, "[CTL_RESULT_ERROR_UNSUPPORTED_FEATURE]"},
    {0x4000000B, "[CTL_RESULT_ERROR_INVALID_ARGUMENT]"},
    {0x4000000D, "[CTL_RESULT_ERROR_INVALID_NULL_HANDLE]"},
    {0x4000000E, "[CTL_RESULT_ERROR_INVALID_NULL_POINTER]"},
    {0x4000000F, "[CTL_RESULT_ERROR_INVALID_SIZE]"},
    {0x40000010, "[CTL_RESULT_ERROR_UNSUPPORTED_SIZE]"},
    {0x40000015, "[CTL_RESULT_ERROR_NOT_IMPLEMENTED]"},
    {0x40000019, "[CTL_RESULT_ERROR_ZE_LOADER]"},
    {0x4000001A, "[CTL_RESULT_ERROR_INVALID_OPERATION_TYPE]"},
    {0x4000FFFF, "[CTL_RESULT_ERROR_UNKNOWN]"},
    {0x44000001, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_NOT_SUPPORTED]"},
    {0x44000002, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_VOLTAGE_OUTSIDE_RANGE]"},
    {0x44000003, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_FREQUENCY_OUTSIDE_RANGE]"},
    {0x44000004, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_POWER_OUTSIDE_RANGE]"},
    {0x44000005, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_TEMPERATURE_OUTSIDE_RANGE]"},
    // The missing bracket is deliberate.
    {0x44000006, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_IN_VOLTAGE_LOCKED_MODE"},
    {0x44000007, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_RESET_REQUIRED]"},
    {0x44000008, "[CTL_RESULT_ERROR_CORE_OVERCLOCK_WAIVER_NOT_SET]"},
};

}  // namespace

std::string_view CtlResultName(ctl_result_t result) {
    auto const* const found = std::find_if(std::begin(kResults), std::end(kResults),
                                           [=](NamedResult const& named) { return named.code == result; });
    return found == std::end(kResults) ? "[Unknown Error]" : found->name;
}

}  // namespace gputune::intel
