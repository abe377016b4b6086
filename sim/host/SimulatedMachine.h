// A machine with a simulated board, inside this process. The vendor's stand-in library is loaded by full path; a later
// load of its base name then finds it. This process's WMI locator returns the board's captions. Nothing outside the
// process changes.
#pragma once

#include <memory>
#include <string>

#include "sim/board/Board.h"
#include "sim/wmi/WmiStandIn.h"

namespace gputune::sim {

class SimulatedMachine {
public:
    // boardFile: a board file, UTF-8. simDirectory: the folder of the stand-in libraries ("sim" beside the tool).
    // Throws std::runtime_error with a message for the user: the file, the key and what was expected.
    static SimulatedMachine FromFile(std::string const& boardFile, std::wstring const& simDirectory);
    static SimulatedMachine FromText(std::string const& boardJson, std::wstring const& simDirectory);

    // The board's settings, readings, time and faults are those in the file, which other processes share and which
    // stays (docs/board-files.md). stateFile: UTF-8. Does nothing without a vendor's library. Throws
    // std::runtime_error.
    void KeepState(std::string const& stateFile) const;

    // An export of the stand-in library, null when it has none of that name or the board has no vendor library.
    void* Symbol(char const* name) const;

private:
    SimulatedMachine(Board const& board, std::wstring const& simDirectory, char const* load,
                     std::string const& argument);

    std::unique_ptr<WmiStandIn> wmi_ = std::make_unique<WmiStandIn>();
    HMODULE library_ = nullptr;  // stays loaded
};

}  // namespace gputune::sim
