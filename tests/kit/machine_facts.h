// What the report says of the machine: of Windows, of its display drivers, of the process.
#pragma once

#include <nlohmann/json.hpp>

namespace gputune::kit {

// The true version and build, whatever the program's compatibility settings are; the architecture; Wine's version under
// Wine.
nlohmann::ordered_json WindowsFacts();
// The display drivers that Windows has registered.
nlohmann::ordered_json DriverFacts();
// The vendors' libraries in the system's directories, which are looked at and not loaded.
nlohmann::ordered_json LibraryFacts();
bool IsFor64Bits();  // whether Windows is
bool IsAdministrator();

}  // namespace gputune::kit
