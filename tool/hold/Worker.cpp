#include "tool/hold/Worker.h"

#include <windows.h>

#include <utility>

#include "tool/board/FanChanges.h"
#include "tool/board/PlannedClocks.h"
#include "tool/board/ShownSettings.h"
#include "tool/hold/TakingBack.h"
#include "tool/hold/WorkerLink.h"
#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

void Take(Answer& answer, SentChange const& change, std::string const& refusal) {
    answer.done = change.done && change.readBack.IsDone();
    if (!change.done) {
        answer.problem = refusal;
    } else if (!answer.done) {
        answer.problem = Joined(change.readBack.Problems(), " ");
    }
    answer.code = answer.done ? "" : change.done ? "not_as_asked" : "refused";
}

void SetPower(Session const& session, int percent, Answer& answer) {
    // The temperature limit that goes along with it on OverdriveN boards is the one in effect.
    BoardSettings const shown = ReadSettingsAnew(session);
    bool const needsTemperature = session.ApiType() == GPUTUNE_API_OVERDRIVEN;
    if (needsTemperature && !shown.temperatureLimit) {
        answer.done = false;
        answer.problem = "The temperature limit in effect cannot be read, so it cannot stay as it is.";
        return;
    }
    int const temperature = needsTemperature ? static_cast<int>(*shown.temperatureLimit) : 0;
    SentChange change{.done = session.Api().SetPowerLimit(temperature, percent)};
    std::optional<double> const limit = ReadSettingsAnew(session).powerLimit;
    if (limit) {
        change.readBack.Compare("power limit", percent, limit, Unit::Percent);
    }
    Take(answer, change, "The driver refused the power limit.");
}

void ApplyProfile(Session const& session, std::string const& name, Answer& answer) {
    Library const& api = session.Api();
    std::size_t const mark = session.LogMark();
    answer.done = name == "oc" ? api.SetPerformanceOC() : api.SetPerformanceSilent();
    if (answer.done) {
        return;
    }
    // Overdrive8 boards refuse clocks that are in effect.
    PlannedClocks const planned = ReadPlannedClocks(session.LogSince(mark));
    BoardSettings const shown = ReadSettingsAnew(session);
    answer.done = planned.gpu && shown.gpuClock == *planned.gpu && planned.memory &&
                  (!shown.memoryClock || shown.memoryClock == *planned.memory);
    if (!answer.done) {
        answer.problem = "The " + name +
                         " profile was not applied as a whole: there is none for this board, or the driver refused it.";
        answer.code = "refused";
    }
}

}  // namespace

Worker::Worker(GlobalOptions options, std::string const& outputHandle)
    : options_(std::move(options)),
      output_(outputHandle),
      finished_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      orders_(GetStdHandle(STD_INPUT_HANDLE), [this] { Watch(); }) {
    // A crash of the driver's library ends this process at once, without a dialog that keeps it.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    // At the end of a session, the system ends the supervisor first.
    constexpr DWORD kLate = 0x100;
    SetProcessShutdownParameters(kLate, SHUTDOWN_NORETRY);
}

Worker::~Worker() {
    SetEvent(finished_);  // deliberate: it stays open, as the thread may still wait for it
}

int Worker::Run() {
    std::string line;
    while (WaitForLine(line) == Wake::Line) {
        std::optional<Request> const request = ReadRequest(line);
        if (!request) {
            break;
        }
        if (!WritePipeLine(GetStdHandle(STD_ERROR_HANDLE), ToLine(Obey(*request)))) {
            break;
        }
    }
    if (armed_ && !TakeBackAlone()) {
        StartAlone({"restore"});
    }
    return kExitSuccess;
}

Worker::Wake Worker::WaitForLine(std::string& line) {
    DWORD const limit = armed_ ? static_cast<DWORD>(kSilenceLimit * 1000) : INFINITE;
    for (;;) {
        if (std::optional<std::string> next = orders_.Take()) {
            line = std::move(*next);
            return Wake::Line;
        }
        if (orders_.IsAtEnd()) {
            return Wake::Closed;
        }
        if (WaitForSingleObject(orders_.Handle(), limit) == WAIT_TIMEOUT) {
            return Wake::Silence;
        }
    }
}

Answer Worker::Obey(Request const& request) {
    Answer answer{.order = request.order};
    if (session_ != nullptr) {
        session_->ForgetLog();
    }
    try {
        switch (request.order) {
            case Order::Open:
                Open(answer);
                break;
            case Order::Ping:
                break;
            case Order::Arm:
                Arm(request.takeBack);
                break;
            case Order::Sample:
                Sample(answer);
                break;
            case Order::AutomaticFan:
                Take(answer, SendAutomaticFan(*session_), "The driver refused to take over the fan.");
                break;
            case Order::FanSpeed:
                Take(answer, SendFanSpeed(*session_, request.percent), "The driver refused the fan speed.");
                break;
            case Order::FanCurve:
                Take(answer, SendFanCurve(*session_, request.curve), "The driver refused the fan curve.");
                break;
            case Order::PowerLimit:
                SetPower(*session_, request.percent, answer);
                break;
            case Order::Profile:
                ApplyProfile(*session_, request.profile, answer);
                break;
            case Order::TakeBack:
                Arm(request.takeBack);
                answer.problem = TakeBackAll(*session_, *request.takeBack);
                answer.done = answer.problem.empty();
                if (answer.done) {
                    Arm(std::nullopt);
                }
                break;
        }
        if (request.order != Order::Sample && request.order != Order::Ping && request.order != Order::Arm) {
            answer.shown = ReadSettingsAnew(*session_);
        }
    } catch (ToolError const& error) {
        answer.done = false;
        answer.problem = error.what();
        answer.code = error.Details().code;
        answer.exitCode = error.Details().exitCode;
    }
    return answer;
}

void Worker::Arm(std::optional<TakeBack> const& takeBack) {
    armed_ = takeBack;
    isArmed_ = takeBack.has_value();
}

void Worker::Open(Answer& answer) {
    session_ = std::make_unique<Session>(options_, output_);
    session_->RequireReady();
    Library const& api = session_->Api();
    answer.board = BoardFacts{.vendor = session_->Vendor(),
                              .api = session_->ApiType(),
                              .adapter = api.GetActiveAdapterIndex(),
                              .name = session_->AdapterName(),
                              .identityIsOfAnother = session_->IdentityIsOfAnother(),
                              .fan = api.ReadFanSetting(),
                              .power = api.GetPowerLimitSetting()};
}

void Worker::Sample(Answer& answer) const {
    answer.readings = session_->ReadSensors();
    LogEntries const fetched = session_->LogSince(0);
    RemoveStale(answer.readings, session_->ApiType(), fetched);
    answer.shown = ReadShownSettings(*session_, answer.readings);
    answer.failedCalls = FailedCalls(session_->LogSince(0));
}

// The supervisor is gone or hangs. False when not everything could be taken back.
bool Worker::TakeBackAlone() const {
    constexpr int kTries = 5;
    constexpr DWORD kPause = 500;
    for (int i = 0; i < kTries; ++i) {
        try {
            session_->ForgetLog();
            if (TakeBackAll(*session_, *armed_).empty()) {
                DeleteFileW(WideFromUtf8(armed_->journalFile).c_str());
                return true;
            }
        } catch (ToolError const&) {
            // Tried again, as what is not done.
        }
        Sleep(kPause);
    }
    return false;
}

// Runs on the thread that reads the orders when the supervisor has gone. A worker that hangs in the driver can take
// nothing back: it ends, and a new process does it.
void Worker::Watch() const {
    constexpr DWORD kLimit = 6000;
    if (WaitForSingleObject(finished_, kLimit) == WAIT_OBJECT_0) {
        return;
    }
    if (isArmed_) {
        StartAlone({"restore"});
    }
    TerminateProcess(GetCurrentProcess(), 1);
}

}  // namespace gputune::tool
