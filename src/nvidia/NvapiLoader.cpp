#include "nvidia/NvapiLoader.h"

#include <mutex>

namespace gputune::nvidia {

namespace {

constexpr wchar_t kLibrary[] = L"nvapi.dll";

// What the loader itself asks the library for.
constexpr std::uint32_t kInitialize = 0x0150E828;
constexpr std::uint32_t kInitializeWithMode = 0xAD298D3F;
constexpr std::uint32_t kBeforeCallHook = 0x33C7358C;
constexpr std::uint32_t kAfterCallHook = 0x593E8644;

constexpr std::uint32_t kWaitMilliseconds = 100;
constexpr int kMostWaits = 10;

// Clears the flag at the end of a load.
class Loading {
public:
    explicit Loading(std::atomic<bool>& flag) : flag_(flag) {}
    ~Loading() { flag_.store(false, std::memory_order_release); }
    Loading(Loading const&) = delete;
    Loading& operator=(Loading const&) = delete;

private:
    std::atomic<bool>& flag_;
};

template <class Function>
void Assign(Function& function, void* address) {
    function = reinterpret_cast<Function>(address);
}

}  // namespace

int NvapiLoader::NvAPI_Initialize() {
    std::lock_guard const lock(initializeLock_);
    ++state_.inUse;
    int status = EnsureLoaded(kPlainly);
    if (status == kNvapiOk && state_.initialized != 1) {
        status = state_.initialize == nullptr ? kNvapiError : state_.initialize();
        state_.initialized = status == kNvapiOk ? 1 : 0;
    }
    if (status == kNvapiOk) {
        ++state_.initializeCount;
        ++state_.loadCount;
    }
    --state_.inUse;
    return status;
}

int NvapiLoader::Load(int mode) {
    for (int waits = 0;; ++waits) {
        if (!state_.loading.load(std::memory_order_acquire)) {
            if (state_.module.load(std::memory_order_acquire) != nullptr) {
                return kNvapiOk;
            }
            if (!state_.loading.exchange(true, std::memory_order_acq_rel)) {
                break;
            }
        }
        if (waits == kMostWaits) {
            return kNvapiError;
        }
        platform::SleepMilliseconds(kWaitMilliseconds);
    }
    Loading const loading(state_.loading);
    // Another thread may have finished loading between the test of the module and the setting of the flag.
    return state_.module.load(std::memory_order_acquire) != nullptr ? kNvapiOk : LoadModule(mode);
}

int NvapiLoader::LoadModule(int mode) {
    if (mode != kPlainly && mode != kWithMode) {
        return kNvapiNoImplementation;
    }
    platform::LibraryHandle const module = loader_.Load(kLibrary, platform::kSearchSystemDirectory);
    if (module == nullptr) {
        return kNvapiLibraryNotFound;
    }
    if (int const status = Resolve(module, mode); status != kNvapiOk) {
        platform::UnloadLibrary(module);
        return status;
    }
    // Also after an initialisation with a mode: NvAPI_Initialize has nothing more to do then.
    state_.initialized = 1;
    state_.loadCount = 1;
    state_.module.store(module, std::memory_order_release);
    return kNvapiOk;
}

int NvapiLoader::Resolve(platform::LibraryHandle module, int mode) {
    ForgetModule();
    Assign(state_.queryInterface, platform::FindSymbol(module, "nvapi_QueryInterface"));
    Assign(state_.initializeWithMode, Query(kInitializeWithMode));
    Assign(state_.initialize, Query(kInitialize));
    if (int const status = InitializeModule(mode); status != kNvapiOk) {
        ForgetModule();
        return status;
    }
    Assign(state_.beforeCall, Query(kBeforeCallHook));
    Assign(state_.afterCall, Query(kAfterCallHook));
    if (state_.beforeCall == nullptr || state_.afterCall == nullptr) {
        state_.beforeCall = nullptr;
        state_.afterCall = nullptr;
    }
    return kNvapiOk;
}

int NvapiLoader::InitializeModule(int mode) const {
    switch (mode) {
        case kPlainly:
            return state_.initialize == nullptr ? kNvapiError : state_.initialize();
        case kWithMode:
            return state_.initializeWithMode == nullptr ? kNvapiNoImplementation : state_.initializeWithMode(1);
        default:
            return kNvapiError;
    }
}

// No address of one module may be used with another, or with none.
void NvapiLoader::ForgetModule() {
    static_cast<EntryPoints&>(state_) = {};
    for (std::atomic<void*>& function : state_.functions) {
        function.store(nullptr, std::memory_order_relaxed);
    }
}

void* NvapiLoader::Begin(NvapiSlot slot, Invocation& call) {
    ++state_.inUse;
    call.status = IsLoaded() ? kNvapiOk : Load(kPlainly);
    if (call.status != kNvapiOk) {
        return nullptr;
    }
    std::atomic<void*>& cached = state_.functions[static_cast<std::size_t>(slot)];
    void* address = cached.load(std::memory_order_relaxed);
    if (address == nullptr) {
        address = Query(call.identifier);
        cached.store(address, std::memory_order_relaxed);
    }
    if (address == nullptr) {
        call.status = kNvapiNoImplementation;
    } else if (state_.beforeCall != nullptr) {
        state_.beforeCall(call.identifier, call.words);
    }
    return address;
}

void* NvapiLoader::Query(std::uint32_t identifier) const {
    return state_.queryInterface == nullptr ? nullptr : state_.queryInterface(identifier);
}

}  // namespace gputune::nvidia
