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

// Whether the library can find one of the vendor's: loaded already, or in the system directory.
bool HasControlLibrary(std::uint32_t vendor) {
    std::wstring directory(MAX_PATH, L'\0');
    directory.resize(GetSystemDirectoryW(directory.data(), MAX_PATH));
    directory += L'\\';
    for (char const* name : ControlLibraryFiles(vendor)) {
        std::wstring const file = WideFromUtf8(name);
        if (GetModuleHandleW(file.c_str()) != nullptr ||
            GetFileAttributesW((directory + file).c_str()) != INVALID_FILE_ATTRIBUTES) {
            return true;
        }
    }
    return false;
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
    if (state_ == InitState::Ready && options.adapter) {
        SelectAdapter(*options.adapter);
    }
}

Session::~Session() = default;

void Session::SelectAdapter(int index) const {
    // NVIDIA's refuses even the index it has.
    if (index == library_->GetActiveAdapterIndex() || library_->SetActiveAdapterIndex(index)) {
        return;
    }
    if (vendor_ == GPUTUNE_VENDOR_NVIDIA) {
        throw UnsupportedError("of NVIDIA boards, none but adapter 0 can be selected.");
    }
    throw ToolError("There is no adapter with index " + std::to_string(index) + "." + LogHint());
}

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
        case InitState::AdapterNotOpened: {
            std::string const there = "There is an " + vendor + " GPU, but ";
            std::string const library =
                std::string("the vendor's control library (") + ControlLibraryNames(vendor_) + ")";
            if (!HasControlLibrary(vendor_)) {
                return there + library +
                       " is not installed on this system. It comes with the graphics driver: install " +
                       DriverName(vendor_) + ".";
            }
            return there + "no usable adapter: " + library +
                   " could not be opened, or it shows no board that can be used. Another version of the driver may "
                   "help: " +
                   DriverName(vendor_) + "." + LogHint();
        }
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
    readings.fanUnsure = CanDoubtFan() && fanWatch_.IsUnsure(readings[GPUTUNE_HWM_FAN_SPEED_RPM]);
    return readings;
}

std::string Session::LogHint() const {
    return options_.log == GPUTUNE_LOG_NONE ? "\nRun the command again with --log stdout to see what happened." : "";
}

}  // namespace gputune::tool
