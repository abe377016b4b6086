// Statuses of NVAPI, beside those of nvapi_records.h, and the texts of all.
#pragma once

#include <string_view>

#include "nvidia/nvapi_records.h"

namespace gputune::sim {

constexpr int kNvapiNotInitialized = -4;
constexpr int kNvapiInvalidArgument = -5;
constexpr int kNvapiWrongVersion = -9;
constexpr int kNvapiNoGpuHandle = -101;

constexpr std::string_view NvapiStatusText(int status) {
    switch (status) {
        case nvidia::kNvapiOk:
            return "NVAPI_OK";
        case nvidia::kNvapiError:
            return "NVAPI_ERROR";
        case nvidia::kNvapiNoImplementation:
            return "NVAPI_NO_IMPLEMENTATION";
        case kNvapiNotInitialized:
            return "NVAPI_API_NOT_INITIALIZED";
        case kNvapiInvalidArgument:
            return "NVAPI_INVALID_ARGUMENT";
        case -6:
            return "NVAPI_NVIDIA_DEVICE_NOT_FOUND";
        case kNvapiWrongVersion:
            return "NVAPI_INCOMPATIBLE_STRUCT_VERSION";
        case -104:
            return "NVAPI_NOT_SUPPORTED";
        case kNvapiNoGpuHandle:
            return "NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE";
        default:
            return "NVAPI_UNKNOWN_ERROR";
    }
}

}  // namespace gputune::sim
