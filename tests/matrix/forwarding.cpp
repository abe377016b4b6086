#include "forwarding.h"

#include <algorithm>

#include "intel_board.h"
#include "vendor_outputs.h"

namespace gputune::matrix {

namespace {

// ctl_init_args_t: size, version, the application's version 1.1, flags, supported version, identifier.
int Open(test::Machine& machine) {
    static int arguments[9];
    constexpr int kHealthy[9] = {36, 0, 0x00010001, 1};
    std::copy(std::begin(kHealthy), std::end(kHealthy), arguments);
    static void* handle = nullptr;
    return machine.Ctl("ctlInit", static_cast<void*>(arguments), static_cast<void*>(&handle));
}

int Close(test::Machine& machine) {
    return machine.Ctl("ctlClose", static_cast<void*>(nullptr));
}

// Functions that take pointers get null.
int CallIt(test::Machine& machine, std::string const& function) {
    return function == "ctlInit" ? Open(machine) : machine.Ctl(function, 0, 0, 0, 0, 0, 0, 0, 0);
}

class Comparison {
public:
    explicit Comparison(std::string function) : function_(std::move(function)) {}

    void Expect(int expected, int result, std::string const& fault) {
        if (result != expected) {
            failures_ += "red: Forwarding / " + function_ + " / " + fault + "\n    it answers " +
                         std::to_string(result) + " instead of " + std::to_string(expected) + "\n";
        }
    }

    std::string const& Failures() const { return failures_; }

private:
    std::string function_;
    std::string failures_;
};

}  // namespace

std::vector<std::string> ForwardedFunctions() {
    return {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
    };
}

int ForwardingCells(std::string const& function) {
    constexpr int kOthers = 6;
    return kOthers + static_cast<int>(test::FailureCodes(function.c_str()).size());
}

std::string TryForwarding(test::Machine& machine, Surroundings& surroundings, std::string const& function) {
    Comparison comparison(function);
    bool const opens = function == "ctlInit";
    bool const closes = function == "ctlClose";

    surroundings.PutLibrary(false);
    comparison.Expect(opens ? test::kLoadFailed : test::kNotInitialized, CallIt(machine, function), "library missing");
    surroundings.PutLibrary(true);
    comparison.Expect(opens ? 0 : test::kNotInitialized, CallIt(machine, function), "not opened");
    Close(machine);

    machine.Hide(function);
    // ctlInit succeeds also when the control library has no ctlInit.
    if (Open(machine) != 0) {
        comparison.Expect(0, -1, "opening");
    }
    comparison.Expect(test::kNotInitialized, CallIt(machine, function), "missing");
    machine.Show(function);
    comparison.Expect(0, CallIt(machine, function), "no longer missing");
    if (closes) {
        Open(machine);
    }
    for (int const code : test::FailureCodes(function.c_str())) {
        machine.Result(function, code);
        comparison.Expect(code, CallIt(machine, function), "returns " + std::to_string(code));
    }
    machine.Result(function, 0);
    comparison.Expect(0, CallIt(machine, function), "returns 0 again");
    Close(machine);
    comparison.Expect(opens ? 0 : test::kNotInitialized, CallIt(machine, function), "closed");
    Close(machine);
    return comparison.Failures();
}

}  // namespace gputune::matrix
