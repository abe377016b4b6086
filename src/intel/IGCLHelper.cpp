// Opening, enumeration and selection.
#include "intel/IGCLHelper.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "intel/ctl_functions.h"
#include "intel/ctl_results.h"
#include "platform/process.h"

namespace gputune::intel {

namespace {

constexpr log::Tag kInitTag{"[IGCLHelper::IGCLHelper()]"};

// Where the library writes a device's identifier.
struct Free {
    void operator()(void* block) const { std::free(block); }
};
using LuidBuffer = std::unique_ptr<CtlLuid, Free>;

LuidBuffer AllocateLuid() {
    return LuidBuffer(static_cast<CtlLuid*>(std::calloc(1, sizeof(CtlLuid))));
}

void LogDevice(ctl_device_adapter_properties_t const& device, CtlLuid const& luid) {
    log::Entry(kInitTag / "Adapter ID", luid.low);
    log::Entry(kInitTag / "Adapter ID", luid.high);
    if (device.pci_vendor_id == kIntelPciVendorId) {
        log::Entry(kInitTag / "Intel Adapter Name", log::Bounded(device.name));
        log::Entry(kInitTag / "Vendor id", device.pci_vendor_id);
        log::Entry(kInitTag / "Device id", device.pci_device_id);
        log::Entry(kInitTag / "Rev id", device.rev_id);
    }
}

}  // namespace

void LogResult(log::Tag tag, ctl_result_t result) {
    log::Entry(tag, "error: ", result, " (", CtlResultName(result), ")");
}

bool Succeeded(log::Tag tag, ctl_result_t result) {
    if (result == 0) {
        return true;
    }
    LogResult(tag, result);
    return false;
}

IGCLHelper::IGCLHelper() {
    if (!OpenControlLibrary()) {
        return;
    }
    if (!EnumerateDevices()) {
        CloseControlLibrary();
        return;
    }
    if (!SelectGraphicsDevices() || graphicsAdapters_.empty()) {
        return;
    }
    activeAdapterIndex_ = graphicsAdapters_.front();
    RetrieveOcProperties();
    PrintProperties();
}

IGCLHelper::~IGCLHelper() {
    // With the process the control library has ended before this one, and its threads with it: nothing is asked of it.
    if (!platform::IsProcessEnding()) {
        CloseControlLibrary();
    }
}

bool IGCLHelper::OpenControlLibrary() {
    ctl_init_args_t args{};
    args.Size = sizeof args;
    args.AppVersion = CtlVersion(1, 1);
    args.flags = kCtlInitUseLevelZero;
    return ctlInit(&args, &api_) == 0;
}

bool IGCLHelper::EnumerateDevices() {
    // The tag names another method: deliberate.
    constexpr log::Tag kTag{"[IGCLHelper::SetFanSpeed(int)]", "ctlEnumerateDevices"};

    if (!Succeeded(kTag, ctlEnumerateDevices(api_, &deviceCount_, nullptr))) {
        return false;
    }
    if (!hDevices_.Allocate(deviceCount_)) {
        log::Entry(kInitTag, "malloc memory for hDevices failed");
        return false;
    }
    // The first count holds: handles that were promised and not written are null.
    std::uint32_t count = deviceCount_;
    return Succeeded(kTag, ctlEnumerateDevices(api_, &count, hDevices_.Data()));
}

bool IGCLHelper::SelectGraphicsDevices() {
    for (std::uint32_t position = 0; position < deviceCount_; ++position) {
        if (hDevices_[position] == nullptr) {
            continue;
        }
        LuidBuffer const luid = AllocateLuid();
        if (luid == nullptr) {
            return false;
        }
        ctl_device_adapter_properties_t device{};
        device.Size = sizeof device;
        device.pDeviceID = luid.get();
        device.device_id_size = sizeof(CtlLuid);
        if (!Succeeded(kInitTag / "ctlGetDeviceProperties", ctlGetDeviceProperties(hDevices_[position], &device))) {
            break;
        }
        if (device.device_type != kCtlDeviceTypeGraphics) {
            log::Entry(kInitTag, "This is not a Graphics device");
            continue;
        }
        LogDevice(device, *luid);
        graphicsAdapters_.push_back(static_cast<int>(position));
        isInitOk_ = true;
    }
    return true;
}

void IGCLHelper::CloseControlLibrary() {
    ctlClose(api_);
    hDevices_.Release();
}

ctl_device_adapter_handle_t IGCLHelper::Device() const {
    return hDevices_[static_cast<std::uint32_t>(activeAdapterIndex_)];
}

bool IGCLHelper::SetActiveAdapterIndex(int index) {
    constexpr log::Tag kTag{"[IGCLHelper::SetActiveAdapterIndex(int)]"};
    if (index < 0 || static_cast<std::uint32_t>(index) >= deviceCount_) {
        log::Entry(kTag, "specified adapter index out of range");
        return false;
    }
    if (index == activeAdapterIndex_) {
        log::Entry(kTag, "already using the specified adapter index");
        return true;
    }
    if (std::find(graphicsAdapters_.begin(), graphicsAdapters_.end(), index) == graphicsAdapters_.end()) {
        log::Entry(kTag, "specified adapter index not found");
        return false;
    }
    log::Entry(kTag, "adapter index selected");
    activeAdapterIndex_ = index;
    RetrieveOcProperties();
    PrintProperties();
    return true;
}

}  // namespace gputune::intel
