#include "Trial.h"

#include "reasons.h"

namespace gputune::matrix {

using Kind = Fault::Kind;
using test::Lines;

std::string Trial::Try(Cell const& cell, Reference const& reference) {
    Healthy const& healthy = reference.at(cell.step->name);
    bool const isMissing = cell.fault.kind == Kind::Missing;
    bool const isFirstStart = cell.step == &Initialisation();
    failures_.clear();
    for (auto const& [name, observed] : reference) {
        vendor_.PrepareForCalls(observed.calls);
    }

    // The fault. A missing entry point or library is missing before the library under test starts.
    if (cell.IsFromStart()) {
        log_.Remove();
    }
    PutFault(cell);
    Lines startLog;
    if (isMissing && !isFirstStart) {
        Initialise();
        startLog = log_.Take();
    }
    log_.Skip();

    // The step with the fault: a promised answer, and the reason in the log.
    bool hasBackend = !isFirstStart;
    auto const run = [&] {
        StepAnswer answer = Do(*cell.step);
        hasBackend = hasBackend || answer.success;
        return answer;
    };
    StepAnswer const answer = run();
    Lines log = log_.Take();
    log.insert(log.end(), startLog.begin(), startLog.end());
    bool const canBeAvoided =
        isMissing || cell.entryPoint == kMemory || (cell.entryPoint == kEveryEntryPoint && cell.calls == Calls::Later);
    Expect(answer.breach.empty(), answer.breach);
    Expect(!answer.threw || cell.entryPoint == kMemory, "an exception left the library");
    Expect(vendor_.Hits() > 0 || canBeAvoided, "no call was faulty");
    if (!answer.threw) {
        std::string const missing = MissingReason(cell, answer.worked, log, healthy);
        Expect(missing.empty(), missing);
    }

    // The same again: no more memory is in use.
    ExpectMemoryStays(run);

    // What a faulty initialisation has left can be used while the fault is there.
    if (cell.step->IsInitialisation()) {
        for (Step const& operation : Operations()) {
            std::string const breach = Do(operation).breach;
            Expect(breach.empty(), operation.name + ", after it: " + breach);
        }
    }

    // Without the fault everything answers as on the healthy board.
    RemoveFault(cell);
    ExpectRecovery(cell, reference, hasBackend);
    return failures_;
}

namespace {

// AMD's library is opened once in a process, and its entry points are looked up then: what fails in that stays so.
bool StaysBroken(Cell const& cell) {
    if (cell.board->backend != Backend::OverdriveN && cell.board->backend != Backend::Overdrive8) {
        return false;
    }
    std::string const& entry = cell.entryPoint;
    bool const isOpening = entry == "ADL2_Main_ControlX2_Create" || entry == "ADL2_Adapter_AdapterInfoX4_Get" ||
                           entry == "ADL2_Adapter_Active_Get" || entry == kEveryEntryPoint || entry == kMemory;
    return cell.fault.kind == Kind::Missing || (cell.step == &Initialisation() && isOpening);
}

std::string Line(Step const& step, StepAnswer const& answer) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text = step.name + ": " + (answer.threw ? "bad_alloc" : "");
    for (unsigned char const byte : answer.bytes) {
        text += kDigits[byte / 16];
        text += kDigits[byte % 16];
    }
    return text;
}

}  // namespace

Trial::Trial(Board const& board, test::Machine& machine, Surroundings& surroundings)
    : surroundings_(surroundings), vendor_(machine, board.thermalControllers) {
    machine.InstallCaptions();
    machine.WriteProfile(ProfileText());
}

// Every value that the step sends to the board must have an origin (Origins.h).
StepAnswer Trial::Do(Step const& step) {
    vendor_.BeginStep(step);
    surroundings_.CountAllocations();
    StepAnswer answer = Run(surroundings_.Api(), step);
    Expect(vendor_.Unexplained().empty(), step.name + ": " + vendor_.Unexplained());
    return answer;
}

// Runs the step and then all operations.
Lines Trial::AnswersAfter(Step const& step) {
    Lines answers{Line(step, Do(step))};
    for (Step const& operation : Operations()) {
        StepAnswer const answer = Do(operation);
        answers.push_back(Line(operation, answer));
        Expect(answer.breach.empty(), operation.name + ", afterwards: " + answer.breach);
    }
    return answers;
}

Reference Trial::Observe(std::function<Healthy(Observation const&)> const& onFreshLibrary) {
    Reference reference;
    for (Step const* const step : AllSteps()) {
        reference[step->name] = onFreshLibrary([&] { return Observe(*step); });
    }
    reference[Initialisation().name].afterOne = onFreshLibrary([&] {
                                                    Healthy once;
                                                    once.after = AnswersAfter(Initialisation());
                                                    return once;
                                                }).after;
    return reference;
}

Healthy Trial::Observe(Step const& step) {
    log_.Remove();
    if (&step != &Initialisation()) {
        Initialise();
    }
    log_.Skip();
    Healthy healthy;
    healthy.worked = Do(step).worked;
    healthy.allocations = surroundings_.Allocations();
    healthy.calls = vendor_.Counts();
    std::erase_if(healthy.calls, [](auto const& call) { return call.second == 0; });
    healthy.log = log_.Take();
    for (int runs = 1; runs < kRuns; ++runs) {
        Do(step);
    }
    healthy.after = AnswersAfter(step);
    return healthy;
}

void Trial::PutFault(Cell const& cell) {
    if (cell.entryPoint == kMemory) {
        surroundings_.RefuseMemory(cell.fault.value, cell.fault.kind == Kind::NoMoreMemory);
    } else if (cell.entryPoint == kWholeLibrary) {
        surroundings_.PutLibrary(false);
    } else {
        vendor_.PutFault(cell.entryPoint, cell.fault, cell.calls);
    }
}

void Trial::RemoveFault(Cell const& cell) {
    if (cell.entryPoint == kMemory) {
        surroundings_.RefuseMemory(0, false);
    } else if (cell.entryPoint == kWholeLibrary) {
        surroundings_.PutLibrary(true);
    } else {
        vendor_.RemoveFault();
    }
}

// The first run may have filled what the process keeps. There is one more run when the memory in use differs: Intel's
// library is closed by one backend and opened by the next, and two runs may leave different amounts in turn.
void Trial::ExpectMemoryStays(std::function<StepAnswer()> const& run) {
    auto const memoryAfter = [&] {
        run();
        return static_cast<long>(surroundings_.MemoryInUse());
    };
    long const first = memoryAfter();
    long const second = memoryAfter();
    if (second != first) {
        long const third = memoryAfter();
        Expect(third == second || third == first, std::to_string(third - second) + " bytes more in use after it");
    }
}

void Trial::ExpectRecovery(Cell const& cell, Reference const& reference, bool hasBackend) {
    Healthy const& healthy = reference.at(cell.step->name);
    Lines const answers = AnswersAfter(*cell.step);
    auto const startCalls = [&](std::string const& entryPoint) {
        return reference.at(Initialisation().name).calls.contains(entryPoint);
    };
    if (!StaysBroken(cell)) {
        if (cell.fault.kind == Kind::Missing && !cell.step->IsInitialisation() && startCalls(cell.entryPoint)) {
            return;  // the library was initialised without the entry point
        }
        Lines const& expected = hasBackend ? healthy.after : healthy.afterOne;
        for (std::size_t position = 0; position < expected.size(); ++position) {
            ExpectSame(answers[position], expected[position]);
        }
    } else if (!cell.step->IsInitialisation() && !startCalls(cell.entryPoint)) {
        // The operations that do not call what is missing. GetHwmValue shows what FetchHwmValues has read.
        for (std::size_t position = 0; position < Operations().size(); ++position) {
            std::string const& name = Operations()[position].name;
            if (!name.starts_with("GetHwmValue") && !reference.at(name).calls.contains(cell.entryPoint)) {
                ExpectSame(answers[position + 1], healthy.after[position + 1]);
            }
        }
    }
}

void Trial::ExpectSame(std::string const& answer, std::string const& healthy) {
    if (answer != healthy) {
        Expect(false, "afterwards " + answer + ", healthy " + healthy);
    }
}

void Trial::Expect(bool holds, std::string const& otherwise) {
    if (!holds) {
        failures_ += "    " + otherwise.substr(0, 600) + "\n";
    }
}

}  // namespace gputune::matrix
