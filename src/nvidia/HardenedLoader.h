// Used for "nvapi.dll" alone, which is loaded from the system's own directory; the driver's package and the check of a
// signature are required for callers that do not ask for that directory only (flag 0x800), of which there is none
// today.
//
// Loading a library by its bare name so that nobody can slip in another: from the system's directory, or from the
// display driver's package after a check of its signature, and never from the host's or the current directory.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/library.h"

namespace gputune::nvidia {

// One caller at a time; Nvapi's loading flag sees to that.
class HardenedLoader {
public:
    // Load a library by its bare file name, with flags of the system's extended load. Null on failure, with the last
    // error set: 160 when the name holds a path, 161 when the driver package's file is not trusted, else the system's;
    // 8 when memory runs out. With the flag 0x800 the system's directory alone is searched. Throws nothing.
    platform::LibraryHandle Load(std::wstring_view name, std::uint32_t flags) noexcept;

    // The same by full path, of a trusted file. Null and 160 for a relative path, null and 161 for a file that is not
    // trusted.
    platform::LibraryHandle LoadByFullPath(std::wstring const& path, std::uint32_t flags);

    // Whether Windows is of this build or a later one. The build number found in the first call is kept, unless it
    // could not be read.
    bool IsBuildAtLeast(std::uint32_t build);

    // Whether this is Windows 8 or later. The system is asked once.
    bool IsWindows8OrLater();

private:
    platform::LibraryHandle TryLoad(std::wstring const& name, std::uint32_t flags);
    platform::LibraryHandle LoadFromSystemDirectory(std::wstring const& name, std::uint32_t flags);
    bool LoadSupportLibraries();

    std::uint32_t buildNumber_ = 0;                              // 0 until known
    std::optional<bool> isWindows8OrLater_;                      // nothing until asked
    std::array<platform::LibraryHandle, 6> supportLibraries_{};  // loaded for the life of the process
    bool supportFailed_ = false;
    std::uint32_t supportError_ = 0;  // of the failure
};

}  // namespace gputune::nvidia
