// A stand-in for the system's WMI locator, inside this process: while an object of this class lives, CoCreateInstance
// of the locator's class returns its locator, and queries return the display controllers set here. Tests order failures
// and read the requests.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace gputune::sim {

// A controller's "Caption" property.
struct WmiCaption {
    enum class Kind {
        Text,
        Null,    // a property without a value
        Number,  // a property that is not a string
    };
    Kind kind = Kind::Text;
    std::wstring text;
};

enum class WmiStep { CreateInstance, ConnectServer, SetBlanket, ExecQuery, Next, Get };

// The requests since the last ClearRequests: the number of calls of each kind, and the arguments of the last one.
struct WmiRequests {
    int createCount = 0;
    int connectCount = 0;
    std::wstring nameSpace;
    bool connectWithExtras = false;  // user, password, locale, flags, authority or context given

    int blanketCount = 0;
    DWORD authenticationService = 0;
    DWORD authorizationService = 0;
    bool principalNameGiven = false;
    DWORD authenticationLevel = 0;
    DWORD impersonationLevel = 0;
    bool identityGiven = false;
    DWORD blanketCapabilities = 0;

    int queryCount = 0;
    std::wstring language;
    std::wstring query;
    long queryFlags = 0;

    int nextCount = 0;
    long nextTimeout = 0;
    unsigned long nextWanted = 0;

    int getCount = 0;
    std::wstring property;
    long getFlags = 0;
};

class WmiStandIn {
public:
    // Registers the locator for all threads in the multithreaded apartment. When the calling thread has a
    // single-threaded apartment, registers it there, too; the object must then be destroyed on the same thread. Does
    // not initialise COM on the calling thread. Throws std::runtime_error when COM refuses.
    WmiStandIn();
    ~WmiStandIn();
    WmiStandIn(WmiStandIn const&) = delete;
    WmiStandIn& operator=(WmiStandIn const&) = delete;

    void SetCaptions(std::vector<WmiCaption> captions);

    // From now on the step fails with `result` and leaves `lastError` as the thread's last error code. A failing Next
    // hands out no object; a failing Get leaves the variant empty.
    void Fail(WmiStep step, HRESULT result, DWORD lastError);
    void ClearFailures();

    WmiRequests Requests() const;
    void ClearRequests();

    // Locators, services, enumerators and objects that a client has not released.
    int LiveObjects() const;

private:
    struct Registration;
    std::unique_ptr<Registration> registration_;
};

}  // namespace gputune::sim
