// Where the host process lives.
#pragma once

#include <cstdio>
#include <string>

namespace gputune::platform {

// The directory of the host process's executable, without a separator at its end; empty when it cannot be told.
std::wstring HostDirectory();

// Open a file for reading bytes. Null on failure.
std::FILE* OpenForReading(std::wstring const& path);

}  // namespace gputune::platform
