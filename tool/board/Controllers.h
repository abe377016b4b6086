// The system's display controllers, and which of them decides whose boards the library works with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/board/LogEntries.h"

namespace gputune::tool {

struct Controller {
    enum class Role {
        Taken,       // its vendor is the one that the library works with
        SameVendor,  // later in the list, of the same vendor
        OtherVendor,
        NotSupported  // not of a product line that the library looks for
    };

    std::string name;  // UTF-8
    std::uint32_t vendor;
    Role role;
};

// The vendor that the library reads from a controller's name. It looks for the names of board families, so that the
// graphics unit of most processors has none.
std::uint32_t VendorOfController(std::string name);

// The controllers of these names, which are in the system's order and UTF-8.
std::vector<Controller> ClassifyControllers(std::vector<std::string> const& names);
// The controllers' names in the library's log, in the log's encoding.
std::vector<std::string> ControllerNames(LogEntries const& entries);

// The stable code: "taken", "same_vendor", "other_vendor", "not_supported".
char const* RoleCode(Controller::Role role);
// A line for each controller: its name and its role. Empty when all controllers are of one supported vendor.
std::string ExplainControllers(std::vector<Controller> const& controllers);

}  // namespace gputune::tool
