#include "steps.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <new>
#include <sstream>

namespace gputune::matrix {

namespace {

// The arguments of every operation that takes any, by its name.
std::map<std::string, std::vector<test::Arguments>> const kArguments = {
    {"SetActiveAdapterIndex", {{5}, {0}, {1}}},  // AMD's, and Intel's two
    {"GetHwmValue", {{GPUTUNE_HWM_GPU_TEMPERATURE}}},
    {"SetFanSpeed", {{50}, {0}, {-1}}},
    {"SetFanSpeedTable", {{1, test::kCurvePoints}}},
    {"SetPowerLimit", {{75, 10}, {75, 0}, {0, 0}}},
    {"SetPerformanceUser", {{1300, 1100, 1900, 900}, {0, 0, 0, 0}}},
    {"GetExternalPerformanceParameter", {{0x0B361002}}},
};

std::string NameOf(test::Operation const& operation, test::Arguments const& arguments) {
    std::string name = operation.name;
    for (int position = 0; position < operation.argumentCount; ++position) {
        name += (position == 0 ? "(" : ",") + std::to_string(arguments[static_cast<std::size_t>(position)]);
    }
    return operation.argumentCount == 0 ? name : name + ")";
}

bool Worked(test::Operation const& operation, test::Answer const& answer) {
    std::string const name = operation.name;
    if (operation.answersBool) {
        return answer.success;
    }
    if (name == "GetFrameRate" || name == "GetActiveAdapterIndex") {
        return answer.bytes != test::Ints({-1});
    }
    bool const hasValidFirst = name.ends_with("Setting") || name == "GetExternalPerformanceParameter";
    return !hasValidFirst || answer.bytes.at(0) != 0;
}

StepAnswer Initialise(test::Exports const& api) {
    StepAnswer answer;
    try {
        bool const hasBackend = api.InitVGAHelper(GPUTUNE_LOG_FILE);
        answer.worked = hasBackend && api.IsInitOk();
        answer.bytes = {static_cast<unsigned char>(hasBackend), static_cast<unsigned char>(answer.worked)};
    } catch (std::bad_alloc const&) {
        answer.worked = false;
        answer.threw = true;
    }
    answer.success = !answer.threw && answer.bytes[0] != 0;
    return answer;
}

}  // namespace

std::string ProfileText() {
    std::ostringstream text;
    auto const row = [&](char const* name, double normal) {
        text << "<Value Name=\"" << name << "\" Normal=\"" << normal << "\"/>";
    };
    text << "<Config><Board Default=\"1\">";
    row("GpuOC", kOverclockMode.gpu);
    row("MemOC", kOverclockMode.memory);
    row("PowerOC", kOverclockMode.power);
    row("GpuSilent", kSilentMode.gpu);
    row("MemSilent", kSilentMode.memory);
    row("PowerSilent", kSilentMode.power);
    text << "</Board></Config>";
    return text.str();
}

Step const& Initialisation() {
    static Step const initialisation{"InitVGAHelper"};
    return initialisation;
}

Step const& SecondInitialisation() {
    static Step const again{"InitVGAHelper once more"};
    return again;
}

std::vector<Step> const& Operations() {
    static std::vector<Step> const steps = [] {
        std::vector<Step> all;
        for (test::Operation const& operation : test::Operations()) {
            if (operation.argumentCount == 0) {
                all.push_back({operation.name, &operation});
                continue;
            }
            for (test::Arguments const& arguments : kArguments.at(operation.name)) {
                all.push_back({NameOf(operation, arguments), &operation, arguments});
            }
        }
        return all;
    }();
    return steps;
}

std::vector<Step const*> const& AllSteps() {
    static std::vector<Step const*> const steps = [] {
        std::vector<Step const*> all{&Initialisation(), &SecondInitialisation()};
        for (Step const& operation : Operations()) {
            all.push_back(&operation);
        }
        return all;
    }();
    return steps;
}

StepAnswer Run(test::Exports const& api, Step const& step) {
    if (step.IsInitialisation()) {
        return Initialise(api);
    }
    StepAnswer answer{step.operation->call(api, step.arguments)};
    answer.worked = Worked(*step.operation, answer);
    return answer;
}

}  // namespace gputune::matrix
