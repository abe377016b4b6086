#include "tool/board/Session.h"

#include <windows.h>

#include <algorithm>

#include "sim/host/SimulatedMachine.h"
#include "tool/system/Files.h"
#include "tool/system/Utf8.h"
#include "tool/system/WorkerProcess.h"
#include "tool/values/Errors.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

std::unique_ptr<sim::SimulatedMachine> StartSimulation(GlobalOptions const& options, std::wstring const& directory) {
    if (options.boardFile.empty()) {
        return nullptr;
    }
    try {
        auto machine = std::make_unique<sim::SimulatedMachine>(
            sim::SimulatedMachine::FromFile(options.boardFile, directory + L"sim"));
        if (!options.boardState.empty()) {
            machine->KeepState(options.boardState);
        }
        return machine;
    } catch (std::runtime_error const& error) {
        throw ToolError(std::string("Cannot simulate the board: ") + error.what());
    }
}

// Whether a control library of this vendor is loaded already, or lies in the system directory.
bool HasControlLibrary(std::uint32_t vendor) {
    std::wstring const directory = SystemDirectory();
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
    static constexpr Name kNames[] = {{"ready", "ready"},
                                      {"adapter not opened", "adapter_not_opened"},
                                      {"control library not opened", "control_library_not_opened"},
                                      {"no supported GPU found", "no_supported_gpu"}};
    return kNames[static_cast<std::size_t>(state)];
}

Session::Session(GlobalOptions const& options, LogUse use) : Session(options, use, nullptr) {}

Session::Session(GlobalOptions const& options, OwnOutput const& output) : Session(options, LogUse::NotKept, &output) {}

Session::Session(GlobalOptions const& options, LogUse use, OwnOutput const* output)
    : options_(options), output_(output) {
    RequireLogFile(options.log);
    std::wstring const directory = ProgramDirectory();
    machine_ = StartSimulation(options, directory);
    std::wstring const library = directory + L"gputune.dll";
    Load(library, use);
    // Load the library a second time, with a log: only the log names the display controllers.
    if (state_ == InitState::NoSupportedGpu && !HasLog() && options.log == GPUTUNE_LOG_NONE) {
        Load(library, LogUse::Kept);
    }
    if (state_ == InitState::Ready && options.adapter) {
        SelectAdapter(*options.adapter);
    }
}

Session::~Session() = default;

void Session::Load(std::wstring const& path, LogUse use) {
    library_.reset();
    log_ = use == LogUse::Kept ? std::make_unique<KeptLog>(options_.log) : nullptr;
    library_ = std::make_unique<Library>(path);
    Initialise();
    firstAdapter_ = adapter_;
}

void Session::Initialise() {
    bool hasBackend = false;
    if (log_ != nullptr) {
        KeptLog::InDirectory const directory(*log_);
        hasBackend = library_->InitVGAHelper(log_->Mode());
    } else {
        hasBackend = library_->InitVGAHelper(LogMode());
    }
    std::uint64_t const info = library_->GetVendorInfo();
    vendor_ = static_cast<std::uint32_t>(info);
    api_ = static_cast<std::uint32_t>(info >> 32U);
    adapter_ = hasBackend ? library_->GetActiveAdapterIndex() : -1;
    if (!hasBackend) {
        state_ = vendor_ == GPUTUNE_VENDOR_UNKNOWN ? InitState::NoSupportedGpu : InitState::LibraryNotOpened;
    } else {
        state_ = library_->IsInitOk() ? InitState::Ready : InitState::AdapterNotOpened;
    }
}

void Session::SelectAdapter(int index) {
    // The NVIDIA backend refuses every index, even the current one.
    if (index == adapter_) {
        return;
    }
    if (!library_->SetActiveAdapterIndex(index)) {
        if (vendor_ == GPUTUNE_VENDOR_NVIDIA) {
            throw UnsupportedError("of NVIDIA boards, none but adapter 0 can be selected.");
        }
        ErrorDetails details{.code = "no_such_adapter", .adapters = AdapterIndices()};
        std::string list;
        for (int const known : details.adapters) {
            list += (list.empty() ? "" : ", ") + std::to_string(known);
        }
        throw ToolError("There is no adapter with index " + std::to_string(index) + "; there is " +
                            (list.empty() ? "none" : list) + ".\nThe command adapters tells what is known of them.",
                        std::move(details));
    }
    adapter_ = index;
    if (vendor_ == GPUTUNE_VENDOR_AMD) {
        // The library keeps the ranges, defaults and fan controllers of the first adapter until it is initialised
        // again. The selected index survives that.
        Initialise();
    }
}

AdapterIdentity::AdapterIdentity(VgaInfo const& record)
    : name(Utf8FromAnsi(record.AdapterName, sizeof(record.AdapterName))),
      subsystemId(record.SubsystemId),
      subsystemIdText(subsystemId == 0 ? "" : HexId(subsystemId)),
      // A record of zeros only does not say that the bus is number 0.
      busNumber(subsystemId == 0 && name.empty() && record.BusNumber == 0 ? -1 : record.BusNumber) {}

AdapterIdentity Session::Identity() const {
    bool const hasBackend = state_ == InitState::Ready || state_ == InitState::AdapterNotOpened;
    return hasBackend && !IdentityIsOfAnother() ? AdapterIdentity(library_->GetVGAInfo()) : AdapterIdentity();
}

std::vector<int> Session::AdapterIndices() const {
    if (vendor_ == GPUTUNE_VENDOR_NVIDIA) {
        return {adapter_};
    }
    // More indices than any driver has. The log tells when to stop: for AMD it holds the number of adapters, for Intel
    // an entry when the index is too large.
    constexpr int kMostIndices = 1024;
    std::optional<std::string> const active = LastMessage(LogSince(0), " number of active adapter");
    std::size_t const count =
        static_cast<std::size_t>(active ? LeadingNumber(*active).value_or(kMostIndices) : kMostIndices);
    std::vector<int> indices;
    for (int index = 0; index < kMostIndices && indices.size() < count; ++index) {
        std::size_t const mark = vendor_ == GPUTUNE_VENDOR_INTEL ? LogMark() : 0;
        if (library_->SetActiveAdapterIndex(index)) {
            indices.push_back(index);
        } else if (vendor_ == GPUTUNE_VENDOR_INTEL &&
                   LastMessage(LogSince(mark), "") == "specified adapter index out of range") {
            break;
        }
    }
    library_->SetActiveAdapterIndex(adapter_);
    return indices;
}

std::vector<Controller> Session::Controllers() const {
    std::vector<std::string> names = ControllerNames(LogSince(0));
    for (std::string& name : names) {
        name = Utf8FromAnsi(name.c_str(), name.size());
    }
    return ClassifyControllers(names);
}

GputuneLogMode Session::LogMode() const {
    if (output_ == nullptr) {
        return options_.log;
    }
    return options_.log == GPUTUNE_LOG_NONE || options_.log == GPUTUNE_LOG_STDOUT ? GPUTUNE_LOG_STDOUT
                                                                                  : GPUTUNE_LOG_BOTH;
}

bool Session::HasLog() const {
    return output_ != nullptr || (log_ != nullptr && log_->IsKept());
}

void Session::ForgetLog() const {
    LogSince(0);
    outputText_.clear();
}

LogEntries Session::LogSince(std::size_t mark) const {
    if (output_ != nullptr) {
        outputText_ += output_->Take();
    }
    LogEntries entries = output_ != nullptr ? ReadLogEntries(outputText_)
                         : log_ != nullptr  ? log_->Read()
                                            : LogEntries();
    entries.erase(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(std::min(mark, entries.size())));
    return entries;
}

std::optional<std::string> Session::Problem() const {
    std::string const vendor = VendorName(vendor_).text;
    std::string controllers = state_ == InitState::Ready ? "" : ExplainControllers(Controllers());
    controllers = (controllers.empty() ? "" : "\n") + controllers;
    switch (state_) {
        case InitState::Ready:
            return std::nullopt;
        case InitState::NoSupportedGpu:
            if (!HasLog()) {
                return "No supported GPU found: no display controller of this machine is a board that can be used, or "
                       "the system's management service (WMI) does not answer." +
                       LogHint();
            }
            if (controllers.empty()) {
                return "No supported GPU found: the system's management service (WMI) names no display controller, or "
                       "does not answer." +
                       LogHint();
            }
            return "No supported GPU found: no display controller of this machine is a board that can be used." +
                   controllers;
        case InitState::LibraryNotOpened:
        case InitState::AdapterNotOpened: {
            std::string const there = "There is an " + vendor + " GPU, but ";
            std::string const library =
                std::string("the vendor's control library (") + ControlLibraryNames(vendor_) + ")";
            if (!HasControlLibrary(vendor_)) {
                return there + library +
                       " is not installed on this system. It comes with the graphics driver: install " +
                       DriverName(vendor_) + "." + controllers;
            }
            return there + "no usable adapter: " + library +
                   " could not be opened, or it shows no board that can be used. Another version of the driver may "
                   "help: " +
                   DriverName(vendor_) + "." + controllers + LogHint();
        }
    }
    return std::nullopt;
}

void Session::RequireReady() const {
    if (std::optional<std::string> const problem = Problem()) {
        ErrorDetails details{.code = InitStateName(state_).code};
        for (Controller& controller : Controllers()) {
            details.controllers.push_back(std::move(controller.name));
        }
        throw ToolError(*problem, std::move(details));
    }
}

Readings Session::ReadSensors() const {
    library_->FetchHwmValues();
    Readings readings;
    for (SensorName const& sensor : kSensorNames) {
        HwmValue const value = library_->GetHwmValue(sensor.key);
        if (value.Valid) {
            readings[sensor.key] = value.Value;
        }
    }
    readings.fanUnsure = FanCanBeUnsure() && fanWatch_.IsUnsure(readings[GPUTUNE_HWM_FAN_SPEED_RPM]);
    return readings;
}

std::string Session::LogHint() const {
    if (options_.log != GPUTUNE_LOG_NONE) {
        return "";
    }
    return std::string("\nRun the command again with --log ") + (options_.json ? "file" : "stdout") +
           " to see what happened.";
}

}  // namespace gputune::tool
