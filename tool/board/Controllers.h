// The system's display controllers, and why the library works with one vendor's boards. Independent of the operating
// system.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/board/LogEntries.h"

namespace gputune::tool {

struct Controller {
    enum class Role {
        Taken,       // it decided whose boards are worked with
        SameVendor,  // of the same vendor, further back
        OtherVendor,
        NotSupported  // of no product line that is looked for
    };

    std::string name;  // UTF-8
    std::uint32_t vendor;
    Role role;
};

// Whose board a controller of this name is to the library: it looks for product lines of boards, so that the graphics
// of most processors count for none.
std::uint32_t VendorOfController(std::string name);

// Names in the system's order, UTF-8, to the controllers they stand for.
std::vector<Controller> ClassifyControllers(std::vector<std::string> const& names);
// The names in the library's log, in the log's encoding: those of the first look.
std::vector<std::string> ControllerNames(LogEntries const& entries);

// The stable code: "taken", "same_vendor", "other_vendor", "not_supported".
char const* RoleCode(Controller::Role role);
// A line for each controller: its name and what becomes of it. Empty when there is nothing to explain: all are of one
// vendor.
std::string ExplainControllers(std::vector<Controller> const& controllers);

}  // namespace gputune::tool
