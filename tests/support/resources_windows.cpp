// The system's own lists, not the library's account of itself. GetProcessHandleCount knows nothing under Wine.
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <stdexcept>
#include <vector>

#include "Resources.h"

namespace gputune::test {

namespace {

// Grows until the list fits.
std::vector<std::byte> SystemHandles() {
    constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    constexpr auto kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);
    for (std::size_t size = std::size_t{1} << 16;; size *= 2) {
        std::vector<std::byte> list(size);
        NTSTATUS const status =
            ::NtQuerySystemInformation(kSystemHandleInformation, list.data(), static_cast<ULONG>(size), nullptr);
        if (status == 0) {
            return list;
        }
        if (status != kLengthMismatch) {
            throw std::runtime_error("the system does not list its handles");
        }
    }
}

long long CountHandles() {
    struct Entry {
        ULONG process;
        BYTE type;
        BYTE flags;
        USHORT handle;
        void* object;
        ACCESS_MASK access;
    };
    struct List {
        ULONG count;
        Entry entries[1];
    };
    std::vector<std::byte> const bytes = SystemHandles();
    auto const* const list = reinterpret_cast<List const*>(bytes.data());
    long long count = 0;
    for (ULONG index = 0; index < list->count; ++index) {
        count += list->entries[index].process == ::GetCurrentProcessId() ? 1 : 0;
    }
    if (count == 0) {
        throw std::runtime_error("no handles of this process were listed");
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
