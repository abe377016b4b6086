#include "tool/hold/Protocol.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "tool/hold/Json.h"
#include "tool/values/Names.h"

namespace gputune::tool {

namespace {

constexpr std::array<char const*, kOrders> kOrderNames = {
    "open", "ping", "arm", "sample", "automatic_fan", "fan_speed", "fan_curve", "power_limit", "profile", "take_back"};

std::optional<Order> OrderNamed(std::string const& name) {
    auto const* const found = std::find(kOrderNames.begin(), kOrderNames.end(), name);
    return found == kOrderNames.end() ? std::nullopt : std::optional(static_cast<Order>(found - kOrderNames.begin()));
}

Json PointToJson(FanPoint const& point) {
    return {point.DefaultSpeed,   point.DefaultTemperature, point.MaxSpeed,     point.MinSpeed,
            point.MaxTemperature, point.MinTemperature,     point.CurrentSpeed, point.CurrentTemperature};
}

FanPoint PointFrom(Json const& json) {
    auto const at = [&json](std::size_t i) { return json.at(i).get<int>(); };
    return {at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7)};
}

Json BoardToJson(BoardFacts const& board) {
    Json points = Json::array();
    for (int i = 0; board.fan.Valid && i < board.fan.PointCount && i < static_cast<int>(std::size(board.fan.Points));
         ++i) {
        points.push_back(PointToJson(board.fan.Points[i]));
    }
    PowerLimitSetting const& power = board.power;
    return {{"vendor", board.vendor},
            {"api", board.api},
            {"adapter", board.adapter},
            {"name", board.name},
            {"identity_of_another", board.identityIsOfAnother},
            {"fan_valid", board.fan.Valid},
            {"fan_points", std::move(points)},
            {"power", {power.Valid, power.Default, power.Max, power.Min, power.Current}}};
}

BoardFacts BoardFrom(Json const& json) {
    BoardFacts board{.vendor = json.at("vendor").get<std::uint32_t>(),
                     .api = json.at("api").get<std::uint32_t>(),
                     .adapter = json.at("adapter").get<int>(),
                     .name = json.at("name").get<std::string>(),
                     .identityIsOfAnother = json.at("identity_of_another").get<bool>()};
    board.fan.Valid = json.at("fan_valid").get<bool>();
    for (Json const& point : json.at("fan_points")) {
        if (board.fan.PointCount < static_cast<int>(std::size(board.fan.Points))) {
            board.fan.Points[board.fan.PointCount++] = PointFrom(point);
        }
    }
    Json const& power = json.at("power");
    board.power = {power.at(0).get<bool>(), power.at(1).get<int>(), power.at(2).get<int>(), power.at(3).get<int>(),
                   power.at(4).get<int>()};
    return board;
}

Json ReadingsToJson(Readings const& readings) {
    Json json = Json::array();
    for (std::optional<double> const& reading : readings) {
        json.push_back(ToJson(reading));
    }
    return json;
}

Readings ReadingsFrom(Json const& json) {
    Readings readings;
    for (std::size_t key = 0; key < readings.size(); ++key) {
        readings[key] = OptionalNumber(json.at(key));
    }
    return readings;
}

Request RequestFrom(Json const& json, Order order) {
    Request request{.order = order};
    request.percent = json.value("percent", 0);
    request.profile = json.value("profile", std::string());
    for (Json const& point : json.value("curve", Json::array())) {
        request.curve.push_back({.FanSpeed = point.at(1).get<int>(), .FanTemperature = point.at(0).get<int>()});
    }
    if (json.contains("take_back")) {
        request.takeBack = TakeBackFrom(json.at("take_back"));
    }
    return request;
}

Answer AnswerFrom(Json const& json, Order order) {
    Answer answer{.order = order};
    answer.done = json.at("done").get<bool>();
    answer.problem = json.value("problem", std::string());
    answer.code = json.value("code", std::string());
    answer.exitCode = json.value("exit_code", 1);
    if (json.contains("board")) {
        answer.board = BoardFrom(json.at("board"));
    }
    if (json.contains("readings")) {
        answer.readings = ReadingsFrom(json.at("readings"));
        answer.readings.fanUnsure = json.at("fan_unsure").get<bool>();
    }
    for (Json const& call : json.value("failed", Json::array())) {
        answer.failedCalls.push_back({call.at(0).get<std::string>(), call.at(1).get<std::string>()});
    }
    if (json.contains("shown")) {
        answer.shown = BoardSettingsFrom(json.at("shown"));
    }
    return answer;
}

// The line's record, read by `read`; nothing when the line is of another kind or version.
template <class Record>
std::optional<Record> ReadLine(std::string_view line, char const* orderKey, Record (*read)(Json const&, Order)) {
    try {
        Json const json = Json::parse(line);
        std::optional<Order> const order = OrderNamed(json.at(orderKey).get<std::string>());
        if (!order || json.at("version").get<int>() != kProtocolVersion) {
            return std::nullopt;
        }
        return read(json, *order);
    } catch (Json::exception const&) {
        return std::nullopt;
    }
}

}  // namespace

std::string BoardLabel(BoardFacts const& board) {
    return std::string(VendorName(board.vendor).code) + "-" + std::to_string(board.adapter);
}

std::string OrderName(Order order) {
    return kOrderNames[static_cast<std::size_t>(order)];
}

std::string ToLine(Request const& request) {
    Json json = {{"version", kProtocolVersion}, {"order", OrderName(request.order)}};
    if (request.order == Order::FanSpeed || request.order == Order::PowerLimit) {
        json["percent"] = request.percent;
    }
    if (!request.profile.empty()) {
        json["profile"] = request.profile;
    }
    for (FanTablePoint const& point : request.curve) {
        json["curve"].push_back({point.FanTemperature, point.FanSpeed});
    }
    if (request.takeBack) {
        json["take_back"] = ToJson(*request.takeBack);
    }
    return OneLine(json);
}

std::string ToLine(Answer const& answer) {
    Json json = {{"version", kProtocolVersion}, {"answer", OrderName(answer.order)}, {"done", answer.done}};
    if (!answer.problem.empty()) {
        json["problem"] = answer.problem;
        json["code"] = answer.code;
        json["exit_code"] = answer.exitCode;
    }
    if (answer.board) {
        json["board"] = BoardToJson(*answer.board);
    }
    if (answer.order == Order::Sample) {
        json["readings"] = ReadingsToJson(answer.readings);
        json["fan_unsure"] = answer.readings.fanUnsure;
    }
    for (FailedCall const& call : answer.failedCalls) {
        json["failed"].push_back({call.function, call.answer});
    }
    if (answer.order != Order::Ping && answer.order != Order::Arm) {
        json["shown"] = ToJson(answer.shown);
    }
    return OneLine(json);
}

std::optional<Request> ReadRequest(std::string_view line) {
    return ReadLine<Request>(line, "order", RequestFrom);
}

std::optional<Answer> ReadAnswer(std::string_view line) {
    return ReadLine<Answer>(line, "answer", AnswerFrom);
}

}  // namespace gputune::tool
