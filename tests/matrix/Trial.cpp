#include "Trial.h"

#include <algorithm>

#include "reasons.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;
using test::Lines;

bool IsOfMemory(Fault const& fault) {
    return fault.kind == Kind::NoMemory || fault.kind == Kind::NoMoreMemory;
}

bool IsAmd(Board const& board) {
    return board.backend == Backend::OverdriveN || board.backend == Backend::Overdrive8;
}

// AMD's library is opened once in a process, and its entry points are looked up then: what went wrong with that stays.
bool StaysBroken(Cell const& cell) {
    if (!IsAmd(*cell.board)) {
        return false;
    }
    std::string const& entry = cell.entryPoint;
    bool const isOpening = entry == "ADL2_Main_ControlX2_Create" || entry == "ADL2_Adapter_AdapterInfoX4_Get" ||
                           entry == "ADL2_Adapter_Active_Get" || entry == kEveryEntryPoint || IsOfMemory(cell.fault);
    return cell.fault.kind == Kind::Missing || (cell.step == &Initialisation() && isOpening);
}

std::string Hexadecimal(test::Bytes const& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (unsigned char const byte : bytes) {
        text += kDigits[byte / 16];
        text += kDigits[byte % 16];
    }
    return text;
}

std::string Line(Step const& step, StepAnswer const& answer) {
    return step.name + ": " + (answer.threw ? "bad_alloc" : Hexadecimal(answer.bytes));
}

}  // namespace

StepAnswer Trial::Do(Step const& step) {
    vendor_.Begin(step);
    surroundings_.CountAllocations();
    StepAnswer const answer = Run(surroundings_.Api(), step);
    if (!vendor_.Unexplained().empty()) {
        Complain(step.name + ": " + vendor_.Unexplained());
    }
    return answer;
}

// Of the step, and of all others then.
Lines Trial::Answers(Step const& step) {
    Lines answers{Line(step, Do(step))};
    for (Step const& other : Steps()) {
        StepAnswer const answer = Do(other);
        answers.push_back(Line(other, answer));
        if (!answer.breach.empty()) {
            Complain(other.name + ", afterwards: " + answer.breach);
        }
    }
    return answers;
}

Healthy Trial::ObserveOne() {
    Healthy healthy;
    healthy.after = Answers(Initialisation());
    return healthy;
}

Healthy Trial::Observe(Step const& step, bool initialised) {
    log_.Remove();
    if (initialised) {
        Initialise();
    }
    log_.Skip();
    Healthy healthy;
    healthy.worked = Do(step).worked;
    healthy.allocations = surroundings_.Allocations();
    for (auto const& [entryPoint, count] : vendor_.Counts()) {
        if (count > 0) {
            healthy.calls[entryPoint] = count;
        }
    }
    healthy.log = log_.Take();
    for (int repeat = 1; repeat < kRepeats; ++repeat) {
        Do(step);
    }
    healthy.after = Answers(step);
    return healthy;
}

std::string Trial::Try(Cell const& cell, Reference const& reference) {
    complaints_.clear();
    startLog_.clear();
    for (auto const& [name, healthy] : reference) {
        for (auto const& [entryPoint, count] : healthy.calls) {
            vendor_.Expect(entryPoint);
        }
    }
    if (cell.IsFromStart()) {
        log_.Remove();
    }
    hasBackend_ = cell.step != &Initialisation();
    if (cell.fault.kind == Kind::Missing) {
        Break(cell);
        if (cell.step != &Initialisation()) {
            log_.Skip();
            Do(Initialisation());
            startLog_ = log_.Take();
        }
    }
    log_.Skip();
    Break(cell);
    Meet(cell, reference.at(cell.step->name));
    MeetAgain(cell);
    if (cell.step->IsInitialisation()) {
        // What the initialisation left is usable, too, while the fault is still there.
        for (Step const& other : Steps()) {
            StepAnswer const answer = Do(other);
            if (!answer.breach.empty()) {
                Complain(other.name + ", after it: " + answer.breach);
            }
        }
    }
    Mend(cell);
    Recover(cell, reference);
    return complaints_;
}

void Trial::Break(Cell const& cell) {
    if (IsOfMemory(cell.fault)) {
        surroundings_.RefuseMemory(cell.fault.value, cell.fault.kind == Kind::NoMoreMemory);
    } else if (cell.entryPoint == "library") {
        surroundings_.PutLibrary(false);
    } else {
        vendor_.Break(cell.entryPoint, cell.fault, cell.calls);
    }
}

void Trial::Mend(Cell const& cell) {
    if (IsOfMemory(cell.fault)) {
        surroundings_.RefuseMemory(0, false);
    } else if (cell.entryPoint == "library") {
        surroundings_.PutLibrary(true);
    } else {
        vendor_.Mend();
    }
}

void Trial::Meet(Cell const& cell, Healthy const& healthy) {
    StepAnswer const answer = Do(*cell.step);
    hasBackend_ = hasBackend_ || answer.success;
    if (!answer.breach.empty()) {
        Complain(answer.breach);
    }
    if (answer.threw && !IsOfMemory(cell.fault)) {
        Complain("an exception left the library");
    }
    if (cell.fault.kind != Kind::Missing && !IsOfMemory(cell.fault) && vendor_.Hits() == 0 &&
        !(cell.entryPoint == kEveryEntryPoint && cell.calls == Calls::Later)) {
        Complain("the fault was not met");
    }
    Lines lines = log_.Take();
    lines.insert(lines.end(), startLog_.begin(), startLog_.end());
    if (answer.threw) {
        return;  // the exception is the reason
    }
    std::string const missing = MissingReason(
        {*cell.board, *cell.step, cell.entryPoint, cell.fault, answer.worked, healthy.worked}, lines, healthy.log);
    if (!missing.empty()) {
        Complain(missing);
    }
}

// The first time may have filled what the process keeps. A third time when the memory in use differs: Intel's library
// is closed by one backend and opened by the next, which takes a while to settle.
void Trial::MeetAgain(Cell const& cell) {
    auto const memoryAfter = [&] {
        hasBackend_ = Do(*cell.step).success || hasBackend_;
        return static_cast<long>(surroundings_.MemoryInUse());
    };
    long const first = memoryAfter();
    long const second = memoryAfter();
    if (second == first) {
        return;
    }
    long const third = memoryAfter();
    if (third != second && third != first) {
        Complain(std::to_string(third - second) + " bytes more in use after it");
    }
}

void Trial::Recover(Cell const& cell, Reference const& reference) {
    Healthy const& healthy = reference.at(cell.step->name);
    Lines const answers = Answers(*cell.step);
    if (StaysBroken(cell)) {
        if (!cell.step->IsInitialisation()) {
            CompareUnaffected(cell, reference, answers);
        }
        return;
    }
    bool const missedStart = cell.fault.kind == Kind::Missing && !cell.step->IsInitialisation() &&
                             reference.at(Initialisation().name).calls.contains(cell.entryPoint);
    if (missedStart) {
        return;  // the backend that came of it stays
    }
    Compare(answers, hasBackend_ ? healthy.after : healthy.afterOne);
}

// An operation that does not need what is missing does not suffer. The readings of all sensors are one operation's.
void Trial::CompareUnaffected(Cell const& cell, Reference const& reference, Lines const& answers) {
    if (reference.at(Initialisation().name).calls.contains(cell.entryPoint)) {
        return;
    }
    Lines const& expected = reference.at(cell.step->name).after;
    for (std::size_t position = 0; position < Steps().size(); ++position) {
        Step const& other = Steps()[position];
        bool const isReading = other.name.starts_with("GetHwmValue");
        if (!isReading && !reference.at(other.name).calls.contains(cell.entryPoint)) {
            Compare({answers[position + 1]}, {expected[position + 1]});
        }
    }
}

void Trial::Compare(Lines const& answers, Lines const& expected) {
    for (std::size_t position = 0; position < expected.size(); ++position) {
        if (answers[position] != expected[position]) {
            Complain("afterwards " + answers[position] + ", healthy " + expected[position]);
        }
    }
}

void Trial::Complain(std::string const& what) {
    complaints_ += "    " + what.substr(0, 600) + "\n";
}

}  // namespace gputune::matrix
