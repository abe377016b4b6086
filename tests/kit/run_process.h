// One process with its output in a file, a folder of its own and a time limit.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace gputune::kit {

struct Ended {
    bool started = false;
    bool timedOut = false;  // it and all that it had started were ended
    std::uint32_t exitCode = 0;
    double seconds = 0;
    std::string output;    // standard output, in UTF-8
    std::string messages;  // standard error, or the system's reason when it was not started
};

// Runs `program` with `arguments`, which are put behind its name as they are, in `directory`, which must exist. Any
// number of threads may call it.
Ended RunProcess(std::filesystem::path const& program, std::wstring const& arguments,
                 std::filesystem::path const& directory, unsigned limitSeconds);

// A file's text in UTF-8: as it is if it is that, else from the system's code page. Empty when there is no such file.
std::string ReadText(std::filesystem::path const& file);

}  // namespace gputune::kit
