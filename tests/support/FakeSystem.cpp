#include "FakeSystem.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "Outside.h"
#include "platform/Mutex.h"
#include "platform/TrustedFile.h"
#include "platform/last_error.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/version.h"

namespace gputune::test {

namespace {

thread_local std::uint32_t t_lastError = 0;

std::mutex g_traceMutex;

std::wstring Hexadecimal(std::uint32_t number) {
    wchar_t text[16];
    std::swprintf(text, 16, L"%X", static_cast<unsigned>(number));
    return text;
}

FakeLibrary* FindLoaded(void* handle, std::wstring* name = nullptr) {
    for (auto& [what, library] : TheSystem().libraries) {
        if (&library == handle) {
            if (library.loads <= 0) {
                std::fputs("a library is used that is not loaded\n", stderr);
                std::abort();
            }
            if (name != nullptr) {
                *name = what;
            }
            return &library;
        }
    }
    return nullptr;
}

}  // namespace

Trace FakeSystem::TraceOf(std::wstring const& beginning) {
    std::lock_guard const lock(g_traceMutex);
    Trace lines;
    for (std::wstring const& line : trace) {
        if (line.starts_with(beginning)) {
            lines.push_back(line);
        }
    }
    return lines;
}

void FakeSystem::Note(std::wstring const& line) {
    std::lock_guard const lock(g_traceMutex);
    trace.push_back(line);
}

FakeSystem& TheSystem() {
    static FakeSystem system;
    return system;
}

std::optional<void*> LoadFakeLibrary(std::wstring const& what, std::uint32_t flags) {
    Outside const outside;
    FakeSystem& system = TheSystem();
    system.Note(L"load " + what + L" " + Hexadecimal(flags));
    if (system.inLoad) {
        system.inLoad();
    }
    auto const error = system.loadErrors.find(what);
    if (error != system.loadErrors.end()) {
        platform::SetLastError(error->second);
        return nullptr;
    }
    auto const library = system.libraries.find(what);
    if (library == system.libraries.end()) {
        platform::SetLastError(platform::kErrorModuleNotFound);
        return std::nullopt;
    }
    ++library->second.loads;
    return &library->second;
}

bool UnloadFakeLibrary(void* handle) {
    Outside const outside;
    std::wstring name;
    FakeLibrary* const library = FindLoaded(handle, &name);
    if (library == nullptr) {
        return false;
    }
    --library->loads;
    TheSystem().Note(L"unload " + name);
    return true;
}

std::optional<void*> FindInFakeLibrary(void* handle, char const* name) {
    Outside const outside;
    FakeLibrary* const library = FindLoaded(handle);
    if (library == nullptr) {
        return std::nullopt;
    }
    auto const found = library->entryPoints.find(name);
    return found == library->entryPoints.end() ? nullptr : found->second;
}

}  // namespace gputune::test

namespace gputune::platform {

using test::TheSystem;

std::uint32_t LastError() {
    return test::t_lastError;
}

void SetLastError(std::uint32_t code) {
    test::t_lastError = code;
}

std::wstring HostExecutable() {
    return TheSystem().hostExecutable;
}

std::wstring SystemDirectory() {
    return TheSystem().systemDirectory;
}

std::uint32_t FindFile(std::wstring const& path) {
    test::Outside const outside;
    TheSystem().Note(L"file " + path);
    auto const found = TheSystem().files.find(path);
    return found == TheSystem().files.end() ? kErrorFileNotFound : found->second;
}

RegistryAnswer ReadMachineTexts(std::wstring const& key, wchar_t const* value) {
    test::Outside const outside;
    std::wstring const name = key + L"\\" + value;
    TheSystem().Note(L"value " + name);
    auto const found = TheSystem().values.find(name);
    return found == TheSystem().values.end() ? RegistryAnswer{kErrorFileNotFound, {}} : found->second;
}

RegistryAnswer ReadMachineSubkeys(std::wstring const& key) {
    test::Outside const outside;
    auto const found = TheSystem().subkeys.find(key);
    return found == TheSystem().subkeys.end() ? RegistryAnswer{kErrorFileNotFound, {}} : found->second;
}

// Windows sets the last error when the answer is no.
bool IsWindowsAtLeast(std::uint32_t major, std::uint32_t minor) {
    test::Outside const outside;
    TheSystem().Note(L"version " + std::to_wstring(major) + L"." + std::to_wstring(minor));
    if (!TheSystem().isWindows8) {
        SetLastError(1150);
    }
    return TheSystem().isWindows8;
}

bool IsBuildAtLeast(std::uint32_t build) {
    test::Outside const outside;
    TheSystem().Note(L"build " + std::to_wstring(build));
    if (TheSystem().build < build) {
        SetLastError(1150);
    }
    return TheSystem().build >= build;
}

TrustedFile::TrustedFile(LibraryHandle wintrust, std::wstring const& path)
    : trusted_(wintrust != nullptr && TheSystem().trustedFiles.contains(path)) {
    test::Outside const outside;
    TheSystem().Note(L"trust " + path);
}

TrustedFile::~TrustedFile() = default;

Lock::Lock() {
    test::Outside const outside;
    section_ = new std::recursive_mutex;
}

Lock::~Lock() {
    delete static_cast<std::recursive_mutex*>(section_);
}

void Lock::lock() {
    static_cast<std::recursive_mutex*>(section_)->lock();
}

void Lock::unlock() {
    static_cast<std::recursive_mutex*>(section_)->unlock();
}

void Mutex::lock() {
    std::atomic_ref state(state_);
    while (state.exchange(this) != nullptr) {
        state.wait(this);
    }
}

void Mutex::unlock() {
    std::atomic_ref state(state_);
    state.store(nullptr);
    state.notify_one();
}

// Not told here: the sanitizers see what is read too far.
std::size_t ReadableBytes(void const* /*address*/) {
    return static_cast<std::size_t>(-1);
}

// One byte a character, like the narrow encodings of Western systems.
std::string ToNarrow(std::wstring_view text) {
    std::string narrow;
    for (wchar_t const character : text) {
        narrow.push_back(character > 0 && character < 0x100 ? static_cast<char>(character) : '?');
    }
    return narrow;
}

std::wstring ToWide(std::string_view text) {
    std::wstring wide;
    for (char const character : text) {
        wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(character)));
    }
    return wide;
}

// A tenth of the time that was asked for, so that tests are quick.
void SleepMilliseconds(std::uint32_t duration) {
    test::Outside const outside;
    TheSystem().Note(L"sleep " + std::to_wstring(duration));
    if (TheSystem().inSleep) {
        TheSystem().inSleep(duration);
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(duration / 10));
    }
}

}  // namespace gputune::platform
