// Loading NVAPI and calling its functions. The library exports one entry point, "nvapi_QueryInterface", which hands out
// the addresses of all others for their identifiers; the functions themselves are in Nvapi.h.
//
// Any thread may call; what a function itself allows is NVAPI's affair. Nothing is thrown.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "nvidia/HardenedLoader.h"
#include "nvidia/nvapi_records.h"
#include "platform/library.h"
#include "platform/threads.h"

namespace gputune::nvidia {

// A slot of the function cache for each function that is called; no others are needed.
enum class NvapiSlot : std::size_t {
#define NVAPI_FUNCTION(name, ...) name,
#include "nvidia/nvapi_functions.inc"
    Count
};

class NvapiLoader {
public:
    NvapiLoader() = default;
    NvapiLoader(NvapiLoader const&) = delete;
    NvapiLoader& operator=(NvapiLoader const&) = delete;

    // How the library is initialised when it is loaded: plainly, as for every call, or with a mode of its own.
    static constexpr int kPlainly = 0;
    static constexpr int kWithMode = 1;

    // Load and initialise the library if that has not happened yet. -2 when there is none, -1 when it cannot be
    // initialised, -3 when it cannot be in this mode, else the status of its initialisation. While another thread
    // loads, it waits, for a second at most, then answers -1.
    int EnsureLoaded(int mode) { return IsLoaded() ? kNvapiOk : Load(mode); }

    // NVAPI's initialisation. Loading does it as well, so that this only counts what was done.
    int NvAPI_Initialize();

    // Call the function of this identifier: its status, or that of EnsureLoaded, or -3 when the library does not know
    // the function. Its address is looked up in the first call, and again as long as there is none.
    template <class... Params>
    int Call(NvapiSlot slot, std::uint32_t identifier, Params... args) {
        // The library is C, so nothing is thrown past the counter.
        using Function = int(NVAPI_CDECL*)(Params...) noexcept;
        Invocation call{identifier};
        if (void* const address = Begin(slot, call); address != nullptr) {
            call.status = reinterpret_cast<Function>(address)(args...);
            AfterCallHook(call);
        }
        End();
        return call.status;
    }

protected:
    using QueryInterface = void*(NVAPI_CDECL*)(std::uint32_t identifier);
    using Initialize = int(NVAPI_CDECL*)();
    using InitializeWithMode = int(NVAPI_CDECL*)(int mode);
    using BeforeCall = void(NVAPI_CDECL*)(std::uint32_t identifier, std::uint32_t* words);
    using AfterCall = void(NVAPI_CDECL*)(std::uint32_t identifier, std::uint32_t word0, std::uint32_t word1,
                                         int status);

    // The entry points of a module. Complete when `module` is set, and not changed after that.
    struct EntryPoints {
        QueryInterface queryInterface = nullptr;
        InitializeWithMode initializeWithMode = nullptr;
        Initialize initialize = nullptr;
        BeforeCall beforeCall = nullptr;  // both hooks, or neither
        AfterCall afterCall = nullptr;
    };

    struct State : EntryPoints {
        std::atomic<platform::LibraryHandle> module = nullptr;  // null until loaded; stays for the life of the process
        std::atomic<bool> loading = false;                      // a thread loads, the others wait
        // Null until first called. Written without a lock: two threads find the same address.
        std::atomic<void*> functions[static_cast<std::size_t>(NvapiSlot::Count)] = {};
        int initialized = 0;  // 1 once the module is initialised
        int initializeCount = 0;
        int loadCount = 0;
        std::atomic<int> inUse = 0;  // calls in progress
    };

    // Take the entry points of a module and initialise it. On failure nothing of it is kept.
    int Resolve(platform::LibraryHandle module, int mode);

    State state_;

private:
    // A call in progress: what the hooks are told.
    struct Invocation {
        std::uint32_t identifier;
        int status = kNvapiOk;
        std::uint32_t words[2] = {};
    };

    // Everything before the call. Gives the function's address; null when it cannot be called, and `status` says why.
    void* Begin(NvapiSlot slot, Invocation& call);

    void AfterCallHook(Invocation const& call) const {
        if (state_.afterCall != nullptr) {
            state_.afterCall(call.identifier, call.words[0], call.words[1], call.status);
        }
    }

    void End() { --state_.inUse; }

    bool IsLoaded() const {
        return !state_.loading.load(std::memory_order_acquire) &&
               state_.module.load(std::memory_order_acquire) != nullptr;
    }

    int Load(int mode);
    int LoadModule(int mode);
    int InitializeModule(int mode) const;
    void ForgetModule();
    void* Query(std::uint32_t identifier) const;

    HardenedLoader loader_;
    platform::Lock initializeLock_;
};

}  // namespace gputune::nvidia
