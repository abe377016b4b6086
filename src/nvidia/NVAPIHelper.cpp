#include "nvidia/NVAPIHelper.h"

#include <algorithm>
#include <iterator>

namespace gputune::nvidia {

namespace {

constexpr log::Tag kInitTag{"[NVAPIHelper::NVAPIHelper()]"};
constexpr log::Tag kFetchTag{"[NVAPIHelper::FetchHwmValues()]"};

// The sensors there are, however many the library counts.
std::span<NvThermalSensor const> Sensors(NV_GPU_THERMAL_SETTINGS const& settings) {
    return std::span(settings.sensor).first(std::min<std::size_t>(settings.count, kMaxThermalSensors));
}

}  // namespace

NVAPIHelper::NVAPIHelper(Nvapi& nvapi) : nvapi_(nvapi) {
    log::Entry(kInitTag, "begin");
    constexpr log::Tag kInitializeTag = kInitTag / "NvAPI_Initialize";
    if (!Succeeded(kInitializeTag, nvapi_.NvAPI_Initialize())) {
        return;
    }
    log::Entry(kInitializeTag, "successfully");
    LogInterfaceVersion();
    if (!EnumerateGpus()) {
        return;
    }
    LogNames();
    initOk_ = true;
}

void NVAPIHelper::LogInterfaceVersion() {
    NvShortString version{};
    nvapi_.NvAPI_GetInterfaceVersionString(version);
    log::Entry(kInitTag / "NVAPI Version", log::Bounded(version));
}

bool NVAPIHelper::EnumerateGpus() {
    // The "n" in front is deliberate.
    if (!Succeeded(kInitTag / "nNvAPI_EnumPhysicalGPUs", nvapi_.NvAPI_EnumPhysicalGPUs(gpus_, &gpuCount_))) {
        return false;
    }
    log::Entry(kInitTag / "Total physical gpu count", gpuCount_);
    return true;
}

void NVAPIHelper::LogNames() {
    std::size_t number = 0;
    for (NvPhysicalGpuHandle const gpu : Gpus()) {
        NvShortString name{};
        int const status = nvapi_.NvAPI_GPU_GetFullName(gpu, name);
        // Before the status is looked at: deliberate.
        log::NumberedEntry(kInitTag / "GPU full name #", number, log::Bounded(name));
        if (status != kNvapiOk) {
            log::NumberedEntry(kInitTag / "NvAPI_GPU_GetFullName #", number, "error: ", ErrorText(status));
        }
        ++number;
    }
}

void NVAPIHelper::FetchHwmValues() {
    log::Entry(kFetchTag, "begin");
    // One record for all: what the library leaves unwritten is the previous GPU's.
    NV_GPU_THERMAL_SETTINGS settings{};
    settings.version = kThermalSettingsVersion2;
    bool isFirstTemperature = true;
    std::size_t number = 0;
    for (NvPhysicalGpuHandle const gpu : Gpus()) {
        if (!Succeeded(kFetchTag / "NvAPI_GPU_GetThermalSettings",
                       nvapi_.NvAPI_GPU_GetThermalSettings(gpu, kThermalTargetAll, &settings))) {
            return;
        }
        // "physicle": deliberate.
        log::Line(kFetchTag.method, " >>>>> for physicle gpu # ", number++);
        log::Entry(kFetchTag / "sensor count", settings.count);
        auto const sensors = Sensors(settings);
        for (std::size_t j = 0; j < sensors.size(); ++j) {
            log::NumberedEntry(kFetchTag / "sensor # ", j, sensors[j].currentTemp);
            log::NumberedEntry(kFetchTag / "sensor target # ", j, sensors[j].target);
        }
        if (isFirstTemperature && !sensors.empty()) {
            HwmValues().Store(GPUTUNE_HWM_GPU_TEMPERATURE, sensors[0].currentTemp);
            isFirstTemperature = false;
        }
    }
}

std::span<NvPhysicalGpuHandle const> NVAPIHelper::Gpus() const {
    return std::span(gpus_).first(std::min<std::size_t>(gpuCount_, kMaxPhysicalGpus));
}

bool NVAPIHelper::Succeeded(log::Tag tag, int status) {
    if (status != kNvapiOk) {
        log::Entry(tag, "error: ", ErrorText(status));
    }
    return status == kNvapiOk;
}

std::string_view NVAPIHelper::ErrorText(int status) {
    // Empty when this function is missing, too: the text of an earlier status would mislead.
    std::fill(std::begin(errorText_), std::end(errorText_), '\0');
    nvapi_.NvAPI_GetErrorMessage(status, errorText_);
    return log::Bounded(errorText_);
}

}  // namespace gputune::nvidia
