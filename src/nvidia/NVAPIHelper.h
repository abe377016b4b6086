// The NVIDIA backend: it names the GPUs in the log and reads their temperatures. Nothing can be set; the settings'
// fixed answers are LimitedAdapter's.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "adapter/LimitedAdapter.h"
#include "log/DebugLog.h"
#include "nvidia/Nvapi.h"

namespace gputune::nvidia {

class NVAPIHelper final : public LimitedAdapter {
public:
    // Opens NVAPI and lists the GPUs; IsInitOk tells the outcome. `nvapi` outlives the adapter.
    explicit NVAPIHelper(Nvapi& nvapi);

    // True when the GPUs were listed, also when there is none.
    bool IsInitOk() const override { return initOk_; }

    // There is nothing to choose: always false, always 0.
    bool SetActiveAdapterIndex(int /*index*/) override { return false; }
    int GetActiveAdapterIndex() const override { return 0; }

    // Stores the first sensor of the first GPU that has one under GPUTUNE_HWM_GPU_TEMPERATURE; the others are only
    // logged. Ends at the first GPU that cannot be read.
    void FetchHwmValues() override;

private:
    bool EnumerateGpus();
    void LogInterfaceVersion();
    void LogNames();

    // The handles there are, however many the library counts.
    std::span<NvPhysicalGpuHandle const> Gpus() const;

    // Whether the call succeeded; a failure is logged with NVAPI's own text for it.
    bool Succeeded(log::Tag tag, int status);

    // That text; valid until the next one is asked for.
    std::string_view ErrorText(int status);

    Nvapi& nvapi_;
    bool initOk_ = false;
    NvPhysicalGpuHandle gpus_[kMaxPhysicalGpus]{};
    std::uint32_t gpuCount_ = 0;  // as NVAPI wrote it
    NvShortString errorText_{};
};

}  // namespace gputune::nvidia
