// All numbers come from the system. Not from GetProcessHandleCount, though: under Wine it always says 0.
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "resources.h"

namespace gputune::test {

namespace {

// Asks about every number that a handle of this process may have. Not from the system's list of all handles: under
// Wine 8, asking for that while another process ends crashes the server that all processes share.
long long CountHandles() {
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kLast = 0x4000;
    long long count = 0;
    for (std::uintptr_t handle = kStep; handle <= kLast; handle += kStep) {
        DWORD flags = 0;
        count += ::GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) ? 1 : 0;
    }
    if (count == 0) {
        throw std::runtime_error("this process has no handles");
    }
    return count;
}

void CountBlocks(Resources& resources) {
    HANDLE heaps[64];
    DWORD const count = ::GetProcessHeaps(64, heaps);
    for (DWORD index = 0; index < count && index < 64; ++index) {
        PROCESS_HEAP_ENTRY entry{};
        ::HeapLock(heaps[index]);
        while (::HeapWalk(heaps[index], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                ++resources.blocks;
                resources.bytes += entry.cbData;
            }
        }
        ::HeapUnlock(heaps[index]);
    }
    if (resources.blocks == 0) {
        throw std::runtime_error("no memory blocks were listed");
    }
}

long long CountModules() {
    HMODULE modules[512];
    DWORD size = 0;
    if (!::EnumProcessModules(::GetCurrentProcess(), modules, sizeof modules, &size)) {
        throw std::runtime_error("the system does not list the modules");
    }
    return size / sizeof(HMODULE);
}

long long CountThreads() {
    HANDLE const snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    long long count = 0;
    for (BOOL more = ::Thread32First(snapshot, &entry); more; more = ::Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    }
    ::CloseHandle(snapshot);
    return count;
}

}  // namespace

Resources ResourcesNow() {
    Resources now;
    now.handles = CountHandles();
    now.modules = CountModules();
    now.threads = CountThreads();
    CountBlocks(now);
    return now;
}

}  // namespace gputune::test
