// A vendor's library that counts its calls. Unlike the scripted ones, any number of threads may call it at once. As
// AMD's library it opens and reports an Overdrive version that no backend supports; as Intel's, its functions return
// the sum of their arguments.
#include <windows.h>

#include <atomic>
#include <cstring>

#define COUNTING_EXPORT extern "C" __declspec(dllexport)

namespace {

using Allocate = void*(__stdcall*)(int);

std::atomic<int> g_contexts = 0;
std::atomic<int> g_lists = 0;
std::atomic<int> g_versions = 0;
Allocate g_allocate = nullptr;

// So long that other threads arrive in the meantime.
void TakeTime() {
    ::Sleep(1);
}

}  // namespace

COUNTING_EXPORT int ADL2_Main_ControlX2_Create(Allocate allocate, int, void** context, int) {
    ++g_contexts;
    TakeTime();
    g_allocate = allocate;
    *context = &g_contexts;
    return 0;
}

COUNTING_EXPORT int ADL2_Adapter_AdapterInfoX4_Get(void*, int, int* count, void** list) {
    constexpr int kRecord = 1580;
    ++g_lists;
    *list = std::memset(g_allocate(kRecord), 0, kRecord);
    *count = 1;
    return 0;
}

COUNTING_EXPORT int ADL2_Adapter_Active_Get(void*, int, int* status) {
    *status = 1;
    return 0;
}

COUNTING_EXPORT int ADL2_Overdrive_Caps(void*, int, int*, int*, int* version) {
    ++g_versions;
    *version = 6;
    return 0;
}

COUNTING_EXPORT int ctlInit(void*, void**) {
    return 0;
}

COUNTING_EXPORT int ctlClose(void*) {
    return 0;
}

COUNTING_EXPORT int ctlEnumFans(int a, int b, int c) {
    return a + b + c;
}

COUNTING_EXPORT int ctlFanGetState(int a, int b, int c) {
    return a + b + c + 1;
}

COUNTING_EXPORT int ctlPciGetState(int a, int b) {
    return a + b + 2;
}

// How often it was called since the last Counting_Take: contexts created, adapter lists handed out, versions reported.
COUNTING_EXPORT void Counting_Take(int* counts) {
    counts[0] = g_contexts.exchange(0);
    counts[1] = g_lists.exchange(0);
    counts[2] = g_versions.exchange(0);
}
