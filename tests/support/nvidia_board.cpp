#include "nvidia_board.h"

#include <cstdio>

#include "intel_board.h"

namespace gputune::test {

Machine NvidiaBoard(int gpus) {
    Machine machine(Machine::Library::Nvidia);
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    machine.Write("NvAPI_GetInterfaceVersionString", 0, Text("NVidia Complete Version 1.10"));
    std::vector<Handle> handles;
    for (int gpu = 0; gpu < gpus; ++gpu) {
        handles.push_back(kGpu + gpu);
        machine.Write(For("NvAPI_GPU_GetFullName", kGpu + gpu), 1, Text("NVIDIA GeForce GPU " + std::to_string(gpu)));
    }
    OrderGpus(machine, handles);
    machine.Reports(GpuCount{gpus});
    return machine;
}

void OrderGpus(Machine& machine, std::vector<Handle> const& handles) {
    machine.Write("NvAPI_EnumPhysicalGPUs", 0, BytesOf(handles));
}

void OrderSensors(Machine& machine, int gpu, int count, std::vector<Sensor> const& sensors) {
    constexpr int kCountOffset = 4;
    machine.Write(For(ThermalSettings::kReadBy.entryPoint, kGpu + gpu), 2,
                  Patched(Ints({count}), sizeof(int), BytesOf(sensors)), kCountOffset);
}

void OrderErrorTexts(Machine& machine, std::vector<int> const& statuses) {
    for (int const status : statuses) {
        machine.Write(For("NvAPI_GetErrorMessage", status), 1, Text("NVAPI_" + std::to_string(status)));
    }
}

std::string DescribeNvidiaCall(Call const& call) {
    std::string line = call.entryPoint;
    bool const isHook = line.ends_with("CallHook");
    if (line.starts_with("NvAPI_GPU_")) {
        line += " " + NumberOf(call.HandleArgument(0));
    }
    if (isHook || line == "nvapi_QueryInterface") {
        char text[16];
        std::snprintf(text, sizeof text, " %X", static_cast<unsigned>(call.args.at(0)));
        line += text;
    }
    if (call.entryPoint == "NvAPI_GetErrorMessage") {
        line += " " + std::to_string(call.args.at(0));
    } else if (call.entryPoint == "NvAPI_GPU_GetThermalSettings") {
        line += " #" + std::to_string(call.args.at(1));
    } else if (call.entryPoint == "BeforeCallHook" && call.record != Bytes(8)) {
        line += " with a state that is not empty";
    } else if (call.entryPoint == "AfterCallHook") {
        for (std::size_t word = 1; word <= 3; ++word) {
            line += " " + std::to_string(call.args.at(word));
        }
    }
    return line;
}

Lines InitLog(Machine& machine) {
    machine.Init();
    return WithoutDetection(machine.TakeLog());
}

}  // namespace gputune::test
