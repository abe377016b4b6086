#include "Session.h"

#include <windows.h>

#include "Errors.h"
#include "Text.h"
#include "host/SimulatedMachine.h"

namespace gputune::tool {

namespace {

// Ends with the separator.
std::wstring ProgramDirectory() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            throw ToolError("Cannot find the program's directory: " + SystemMessage(GetLastError()) + ".");
        }
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

std::unique_ptr<sim::SimulatedMachine> StartSimulation(std::string const& boardFile, std::wstring const& directory) {
    if (boardFile.empty()) {
        return nullptr;
    }
    try {
        return std::make_unique<sim::SimulatedMachine>(sim::SimulatedMachine::FromFile(boardFile, directory + L"sim"));
    } catch (std::runtime_error const& error) {
        throw ToolError(std::string("Cannot simulate the board: ") + error.what());
    }
}

}  // namespace

Name InitStateName(InitState state) {
    switch (state) {
        case InitState::Ready:
            return {"ready", "ready"};
        case InitState::AdapterNotOpened:
            return {"adapter not opened", "adapter_not_opened"};
        case InitState::LibraryNotOpened:
            return {"control library not opened", "control_library_not_opened"};
        case InitState::NoSupportedGpu:
            return {"no supported GPU found", "no_supported_gpu"};
    }
    return {"unknown", "unknown"};
}

Session::Session(GlobalOptions const& options) : options_(options) {
    std::wstring const directory = ProgramDirectory();
    machine_ = StartSimulation(options.boardFile, directory);
    library_ = std::make_unique<Library>(directory + L"gputune.dll");

    bool const hasBackend = library_->InitVGAHelper(options.log);
    std::uint64_t const info = library_->GetVendorInfo();
    vendor_ = static_cast<std::uint32_t>(info);
    api_ = static_cast<std::uint32_t>(info >> 32U);
    if (!hasBackend) {
        state_ = vendor_ == GPUTUNE_VENDOR_UNKNOWN ? InitState::NoSupportedGpu : InitState::LibraryNotOpened;
        return;
    }
    state_ = library_->IsInitOk() ? InitState::Ready : InitState::AdapterNotOpened;
    if (state_ == InitState::Ready && options.adapter && !library_->SetActiveAdapterIndex(*options.adapter)) {
        throw ToolError("There is no adapter with index " + std::to_string(*options.adapter) +
                        (vendor_ == GPUTUNE_VENDOR_NVIDIA ? ": NVIDIA boards cannot be selected." : ".") + LogHint());
    }
}

Session::~Session() = default;

std::optional<std::string> Session::Problem() const {
    std::string const vendor = VendorName(vendor_).text;
    switch (state_) {
        case InitState::Ready:
            return std::nullopt;
        case InitState::NoSupportedGpu:
            return "No supported GPU found: no display controller of this machine is a board that can be used, or the "
                   "system's management service (WMI) does not answer." +
                   LogHint();
        case InitState::LibraryNotOpened:
            if (vendor_ != GPUTUNE_VENDOR_AMD) {
                return "There is an " + vendor + " GPU, but this version of gputune has no backend for it yet.";
            }
            return "There is an " + vendor + " GPU, but the vendor's control library (" + ControlLibraryName(vendor_) +
                   ") could not be opened, or it offers no interface that is known here. Is the vendor's driver "
                   "installed?" +
                   LogHint();
        case InitState::AdapterNotOpened:
            return "There is an " + vendor + " GPU, but no usable adapter: the vendor's control library (" +
                   ControlLibraryName(vendor_) + ") could not be opened, or it shows no board that can be used." +
                   LogHint();
    }
    return std::nullopt;
}

void Session::RequireReady() const {
    if (std::optional<std::string> const problem = Problem()) {
        throw ToolError(*problem);
    }
}

std::string Session::AdapterName() const {
    VgaInfo const info = library_->GetVGAInfo();
    return Utf8FromAnsi(info.AdapterName, sizeof info.AdapterName);
}

Readings Session::ReadSensors() const {
    library_->FetchHwmValues();
    Readings readings;
    for (SensorName const& sensor : sensorNames) {
        HwmValue const value = library_->GetHwmValue(sensor.key);
        if (value.Valid) {
            readings[sensor.key] = value.Value;
        }
    }
    return readings;
}

std::string Session::LogHint() const {
    return options_.log == GPUTUNE_LOG_NONE ? "\nRun the command again with --log stdout to see what happened." : "";
}

}  // namespace gputune::tool
