// A machine with a simulated board, inside this process. The vendor's stand-in library is loaded by full path; a later
// load of its base name then finds it. This process's WMI locator returns the board's captions. Nothing outside the
// process changes.
#pragma once

#include <memory>
#include <string>

#include "gputune_sim.h"

namespace gputune::sim {

class WmiStandIn;

class SimulatedMachine {
public:
    // boardFile: a board file, UTF-8. simDirectory: the folder of the stand-in libraries ("sim" beside the tool).
    // Throws std::runtime_error with a message for the user: the file, the key and what was expected.
    static SimulatedMachine FromFile(std::string const& boardFile, std::wstring const& simDirectory);
    static SimulatedMachine FromText(std::string const& boardJson, std::wstring const& simDirectory);

    SimulatedMachine(SimulatedMachine&&) noexcept;
    SimulatedMachine& operator=(SimulatedMachine&&) noexcept;
    ~SimulatedMachine();  // ends the WMI stand-in; the stand-in library stays loaded

    // An export of the stand-in library, null when it has none of that name or the board has no vendor library.
    void* Symbol(char const* name) const;

    // The WMI locator that returns the board's captions (sim/wmi/WmiStandIn.h). It lives as long as the machine.
    WmiStandIn& Wmi() const;

private:
    struct State;
    explicit SimulatedMachine(std::unique_ptr<State>);
    std::unique_ptr<State> state_;
};

}  // namespace gputune::sim
