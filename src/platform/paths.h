// Where the host process and the system live.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace gputune::platform {

// The full path of the host process's executable; empty when it cannot be told.
std::wstring HostExecutable();

// Its directory, without a separator at its end; empty when it cannot be told.
std::wstring HostDirectory();

// The system's own directory of libraries as this process sees it, without a separator at its end; empty when it cannot
// be told.
std::wstring SystemDirectory();

// Open a file for reading bytes. Null on failure.
std::FILE* OpenForReading(std::wstring const& path);

// 0 when there is a file of that path, else the system's error code; a directory is no file.
std::uint32_t FindFile(std::wstring const& path);

}  // namespace gputune::platform
