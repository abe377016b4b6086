#include <algorithm>
#include <utility>

#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

std::string ReadText(JsonValue const& value) {
    constexpr std::size_t kTextBytes = 255;  // what the vendor's records hold beside the terminator
    return value.String(kTextBytes);
}

Adapter ReadAdapter(JsonValue const& value) {
    JsonObject object(value);
    Adapter adapter;
    adapter.index = object.Required("index").Int(0, 1000);
    adapter.udid = ReadText(object.Required("udid"));
    adapter.name = ReadText(object.Required("name"));
    object.ReadWith("displayName", adapter.displayName, ReadText);
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
    object.ReadWith("type", memory.type, ReadText);
    object.Read("bandwidth", memory.bandwidth, 0);
    object.Read("usedIdle", model.memoryIdle, 0, kMaxMegabytes);
    object.Read("usedLoaded", model.memoryLoaded, 0, kMaxMegabytes);
    object.Finish();
    return memory;
}

void ReadFrameMetrics(JsonValue const& value, Board& board) {
    JsonObject object(value);
    board.amd.frameMetricsRunning = object.Required("running").Bool();
    object.Read("framesPerSecond", board.model.framesPerSecond, 0, 1e5);
    object.Finish();
    if (board.model.fixed) {
        board.model.fixed->framesPerSecond = board.model.framesPerSecond;
    }
}

}  // namespace

void ReadAmd(JsonObject& object, Board& board) {
    board.library = "atiadlxx";
    if (auto const library = object.Optional("library")) {
        board.library = library->Choice({"atiadlxx", "atiadlxy"}) == 0 ? "atiadlxx" : "atiadlxy";
    }
    object.Required("adapters").ForEach([&](JsonValue const& value) {
        Adapter adapter = ReadAdapter(value);
        auto const sameIndex = [&](Adapter const& other) { return other.index == adapter.index; };
        if (std::any_of(board.amd.adapters.begin(), board.amd.adapters.end(), sameIndex)) {
            value.Fail("an index that no other adapter has");
        }
        board.amd.adapters.push_back(std::move(adapter));
    });
    JsonValue const version = object.Required("overdriveVersion");
    board.amd.overdriveVersion = version.Int(0, 9);
    object.ReadWith("overdriveN", board.amd.overdriveN, ReadOverdriveN);
    object.ReadWith("overdrive8", board.amd.overdrive8, ReadOverdrive8);
    if (board.amd.overdriveVersion == 7 && !board.amd.overdriveN) {
        version.Fail("the part \"overdriveN\" with version 7");
    }
    if (board.amd.overdriveVersion == 8 && !board.amd.overdrive8) {
        version.Fail("the part \"overdrive8\" with version 8");
    }
    board.model = ReadOwnModel(object, {});
    object.ReadWith("memory", board.amd.memory,
                    [&](JsonValue const& memory) { return ReadMemory(memory, board.model); });
    if (auto const metrics = object.Optional("frameMetrics")) {
        ReadFrameMetrics(*metrics, board);
    }
    board.faults = ReadFaults(object, AmdFaultRules());
}

}  // namespace gputune::sim
