#include "gputune_sim.h"

#include "sim/board/BoardFile.h"
#include "sim/standin/StandIn.h"
#include "sim/standin/error_text.h"

#define SIM_EXPORT extern "C" __declspec(dllexport)

using gputune::sim::StandIn;

SIM_EXPORT int GputuneSim_LoadBoard(const char* path, char* error, int errorSize) {
    return gputune::sim::WithErrorText(error, errorSize,
                                       [&] { StandIn::Instance().Load(gputune::sim::ReadBoardFile(path)); });
}

SIM_EXPORT int GputuneSim_LoadBoardText(const char* json, char* error, int errorSize) {
    return gputune::sim::WithErrorText(error, errorSize,
                                       [&] { StandIn::Instance().Load(gputune::sim::ReadBoardText(json, "board")); });
}

SIM_EXPORT int GputuneSim_KeepState(const char* path, char* error, int errorSize) {
    return gputune::sim::WithErrorText(error, errorSize, [&] { StandIn::Instance().KeepState(path); });
}

SIM_EXPORT int GputuneSim_SetResult(const char* entryPoint, int result) {
    return entryPoint != nullptr && StandIn::Instance().SetResult(entryPoint, result) ? 1 : 0;
}

SIM_EXPORT void GputuneSim_ClearFaults(void) {
    StandIn::Instance().ClearFaults();
}

SIM_EXPORT int GputuneSim_HideEntryPoint(const char* entryPoint) {
    return entryPoint != nullptr && StandIn::Instance().Hide(entryPoint) ? 1 : 0;
}

SIM_EXPORT int GputuneSim_CallCount(void) {
    return StandIn::Instance().Calls().Count();
}

SIM_EXPORT int GputuneSim_GetCall(int index, GputuneSimCall* call) {
    return call != nullptr && StandIn::Instance().Calls().Get(index, *call) ? 1 : 0;
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
