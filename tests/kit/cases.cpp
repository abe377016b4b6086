#include "cases.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

namespace gputune::kit {

namespace {

// What is run by one thread, one after the other: indices of cases.
using Chain = std::vector<std::size_t>;

// The cases that must wait for each other come first, as they take longest together.
std::vector<Chain> Chains(std::vector<Case> const& cases) {
    std::map<Program const*, Chain> together;
    std::vector<Chain> chains;
    for (std::size_t index = 0; index < cases.size(); ++index) {
        if (cases[index].program->oneAtATime) {
            together[cases[index].program].push_back(index);
        } else {
            chains.push_back({index});
        }
    }
    for (auto const& [program, chain] : together) {
        chains.insert(chains.begin(), chain);
    }
    return chains;
}

Result RunCase(Case const& which, std::size_t number, RunOptions const& options) {
    std::filesystem::path const directory = options.work / std::to_string(number);
    Result result{which, Outcome::NotStarted, {}};
    std::error_code error;
    if (!std::filesystem::create_directory(directory, error)) {
        result.ended.messages = "no folder for it: " + error.message();
        return result;
    }
    result.ended = RunProcess(options.kit / which.program->file, which.arguments, directory, options.limitSeconds);
    result.outcome = OutcomeOf(result.ended, which.program->isTool);
    // What a process that was ended still holds open is removed with the whole folder later.
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
    return result;
}

class Progress {
public:
    explicit Progress(std::size_t total) : total_(total) {}

    void Add(Result const& result) {
        std::lock_guard const lock(mutex_);
        ++done_;
        bool const isBad = IsBad(result.outcome);
        if (isBad) {
            std::printf("%s: %d bits, %s\n", NameOf(result.outcome), result.which.program->width,
                        result.which.name.c_str());
        }
        if (isBad || done_ % kStep == 0 || done_ == total_) {
            std::printf("%zu of %zu\n", done_, total_);
            std::fflush(stdout);
        }
    }

private:
    static constexpr std::size_t kStep = 100;

    std::mutex mutex_;
    std::size_t total_;
    std::size_t done_ = 0;
};

}  // namespace

char const* NameOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Passed:
            return "passed";
        case Outcome::Failed:
            return "failed";
        case Outcome::Skipped:
            return "skipped";
        case Outcome::Crashed:
            return "crashed";
        case Outcome::TimedOut:
            return "timed out";
        case Outcome::EndedEarly:
            return "ended early";
        case Outcome::NotStarted:
            break;
    }
    return "not started";
}

bool IsBad(Outcome outcome) {
    return outcome != Outcome::Passed && outcome != Outcome::Skipped;
}

std::vector<std::string> ListedCases(std::string const& output) {
    std::vector<std::string> names;
    std::string suite;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        line.erase(std::min(line.find('#'), line.size()));
        line.erase(line.find_last_not_of(' ') + 1);
        if (line.starts_with("  ")) {
            names.push_back(suite + line.substr(2));
        } else if (line.ends_with('.')) {
            suite = line;
        }
    }
    return names;
}

Outcome OutcomeOf(Ended const& ended, bool isTool) {
    // Windows's codes of errors that end a process.
    constexpr std::uint32_t kError = 0xC0000000;
    if (!ended.started) {
        return Outcome::NotStarted;
    }
    if (ended.timedOut) {
        return Outcome::TimedOut;
    }
    if (ended.exitCode >= kError) {
        return Outcome::Crashed;
    }
    if (isTool) {
        return ended.exitCode == 0 && !ended.output.empty() ? Outcome::Passed : Outcome::Failed;
    }
    if (ended.output.find("\n[  FAILED  ]") != std::string::npos) {
        return Outcome::Failed;
    }
    if (ended.exitCode != 0 || ended.output.find("\n[  PASSED  ]") == std::string::npos) {
        return Outcome::EndedEarly;
    }
    return ended.output.find("\n[  SKIPPED ]") != std::string::npos ? Outcome::Skipped : Outcome::Passed;
}

bool Matches(std::string_view name, std::string_view pattern) {
    std::size_t const star = pattern.find('*');
    if (star == std::string_view::npos) {
        return name == pattern;
    }
    if (!name.starts_with(pattern.substr(0, star))) {
        return false;
    }
    pattern.remove_prefix(star + 1);
    for (std::size_t begin = star; begin <= name.size(); ++begin) {
        if (Matches(name.substr(begin), pattern)) {
            return true;
        }
    }
    return false;
}

std::vector<Result> RunCases(std::vector<Case> const& cases, RunOptions const& options) {
    std::vector<Chain> const chains = Chains(cases);
    std::vector<Result> results(cases.size());
    Progress progress(cases.size());
    std::atomic<std::size_t> next = 0;
    auto const work = [&] {
        for (std::size_t chain = next++; chain < chains.size(); chain = next++) {
            for (std::size_t const index : chains[chain]) {
                results[index] = RunCase(cases[index], index, options);
                progress.Add(results[index]);
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < options.jobs; ++thread) {
        threads.emplace_back(work);
    }
    std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
    return results;
}

}  // namespace gputune::kit
