// The library's 22 exports, found at run time.
#pragma once

#include <memory>
#include <string>

#include "gputune.h"

namespace gputune::tool {

class Library {
public:
    // Loads the file, a full path. Throws ToolError when it is missing, no library of the tool's width, or lacks an
    // export.
    explicit Library(std::wstring const& path);

    // Each export is called as the header declares it, but for GetFanSetting: see ReadFanSetting.
#define FLAT_FUNCTION(result, name, ...) decltype(&::name) name = nullptr;
#include "src/api/flat_functions.inc"

    // The board's fan settings. Fields that the backend does not write are kUntouched (values/FanCurve.h).
    ::FanSetting ReadFanSetting() const;

private:
    struct Unload {
        void operator()(void* module) const;
    };

    std::unique_ptr<void, Unload> module_;
};

}  // namespace gputune::tool
