// What a supervisor and its worker say to each other: a line of JSON for each order and each answer. The supervisor
// sends an order only when the one before was answered.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gputune.h"
#include "tool/board/FreshReadings.h"
#include "tool/values/BoardSettings.h"
#include "tool/values/Readings.h"

namespace gputune::tool {

// Both sides come from one program file, so a difference means that the file was replaced while the supervisor ran.
constexpr int kProtocolVersion = 1;

enum class Order {
    Open,          // loads the library and opens the board; changes nothing
    Ping,          // nothing but an answer
    Arm,           // from now on the worker takes back `takeBack` when it loses its supervisor
    Sample,        // reads sensors and settings
    AutomaticFan,  // returns the fan to the driver's control
    FanSpeed,      // `percent`
    FanCurve,      // `curve`
    PowerLimit,    // `percent`; the temperature limit stays as it is
    Profile,       // applies `profile`
    TakeBack       // takes back what Arm named, and disarms the worker when all of it is done
};
constexpr int kOrders = 10;

// What is to be taken back at the end.
struct TakeBack {
    bool fan = false;
    bool power = false;
    bool clocks = false;
    BoardSettings before{};     // what the board showed before
    std::string journalFile{};  // UTF-8; the worker deletes it when it has taken everything back without its supervisor
};

struct Request {
    Order order = Order::Ping;
    int percent = 0;
    std::vector<FanTablePoint> curve{};
    std::string profile{};  // "oc" or "silent"
    std::optional<TakeBack> takeBack{};
};

struct BoardFacts {
    std::uint32_t vendor = 0;
    std::uint32_t api = 0;
    int adapter = -1;
    std::string name{};                // UTF-8; may be empty
    bool identityIsOfAnother = false;  // the library would apply another adapter's profile
    FanSetting fan{};
    PowerLimitSetting power{};
};

struct Answer {
    Order order = Order::Ping;
    bool done = true;
    std::string problem{};  // when it is not done: sentences; what did not open, without an end to try again
    std::string code{};     // of the problem, as ErrorDetails
    int exitCode = 1;       // that goes with the problem
    std::optional<BoardFacts> board{};
    Readings readings{};  // what was read just now, nothing else
    std::vector<FailedCall> failedCalls{};
    BoardSettings shown{};
};

// "amd-0": the board's name on this machine, the same in every run.
std::string BoardLabel(BoardFacts const& board);

// The name of an order, which is in both lines.
std::string OrderName(Order order);

std::string ToLine(Request const& request);
std::string ToLine(Answer const& answer);
// Nothing when the line is no order or no answer of this version.
std::optional<Request> ReadRequest(std::string_view line);
std::optional<Answer> ReadAnswer(std::string_view line);

}  // namespace gputune::tool
