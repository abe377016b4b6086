// The unpacked kit: what is in it, and what is run of it.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cases.h"

namespace gputune::kit {

class Kit {
public:
    // Reads kit.json of this folder. Throws std::runtime_error when there is none that can be read.
    explicit Kit(std::filesystem::path folder);

    std::filesystem::path const& Folder() const { return folder_; }
    std::string const& Version() const { return version_; }
    // What is not in it, or not run here, and why; cases by a pattern of their names.
    nlohmann::ordered_json const& LeftOut() const { return leftOut_; }

    // All cases that match one of the patterns and are not left out, of both widths where Windows is for 64 bits. Runs
    // the test programs to list theirs, in the folder `work`; one that cannot list them is a case of its own that
    // fails.
    std::vector<Case> Cases(std::vector<std::string> const& patterns, std::filesystem::path const& work) const;

    // What gputunectl reads of this machine's own board, one command after the other, each width for itself. Sets
    // nothing.
    nlohmann::ordered_json ReadBoard(std::filesystem::path const& work) const;

private:
    std::filesystem::path folder_;
    std::string version_;
    std::vector<Program> programs_;
    std::vector<std::string> boards_;
    nlohmann::ordered_json leftOut_;
};

}  // namespace gputune::kit
