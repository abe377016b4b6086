// One run with the library: it starts the simulated machine if there is one, loads the library and selects the adapter.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gputune.h"
#include "tool/board/Controllers.h"
#include "tool/board/KeptLog.h"
#include "tool/board/Library.h"
#include "tool/board/StuckFanWatch.h"
#include "tool/values/Names.h"
#include "tool/values/Readings.h"

namespace gputune::sim {
class SimulatedMachine;
}

namespace gputune::tool {

class OwnOutput;

// The options that stand before every command.
struct GlobalOptions {
    std::string boardFile;   // UTF-8; empty: the real machine
    std::string boardState;  // UTF-8; empty: the simulated board ends with the process
    GputuneLogMode log = GPUTUNE_LOG_NONE;
    std::optional<int> adapter;
    bool json = false;
    bool yes = false;

    bool LogsToOutput() const { return log == GPUTUNE_LOG_STDOUT || log == GPUTUNE_LOG_BOTH; }
};

enum class InitState {
    Ready,
    AdapterNotOpened,  // a backend exists, and IsInitOk says no
    LibraryNotOpened,  // a vendor, and no backend: AMD's library is missing, or has no interface that gputune knows
    NoSupportedGpu
};

// The text for people and the code for JSON.
Name InitStateName(InitState state);

// Whether the session keeps the library's log (KeptLog). The log grows with every call, so commands that run long do
// not keep it.
enum class LogUse { Kept, NotKept };

// What the library's record tells of an adapter. Only AMD's interface tells anything; elsewhere the record is zero.
struct AdapterIdentity {
    AdapterIdentity() = default;
    explicit AdapterIdentity(VgaInfo const& record);

    std::string name{};  // UTF-8; empty: not known, as the text
    std::uint32_t subsystemId = 0;
    std::string subsystemIdText{};  // "0x12345678"
    int busNumber = -1;             // -1: not known
};

class Session {
public:
    // Loads and initialises the library and selects the adapter. Throws ToolError when the log file, the simulation,
    // the library or the selection fails; a board that could not be opened is left to State and RequireReady.
    explicit Session(GlobalOptions const& options, LogUse use = LogUse::Kept);
    // The same with the library's log on standard output, from where the session takes it: `output` lives longer. A log
    // file is written when the options want one.
    Session(GlobalOptions const& options, OwnOutput const& output);
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    Library const& Api() const { return *library_; }
    InitState State() const { return state_; }
    std::uint32_t Vendor() const { return vendor_; }
    std::uint32_t ApiType() const { return api_; }

    // What is wrong and what the user can try; nothing when the state is Ready.
    std::optional<std::string> Problem() const;
    void RequireReady() const;  // throws ToolError with Problem

    // AMD's interface tells the identity of the first adapter only, even when another one is selected.
    bool IdentityIsOfAnother() const { return vendor_ == GPUTUNE_VENDOR_AMD && adapter_ != firstAdapter_; }
    int FirstAdapter() const { return firstAdapter_; }
    // Of the selected adapter.
    AdapterIdentity Identity() const;
    std::string AdapterName() const { return Identity().name; }
    // The indices that --adapter takes, in ascending order. It selects each of them, and then the former one again.
    std::vector<int> AdapterIndices() const;

    // The system's display controllers as the library saw them; none when its log is not kept.
    std::vector<Controller> Controllers() const;

    // The library's log from this many entries on; none when it is not kept.
    LogEntries LogSince(std::size_t mark) const;
    std::size_t LogMark() const { return LogSince(0).size(); }
    // Forgets the log so far; marks begin at 0 again. For commands that run long with a log on standard output.
    void ForgetLog() const;

    // Reads the sensors anew.
    Readings ReadSensors() const;
    // Whether a reading of the fan can be unsure (StuckFanWatch).
    bool FanCanBeUnsure() const { return api_ == GPUTUNE_API_OVERDRIVEN; }

    // "\nRun the command again with --log stdout to see what happened."; with --json "--log file", as both would go to
    // standard output. Empty when there is a log already.
    std::string LogHint() const;

private:
    Session(GlobalOptions const& options, LogUse use, OwnOutput const* output);
    void Load(std::wstring const& path, LogUse use);
    GputuneLogMode LogMode() const;
    bool HasLog() const;
    void Initialise();
    void SelectAdapter(int index);

    GlobalOptions options_;
    // Declared before the library, so that the library is unloaded first.
    std::unique_ptr<sim::SimulatedMachine> machine_;
    std::unique_ptr<KeptLog> log_;
    OwnOutput const* output_;
    mutable std::string outputText_;  // what was taken of it
    std::unique_ptr<Library> library_;
    InitState state_ = InitState::NoSupportedGpu;
    std::uint32_t vendor_ = 0;
    std::uint32_t api_ = 0;
    int firstAdapter_ = -1;
    int adapter_ = -1;
    mutable StuckFanWatch fanWatch_;  // ReadSensors is const otherwise
};

}  // namespace gputune::tool
