// The functions of gputune_sim.h.
#include <algorithm>
#include <cstring>
#include <exception>

#include "gputune_sim.h"
#include "sim/board/BoardFile.h"
#include "sim/standin/StandIn.h"

#define SIM_EXPORT extern "C" __declspec(dllexport)

namespace {

using gputune::sim::StandIn;

void CopyError(char const* text, char* error, int errorSize) {
    if (!error || errorSize <= 0) {
        return;
    }
    std::size_t const length = std::min(std::strlen(text), static_cast<std::size_t>(errorSize) - 1);
    std::memcpy(error, text, length);
    error[length] = '\0';
}

template <class Read>
int Load(Read const& read, char* error, int errorSize) {
    try {
        StandIn::Instance().Load(read());
        return 1;
    } catch (std::exception const& failure) {
        CopyError(failure.what(), error, errorSize);
        return 0;
    }
}

}  // namespace

SIM_EXPORT int GputuneSim_LoadBoard(const char* path, char* error, int errorSize) {
    return Load([&] { return gputune::sim::ReadBoardFile(path); }, error, errorSize);
}

SIM_EXPORT int GputuneSim_LoadBoardText(const char* json, char* error, int errorSize) {
    return Load([&] { return gputune::sim::ReadBoardText(json, "board"); }, error, errorSize);
}

SIM_EXPORT int GputuneSim_SetResult(const char* entryPoint, int result) {
    return entryPoint && StandIn::Instance().SetResult(entryPoint, result) ? 1 : 0;
}

SIM_EXPORT void GputuneSim_ClearFaults(void) {
    StandIn::Instance().ClearFaults();
}

SIM_EXPORT int GputuneSim_HideEntryPoint(const char* entryPoint) {
    return entryPoint && StandIn::Instance().Hide(entryPoint) ? 1 : 0;
}

SIM_EXPORT int GputuneSim_CallCount(void) {
    return StandIn::Instance().Calls().Count();
}

SIM_EXPORT int GputuneSim_GetCall(int index, GputuneSimCall* call) {
    return call && StandIn::Instance().Calls().Get(index, *call) ? 1 : 0;
}

SIM_EXPORT void GputuneSim_ClearCalls(void) {
    StandIn::Instance().Calls().Clear();
}

SIM_EXPORT int GputuneSim_AllocationCount(void) {
    return StandIn::Instance().AllocationCount();
}

SIM_EXPORT void GputuneSim_Advance(int milliseconds) {
    StandIn::Instance().Advance(milliseconds);
}
