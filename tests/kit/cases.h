// The kit's programs, their cases, and what becomes of a case.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "run_process.h"

namespace gputune::kit {

struct Program {
    std::string file;  // its path below the kit's folder, with slashes
    int width = 32;
    bool oneAtATime = false;  // its cases share a file
    bool isTool = false;      // gputunectl on simulated boards, no program of GoogleTest
};

struct Case {
    Program const* program = nullptr;
    std::string name;
    std::wstring arguments;  // that the program is given for it
};

enum class Outcome { Passed, Failed, Skipped, Crashed, TimedOut, EndedEarly, NotStarted };

struct Result {
    Case which;
    Outcome outcome = Outcome::NotStarted;
    Ended ended;
};

// In the report.
char const* NameOf(Outcome outcome);
// Neither passed nor skipped.
bool IsBad(Outcome outcome);

// The names in what `--gtest_list_tests` prints.
std::vector<std::string> ListedCases(std::string const& output);

// Of a test program an exit code of 0 is not enough: the summary that it prints last must be there as well. The tool
// must have printed something.
Outcome OutcomeOf(Ended const& ended, bool isTool);

// Whether the name matches a pattern in which * stands for any text.
bool Matches(std::string_view name, std::string_view pattern);

struct RunOptions {
    std::filesystem::path kit;   // the folder with the programs
    std::filesystem::path work;  // an empty folder
    unsigned jobs = 1;           // processes at a time
    unsigned limitSeconds = 60;  // for a case
};

// Runs the cases, each in a process and a folder of its own, and says on standard output how far it is. In the order of
// `cases`.
std::vector<Result> RunCases(std::vector<Case> const& cases, RunOptions const& options);

}  // namespace gputune::kit
