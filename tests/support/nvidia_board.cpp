#include "nvidia_board.h"

#include "intel_board.h"

namespace gputune::test {

Machine NvidiaBoard(int gpus) {
    Machine machine(Machine::Library::Nvidia);
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    machine.Write("NvAPI_GetInterfaceVersionString", 0, Text("NVidia Complete Version 1.10"));
    std::vector<int> handles;
    for (int gpu = 0; gpu < gpus; ++gpu) {
        handles.push_back(kGpu + gpu);
        machine.Write(For("NvAPI_GPU_GetFullName", kGpu + gpu), 1, Text("NVIDIA GeForce GPU " + std::to_string(gpu)));
    }
    machine.Write("NvAPI_EnumPhysicalGPUs", 0, Ints(handles));
    machine.Write("NvAPI_EnumPhysicalGPUs", 1, Ints({gpus}));
    return machine;
}

void OrderSensors(Machine& machine, int gpu, int count, std::vector<Sensor> const& sensors) {
    std::vector<int> words = {count};
    for (Sensor const& sensor : sensors) {
        words.insert(words.end(),
                     {sensor.controller, sensor.defaultMin, sensor.defaultMax, sensor.current, sensor.target});
    }
    constexpr int kCountOffset = 4;
    machine.Write(For("NvAPI_GPU_GetThermalSettings", kGpu + gpu), 2, Ints(words), kCountOffset);
}

void OrderErrorTexts(Machine& machine, std::vector<int> const& statuses) {
    for (int const status : statuses) {
        machine.Write(For("NvAPI_GetErrorMessage", status), 1, Text("NVAPI_" + std::to_string(status)));
    }
}

Lines InitLog(Machine& machine) {
    machine.Init();
    return WithoutDetection(machine.TakeLog());
}

}  // namespace gputune::test
