// A hold: settings that are kept in force through a worker process, and taken back at the end. This class makes the
// decisions; it is told the time and what the worker said, and waits for nothing itself.
#pragma once

#include <optional>
#include <string>

#include "tool/hold/Claim.h"
#include "tool/hold/FanLaw.h"
#include "tool/hold/HoldSettings.h"
#include "tool/hold/Journal.h"
#include "tool/hold/ReadingJudge.h"
#include "tool/hold/WorkerLink.h"

namespace gputune::tool {

// In the order of a hold's life.
enum class HoldEvent {
    Opened,         // the board was opened
    Restored,       // what an earlier hold had left was taken back
    Reading,        // the sensors were read
    Held,           // the settings are in force
    Released,       // the fan is to go back to automatic control: the reading was none to act upon
    WorkerLost,     // the worker crashed, hung or lost its driver
    Resumed,        // the machine or this program stood still
    ForeignChange,  // the board shows another value than the one that was set
    Dropped,        // the driver dropped another setting when the fan was set
    Yielded,        // a setting is given up
    Refused,        // the driver did not take an order
    Ended           // everything was taken back, or not
};

struct HoldReport {
    HoldEvent event = HoldEvent::Reading;
    std::string text{};          // a sentence; empty for a reading
    Readings readings{};         // of a reading
    bool held = false;           // whether the settings are in force now
    std::optional<int> speed{};  // the fan's, as it was last ordered; nothing: automatic control, or the board's curve
};

// What a hold does outside, besides talking to its worker.
class HoldPort : public WorkerPort {
public:
    // Called once, when the board is known: checks, asks the user, and takes the lock; may take its time. Returns the
    // journal of an earlier hold on this board. Throws ToolError when the hold is not to begin.
    virtual std::optional<Journal> Begin(BoardFacts const& board) = 0;
    // Sets the journal's name, and returns when it is on the disk. Throws ToolError when it cannot be written.
    virtual void WriteJournal(TakeBack& takeBack) = 0;
    virtual void RemoveJournal() = 0;
    virtual void Report(HoldReport const& report) = 0;
};

class Hold {
public:
    // Without settings nothing is held: the hold ends when what an earlier one left has been taken back.
    Hold(std::optional<HoldSettings> settings, HoldPort& port);

    // The worker's line; the end of its pipe; the time. `now` in seconds, of a clock that goes on while the machine
    // sleeps.
    void OnLine(std::string const& line, double now);
    void OnGone(double now);
    void OnTime(double now);
    // When OnTime is to be called next, at the latest.
    double NextTime() const;
    // Takes everything back and ends.
    void Stop(std::string const& why, double now);

    bool IsEnded() const { return phase_ == Phase::Ended; }
    // Of the command; the reason is in Problem.
    int ExitCode() const { return exitCode_; }
    std::string const& Problem() const { return problem_; }
    std::string const& ProblemCode() const { return problemCode_; }
    int Restarts() const { return link_.Restarts(); }

private:
    enum class Phase { Opening, Restoring, Looking, Holding, Ending, Ended };
    enum class Setting { Fan, Power, Clocks };

    // What is to be said and done about the worker.
    void Handle(WorkerLink::Event const& event, double now);
    void OnAnswer(Answer const& answer, double now);
    void OnOpened(Answer const& answer, double now);
    void OnLost(std::string const& why);
    void OnGap(double seconds, double now);

    // Sends what is to be done next, when the worker is ready for it.
    void Continue(double now);
    void Prepare(double now);
    bool SendChange(double now);
    void SendTakeBack(double now);
    void SendSample(double now);

    // The answers.
    void OnSample(Answer const& answer, double now);
    void OnReleased(Answer const& answer, double now);
    void OnFanSet(Answer const& answer, double now);
    void OnPowerSet(Answer const& answer, double now);
    void OnProfileSet(Answer const& answer, double now);
    void OnTakenBack(Answer const& answer, double now);

    // The decisions.
    void PutInForce(BoardSettings const& shown);
    void Release(std::string const& why, HoldEvent event);
    void CompareFan(BoardSettings const& shown, double now);
    void CompareOthers(BoardSettings const& shown, HoldEvent event, double now);
    void SetAgain(Setting setting, std::string const& text, HoldEvent event, double now);
    void GiveUp(Setting setting, bool keepAtEnd);
    void BeginEnd(std::string const& why, int exitCode, double now);
    void End(int exitCode, std::string const& problem, std::string const& code);
    void Report(HoldEvent event, std::string const& text);
    Claim& ClaimOf(Setting setting) { return claims_[static_cast<std::size_t>(setting)]; }
    bool NothingIsHeld() const;
    void SetFanIsTouched(bool isTouched);

    std::optional<HoldSettings> settings_;
    HoldPort& port_;
    WorkerLink link_;
    Phase phase_ = Phase::Opening;

    std::optional<BoardFacts> board_;
    std::optional<Journal> left_;       // of an earlier hold
    std::optional<TakeBack> takeBack_;  // once the journal is written
    Claim claims_[3];
    ReadingJudge judge_;
    FanLawState law_;
    BoardSettings shown_;  // at the last reading

    // Of the present worker.
    bool isArmed_ = false;
    bool mustRelease_ = false;  // the fan has to go back to automatic control before anything else
    bool isTouched_ = false;    // the fan may be under other than automatic control
    bool inForce_ = false;      // the settings are; for the fan: it follows the law
    int valid_ = 0;             // readings in a row
    int unread_ = 0;            // samples in a row without the temperature
    int refused_ = 0;           // orders in a row that were to return the fan
    std::optional<int> speed_;  // what was ordered last, and taken
    std::optional<int> wantedSpeed_;
    bool ownCurve_ = false;  // the board follows the curve itself, if it takes it
    bool curveIsSet_ = false;
    bool mustSetPower_ = false;
    bool mustSetProfile_ = false;

    // What the board has to show.
    std::optional<double> power_;
    std::optional<double> gpuClock_;
    std::optional<double> memoryClock_;

    int looks_ = 0;
    int takeBackTries_ = 0;
    double nextSample_ = 0;
    double retryAt_ = 0;
    std::optional<double> endsAt_;  // whatever has been taken back by then
    std::optional<double> lastTime_;
    std::string endText_;
    int exitCode_ = 0;
    std::string problem_;
    std::string problemCode_;
};

}  // namespace gputune::tool
