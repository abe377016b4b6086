#include "board/BoardFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "board/board_parts.h"

namespace gputune::sim {

namespace {

constexpr int kFormat = 1;
constexpr std::size_t kTextBytes = 255;  // what the vendor's records hold beside the terminator
constexpr std::size_t kLongTextBytes = 4096;

Adapter ReadAdapter(JsonValue const& value) {
    JsonObject object(value);
    Adapter adapter;
    adapter.index = object.Required("index").Int(0, 1000);
    adapter.udid = object.Required("udid").String(kTextBytes);
    adapter.name = object.Required("name").String(kTextBytes);
    if (auto const name = object.Optional("displayName")) {
        adapter.displayName = name->String(kTextBytes);
    }
    adapter.busNumber = object.Required("busNumber").Int(0, 255);
    object.Read("present", adapter.present);
    object.Read("exists", adapter.exists);
    object.Read("active", adapter.active);
    object.Finish();
    return adapter;
}

Memory ReadMemory(JsonValue const& value, ModelSettings& model) {
    constexpr double kMaxMegabytes = 1e9;
    JsonObject object(value);
    Memory memory;
    memory.megabytes = object.Required("megabytes").Int(0);
    if (auto const type = object.Optional("type")) {
        memory.type = type->String(kTextBytes);
    }
    object.Read("bandwidth", memory.bandwidth, 0);
    object.Read("usedIdle", model.memoryIdle, 0, kMaxMegabytes);
    object.Read("usedLoaded", model.memoryLoaded, 0, kMaxMegabytes);
    object.Finish();
    return memory;
}

void ReadFrameMetrics(JsonValue const& value, Board& board) {
    JsonObject object(value);
    board.frameMetricsRunning = object.Required("running").Bool();
    object.Read("framesPerSecond", board.model.framesPerSecond, 0, 1e5);
    object.Finish();
    if (board.model.fixed) {
        board.model.fixed->framesPerSecond = board.model.framesPerSecond;
    }
}

// What AMD's library has to tell.
void ReadAmd(JsonObject& object, Board& board) {
    board.library = "atiadlxx";
    if (auto const library = object.Optional("library")) {
        board.library = library->Choice({"atiadlxx", "atiadlxy"}) == 0 ? "atiadlxx" : "atiadlxy";
    }
    object.Required("adapters").ForEach([&](JsonValue const& value) {
        Adapter adapter = ReadAdapter(value);
        auto const sameIndex = [&](Adapter const& other) { return other.index == adapter.index; };
        if (std::any_of(board.adapters.begin(), board.adapters.end(), sameIndex)) {
            value.Fail("an index that no other adapter has");
        }
        board.adapters.push_back(std::move(adapter));
    });
    JsonValue const version = object.Required("overdriveVersion");
    board.overdriveVersion = version.Int(0, 9);
    if (auto const part = object.Optional("overdriveN")) {
        board.overdriveN = ReadOverdriveN(*part);
    }
    if (auto const part = object.Optional("overdrive8")) {
        board.overdrive8 = ReadOverdrive8(*part);
    }
    if (board.overdriveVersion == 7 && !board.overdriveN) {
        version.Fail("the part \"overdriveN\" with version 7");
    }
    if (board.overdriveVersion == 8 && !board.overdrive8) {
        version.Fail("the part \"overdrive8\" with version 8");
    }
    if (auto const model = object.Optional("model")) {
        board.model = ReadModel(*model);
    }
    if (auto const memory = object.Optional("memory")) {
        board.memory = ReadMemory(*memory, board.model);
    }
    if (auto const metrics = object.Optional("frameMetrics")) {
        ReadFrameMetrics(*metrics, board);
    }
    if (auto const faults = object.Optional("faults")) {
        faults->ForEach([&](JsonValue const& value) {
            Fault fault = ReadFault(value);
            auto const sameEntry = [&](Fault const& other) { return other.entryPoint == fault.entryPoint; };
            if (std::any_of(board.faults.begin(), board.faults.end(), sameEntry)) {
                value.Fail("an entry point that has no fault yet");
            }
            board.faults.push_back(std::move(fault));
        });
    }
}

}  // namespace

Board ReadBoardText(std::string const& json, std::string const& source) {
    nlohmann::json const document = ParseJson(json, source);
    JsonObject object(JsonValue(document, "", source));
    object.Required("format").Int(kFormat, kFormat);
    Board board;
    if (auto const description = object.Optional("description")) {
        board.description = description->String(kLongTextBytes);
    }
    object.Required("captions").ForEach([&](JsonValue const& caption) {
        board.captions.push_back(caption.IsNull() ? std::nullopt : std::optional(caption.String(kLongTextBytes)));
    });
    // Every vendor has a reader of its own for the rest of the file.
    switch (object.Required("vendor").Choice({"none", "amd"})) {
        case 0:
            board.vendor = Vendor::None;
            break;
        case 1:
            board.vendor = Vendor::Amd;
            ReadAmd(object, board);
            break;
    }
    object.Finish();
    return board;
}

Board ReadBoardFile(std::string const& path) {
    std::ifstream file(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    if (!file) {
        throw BoardFileError(path + ": cannot be opened");
    }
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) {
        throw BoardFileError(path + ": cannot be read");
    }
    return ReadBoardText(text, path);
}

}  // namespace gputune::sim
