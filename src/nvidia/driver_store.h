// Not used for "nvapi.dll"; required for callers of HardenedLoader::Load without the flag 0x800, of which there is none
// today.
//
// Where Windows keeps the files of the display driver's package.
#pragma once

#include <string>

namespace gputune::nvidia {

// The full path of a file in the package of an installed display driver. Empty when there is none: the last error is
// then 126 (module not found), or the code of what kept the search from being complete.
std::wstring FindInDriverStore(std::wstring const& name);

}  // namespace gputune::nvidia
