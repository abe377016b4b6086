#include "sim/wmi/WmiStandIn.h"

#include <combaseapi.h>
#include <wbemidl.h>

#include <condition_variable>
#include <stdexcept>
#include <thread>
#include <utility>

#include "sim/wmi/wmi_objects.h"
#include "sim/wmi/wmi_state.h"

namespace gputune::sim {

namespace {

// The locator's registration in the calling thread's apartment.
class ClassObject {
public:
    explicit ClassObject(SharedWmiState const& state) {
        IClassFactory* const factory = NewLocatorFactory(state);
        result_ =
            ::CoRegisterClassObject(CLSID_WbemLocator, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_);
        factory->Release();
    }
    ~ClassObject() {
        if (SUCCEEDED(result_)) {
            ::CoRevokeClassObject(cookie_);
        }
    }
    ClassObject(ClassObject const&) = delete;
    ClassObject& operator=(ClassObject const&) = delete;

    HRESULT Result() const { return result_; }

private:
    DWORD cookie_ = 0;
    HRESULT result_ = E_FAIL;
};

// A thread that keeps the multithreaded apartment, and the registration in it, alive. Without it, the registration
// would end when the last of the caller's threads leaves the apartment.
class Keeper {
public:
    explicit Keeper(SharedWmiState state) : thread_([this, state = std::move(state)] { Run(state); }) {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [&] { return started_; });
    }
    ~Keeper() {
        {
            std::lock_guard const guard(lock_);
            leave_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Keeper(Keeper const&) = delete;
    Keeper& operator=(Keeper const&) = delete;

    HRESULT Result() const { return result_; }

private:
    void Run(SharedWmiState const& state) {
        HRESULT const apartment = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        if (FAILED(apartment)) {
            WaitForLeave(apartment);
            return;
        }
        {
            ClassObject const classObject(state);
            WaitForLeave(classObject.Result());
        }
        ::CoUninitialize();
    }
    void WaitForLeave(HRESULT result) {
        std::unique_lock guard(lock_);
        result_ = result;
        started_ = true;
        changed_.notify_all();
        changed_.wait(guard, [&] { return leave_; });
    }

    std::mutex lock_;
    std::condition_variable changed_;
    bool started_ = false;
    bool leave_ = false;
    HRESULT result_ = E_FAIL;
    std::thread thread_;  // last, because it uses the others
};

bool InSingleThreadedApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(::CoGetApartmentType(&type, &qualifier)) && (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

}  // namespace

struct WmiStandIn::Registration {
    SharedWmiState state = std::make_shared<WmiState>();
    Keeper keeper{state};
    std::optional<ClassObject> callersOwn;
};

WmiStandIn::WmiStandIn() : registration_(std::make_unique<Registration>()) {
    HRESULT result = registration_->keeper.Result();
    if (SUCCEEDED(result) && InSingleThreadedApartment()) {
        registration_->callersOwn.emplace(registration_->state);
        result = registration_->callersOwn->Result();
    }
    if (FAILED(result)) {
        throw std::runtime_error("the stand-in for the system's management data cannot be registered (result " +
                                 std::to_string(result) + ")");
    }
}

WmiStandIn::~WmiStandIn() = default;

void WmiStandIn::SetCaptions(std::vector<WmiCaption> captions) {
    std::lock_guard const guard(registration_->state->lock);
    registration_->state->captions = std::move(captions);
}

void WmiStandIn::Fail(WmiStep step, HRESULT result, DWORD lastError) {
    std::lock_guard const guard(registration_->state->lock);
    registration_->state->failures[static_cast<std::size_t>(step)] =
        WmiFailure{.result = result, .lastError = lastError};
}

void WmiStandIn::ClearFailures() {
    std::lock_guard const guard(registration_->state->lock);
    registration_->state->failures = {};
}

WmiRequests WmiStandIn::Requests() const {
    std::lock_guard const guard(registration_->state->lock);
    return registration_->state->requests;
}

void WmiStandIn::ClearRequests() {
    std::lock_guard const guard(registration_->state->lock);
    registration_->state->requests = {};
}

int WmiStandIn::LiveObjects() const {
    return registration_->state->liveObjects;
}

}  // namespace gputune::sim
