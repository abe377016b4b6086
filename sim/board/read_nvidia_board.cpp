#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr std::size_t kTextBytes = 63;  // what the vendor's texts hold beside the terminator
constexpr std::size_t kMostGpus = 64;
constexpr std::size_t kMostSensors = 3;  // what the vendor's record holds

NvidiaSensor ReadSensor(JsonValue const& value) {
    JsonObject object(value);
    NvidiaSensor sensor;
    object.Read("controller", sensor.controller);
    object.Read("target", sensor.target);
    object.Read("minimum", sensor.minimum);
    object.Read("maximum", sensor.maximum);
    auto const quantity = object.Optional("quantity");
    auto const constant = object.Optional("value");
    if (quantity && constant) {
        quantity->Fail(R"(either "quantity" or "value")");
    }
    if (quantity) {
        constexpr Quantity kQuantities[] = {&Readings::temperature, &Readings::hotspotTemperature,
                                            &Readings::memoryTemperature};
        sensor.quantity = kQuantities[quantity->Choice({"temperature", "hotspot-temperature", "memory-temperature"})];
    } else if (constant) {
        sensor.value = constant->Int();
    }
    object.Finish();
    return sensor;
}

NvidiaGpu ReadGpu(JsonValue const& value, ModelSettings const& model) {
    JsonObject object(value);
    NvidiaGpu gpu;
    gpu.name = object.Required("name").String(kTextBytes);
    gpu.sensors = object.Required("sensors").List(ReadSensor, kMostSensors, "sensors");
    gpu.model = ReadOwnModel(object, model);
    object.Finish();
    return gpu;
}

}  // namespace

void ReadNvidia(JsonObject& object, Board& board) {
    board.library = "nvapi";
    board.model = ReadOwnModel(object, {});
    board.nvidia.version = object.Required("version").String(kTextBytes);
    object.Read("hooks", board.nvidia.hooks);
    auto const read = [&](JsonValue const& gpu) { return ReadGpu(gpu, board.model); };
    board.nvidia.gpus = object.Required("gpus").List(read, kMostGpus, "GPUs");
    board.faults = ReadFaults(object, NvidiaFaultRules());
}

}  // namespace gputune::sim
