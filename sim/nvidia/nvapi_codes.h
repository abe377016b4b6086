// What NVAPI answers, and the text it has for that.
#pragma once

#include <string_view>

namespace gputune::sim {

constexpr int kNvOk = 0;
constexpr int kNvError = -1;
constexpr int kNvNotInitialized = -4;
constexpr int kNvInvalidArgument = -5;
constexpr int kNvWrongVersion = -9;
constexpr int kNvNoGpuHandle = -101;

constexpr std::string_view NvStatusText(int status) {
    switch (status) {
        case kNvOk:
            return "NVAPI_OK";
        case kNvError:
            return "NVAPI_ERROR";
        case -3:
            return "NVAPI_NO_IMPLEMENTATION";
        case kNvNotInitialized:
            return "NVAPI_API_NOT_INITIALIZED";
        case kNvInvalidArgument:
            return "NVAPI_INVALID_ARGUMENT";
        case -6:
            return "NVAPI_NVIDIA_DEVICE_NOT_FOUND";
        case kNvWrongVersion:
            return "NVAPI_INCOMPATIBLE_STRUCT_VERSION";
        case -104:
            return "NVAPI_NOT_SUPPORTED";
        case kNvNoGpuHandle:
            return "NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE";
        default:
            return "NVAPI_UNKNOWN_ERROR";
    }
}

}  // namespace gputune::sim
