#include "tool/commands/HoldViews.h"

#include <optional>
#include <utility>

#include "tool/commands/Change.h"
#include "tool/commands/Sampling.h"
#include "tool/output/LiveScreen.h"
#include "tool/output/SensorTexts.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

// In the order of HoldEvent.
constexpr char const* kEventCodes[] = {"opened",           "restored",    "reading", "held",
                                       "released",         "worker_lost", "resumed", "foreign_change",
                                       "settings_dropped", "yielded",     "refused", "ended"};

std::string StateText(HoldReport const& report) {
    return !report.held ? "automatic" : report.speed ? "fan " + WithUnit(*report.speed, Unit::Percent) : "held";
}

// What all views do at the beginning.
class AskingView : public HoldView {
public:
    AskingView(GlobalOptions options, std::string change) : options_(std::move(options)), change_(std::move(change)) {}

    void Begin(BoardFacts const& board) override {
        vendor_ = board.vendor;
        if (!change_.empty()) {
            ConfirmChange(board.name, options_, change_);
        }
    }

    Wake Wait(InterruptEvent const& interrupt, void* worker, unsigned long milliseconds) override {
        // After an interrupt its event stays set.
        Wake const wake = WaitForWorker(isStopped_ ? nullptr : &interrupt, worker, milliseconds);
        return wake == Wake::Stop ? Stop() : wake;
    }

protected:
    Wake Stop() {
        isStopped_ = true;
        return Wake::Stop;
    }
    bool IsStopped() const { return isStopped_; }
    GlobalOptions const& Options() const { return options_; }
    std::uint32_t Vendor() const { return vendor_; }

private:
    GlobalOptions options_;
    std::string change_;
    std::uint32_t vendor_ = 0;
    bool isStopped_ = false;
};

// Every event is a line, of text or of JSON.
class HoldLines : public AskingView {
public:
    using AskingView::AskingView;

    bool Show(HoldReport const& report) override {
        return WriteOutput(Options().json ? JsonLine(report) : TextLine(report));
    }

private:
    std::string JsonLine(HoldReport const& report) const {
        bool const isReading = report.event == HoldEvent::Reading;
        Result result;
        result.Add(
            {.fields = {{"time", "Time", Timestamp()},
                        {"event", "Event", std::string(kEventCodes[static_cast<std::size_t>(report.event)])},
                        {"message", "Message", report.text.empty() ? Value{} : Value{report.text}},
                        {"held", "Held", report.held},
                        {"fan_speed", "Fan speed", report.speed ? IntValue(*report.speed) : Value{}, Unit::Percent}}});
        Section sensors = SensorSection(report.readings, Vendor(), true);
        sensors.available = isReading;
        result.Add(std::move(sensors));
        return result.Json(false);
    }

    std::string TextLine(HoldReport const& report) const {
        return Timestamp() + "  " +
               (report.event == HoldEvent::Reading ? StateText(report) + ": " + ReadingsLine(report.readings, Vendor())
                                                   : report.text) +
               "\n";
    }
};

class HoldDashboard : public AskingView {
public:
    HoldDashboard(GlobalOptions const& options, std::string change, double interval)
        : AskingView(options, std::move(change)), interval_(interval) {}

    void Begin(BoardFacts const& board) override {
        AskingView::Begin(board);
        dashboard_.emplace((board.name.empty() ? "" : board.name + ", ") + ApiName(board.api).text, board.vendor,
                           interval_);
        screen_.emplace();
    }

    bool Show(HoldReport const& report) override {
        if (!report.text.empty()) {
            text_ = report.text;
        }
        if (!screen_) {
            return true;  // before the board is known
        }
        if (report.event == HoldEvent::Reading) {
            state_ = StateText(report);
            dashboard_->Add(Timestamp(), report.readings, std::nullopt);
        }
        Draw();
        return true;
    }

    Wake Wait(InterruptEvent const& interrupt, void* worker, unsigned long milliseconds) override {
        if (!screen_ || IsStopped()) {
            return AskingView::Wait(interrupt, worker, milliseconds);
        }
        switch (screen_->Wait(interrupt, milliseconds, worker)) {
            case LiveScreen::Event::Interrupt:
            case LiveScreen::Event::Quit:
                return Stop();
            case LiveScreen::Event::Other:
                return Wake::Worker;
            case LiveScreen::Event::Reset:
                dashboard_->Reset();
                Draw();
                return Wake::Time;
            case LiveScreen::Event::Resized:
                Draw();
                return Wake::Time;
            case LiveScreen::Event::Time:
                break;
        }
        return Wake::Time;
    }

private:
    void Draw() {
        std::string const keys = screen_->HasKeys() ? "q ends and lets go" : "Ctrl+C ends and lets go";
        screen_->Draw(dashboard_->Frame(screen_->Width(), screen_->Height(), screen_->UsableGlyphs(),
                                        state_ + " | " + keys + " | " + text_));
    }

    double interval_;
    std::optional<Dashboard> dashboard_;
    std::optional<LiveScreen> screen_;
    std::string state_ = "automatic";
    std::string text_;
};

// Says what happens on standard error, as standard output is for the result.
class RestoreNotes : public AskingView {
public:
    explicit RestoreNotes(GlobalOptions const& options) : AskingView(options, "") {}

    bool Show(HoldReport const& report) override {
        if (report.event == HoldEvent::WorkerLost && !Options().json) {
            WriteError(report.text + "\n");
        }
        return true;
    }
};

}  // namespace

std::unique_ptr<HoldView> MakeHoldView(GlobalOptions const& options, std::string change, double interval) {
    if (OutputIsConsole() && !options.json) {
        return std::make_unique<HoldDashboard>(options, std::move(change), interval);
    }
    return std::make_unique<HoldLines>(options, std::move(change));
}

std::unique_ptr<HoldView> MakeRestoreView(GlobalOptions const& options) {
    return std::make_unique<RestoreNotes>(options);
}

}  // namespace gputune::tool
