// One run with the library: the simulated machine where one is asked for, the loaded library, the chosen board.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Library.h"
#include "Readings.h"
#include "gputune.h"

namespace gputune::sim {
class SimulatedMachine;
}

namespace gputune::tool {

// The options that stand before every command.
struct GlobalOptions {
    std::string boardFile;  // UTF-8; empty: the real machine
    GputuneLogMode log = GPUTUNE_LOG_NONE;
    std::optional<int> adapter;
    bool json = false;
    bool yes = false;
};

enum class InitState {
    Ready,
    AdapterNotOpened,  // a backend exists, and IsInitOk says no
    LibraryNotOpened,  // a vendor, and no backend: AMD's library is missing, or tells no interface that is known
    NoSupportedGpu
};

// The text for people and the code for JSON.
Name InitStateName(InitState state);

class Session {
public:
    // Loads and initialises the library and selects the adapter. Throws ToolError when the simulation, the library or
    // the selection fails; a board that could not be opened is left to State and RequireReady.
    explicit Session(GlobalOptions const& options);
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    Library const& Api() const { return *library_; }
    InitState State() const { return state_; }
    std::uint32_t Vendor() const { return vendor_; }
    std::uint32_t ApiType() const { return api_; }

    // Nothing when the state is Ready, else what is wrong and what to try.
    std::optional<std::string> Problem() const;
    void RequireReady() const;  // throws ToolError with Problem

    // The product name, UTF-8; empty where the vendor's interface does not tell.
    std::string AdapterName() const;
    // Reads the sensors anew.
    Readings ReadSensors() const;
    // Whether a reading of the fan can be unsure (StuckFanWatch).
    bool CanDoubtFan() const { return api_ == GPUTUNE_API_OVERDRIVEN; }

    // "\nRun the command again with --log stdout to see what happened.", or nothing when there is a log already.
    std::string LogHint() const;

private:
    void SelectAdapter(int index) const;

    GlobalOptions options_;
    // Before the library, so that the library is unloaded while the machine is still there.
    std::unique_ptr<sim::SimulatedMachine> machine_;
    std::unique_ptr<Library> library_;
    InitState state_ = InitState::NoSupportedGpu;
    std::uint32_t vendor_ = 0;
    std::uint32_t api_ = 0;
    mutable StuckFanWatch fanWatch_;  // reading changes nothing else
};

}  // namespace gputune::tool
