// A WMI locator of this process's own: while an object of this class lives, CoCreateInstance of the locator's class
// gives its locator instead of the system's, and queries are answered with the display controllers told to it. Tests
// script failures and read what was asked.
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

// What was asked since the last ClearRequests. Counts are calls; the other fields are the last call's.
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
    // Registers the locator for all multithreaded-apartment threads and, when the calling thread has a single-threaded
    // apartment, for that one too; the object must then be destroyed on the same thread. The calling thread's COM is
    // left as it is. Throws std::runtime_error when COM refuses.
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
