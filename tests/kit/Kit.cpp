#include "Kit.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "machine_facts.h"
#include "sim/standin/wide_text.h"

namespace gputune::kit {

namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned kLimitSeconds = 60;

// What only reads.
constexpr char const* kReadings[] = {"info", "adapters", "sensors --all"};

std::vector<std::string> NamesOf(Program const& program, std::filesystem::path const& kit,
                                 std::filesystem::path const& work) {
    Ended const listing = RunProcess(kit / program.file, L"--gtest_list_tests", work, kLimitSeconds);
    return ListedCases(listing.output);
}

// The tool's answer as it is meant, or as it is.
Json Answer(std::string const& output) {
    Json answer = Json::parse(output, nullptr, false);
    return answer.is_discarded() ? Json(output) : answer;
}

}  // namespace

Kit::Kit(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::ifstream file(folder_ / "kit.json", std::ios::binary);
    Json const json = Json::parse(file, nullptr, false);
    if (json.is_discarded()) {
        throw std::runtime_error("There is no kit.json beside this program that can be read. Unpack the whole ZIP.");
    }
    version_ = json.at("version");
    boards_ = json.at("boards").get<std::vector<std::string>>();
    leftOut_ = json.at("leftOut");
    for (Json const& program : json.at("programs")) {
        int const width = program.at("width");
        if (width == 64 && !IsFor64Bits()) {
            leftOut_.push_back({{"what", program.at("file")}, {"why", "This Windows is for 32 bits."}});
            continue;
        }
        programs_.push_back(
            {program.at("file"), width, program.value("oneAtATime", false), program.value("isTool", false)});
    }
}

std::vector<Case> Kit::Cases(std::vector<std::string> const& patterns, std::filesystem::path const& work) const {
    std::vector<Case> cases;
    for (Program const& program : programs_) {
        if (program.isTool) {
            for (std::string const& board : boards_) {
                std::wstring const file = (folder_ / "bin" / "boards" / (board + ".json")).make_preferred().wstring();
                cases.push_back(
                    {&program, "Simulated.sensors_" + board, L"--json --simulate \"" + file + L"\" sensors"});
            }
            continue;
        }
        std::vector<std::string> names = NamesOf(program, folder_, work);
        if (names.empty()) {
            names = {"TheProgram.ListsItsCases"};
        }
        for (std::string const& name : names) {
            cases.push_back({&program, name, L"--gtest_color=no --gtest_filter=" + sim::ToWide(name)});
        }
    }
    std::erase_if(cases, [&](Case const& which) {
        return std::none_of(patterns.begin(), patterns.end(),
                            [&which](std::string const& pattern) { return Matches(which.name, pattern); }) ||
               std::any_of(leftOut_.begin(), leftOut_.end(),
                           [&which](Json const& entry) { return Matches(which.name, entry.value("case", "")); });
    });
    return cases;
}

Json Kit::ReadBoard(std::filesystem::path const& work) const {
    Json readings = Json::array();
    for (Program const& program : programs_) {
        if (!program.isTool) {
            continue;
        }
        for (std::string const command : kReadings) {
            std::filesystem::path const directory = work / ("board" + std::to_string(readings.size()));
            std::filesystem::create_directory(directory);
            Ended const ended = RunProcess(folder_ / program.file, L"--json --log file " + sim::ToWide(command),
                                           directory, kLimitSeconds);
            readings.push_back({{"command", command},
                                {"width", program.width},
                                {"exitCode", ended.exitCode},
                                {"timedOut", ended.timedOut},
                                {"answer", Answer(ended.output)},
                                {"messages", ended.messages},
                                {"log", ReadText(directory / "debug.log")}});
        }
    }
    return readings;
}

}  // namespace gputune::kit
