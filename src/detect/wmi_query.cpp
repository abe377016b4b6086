#include "detect/wmi_query.h"

#include <windows.h>

#include <comutil.h>
#include <wbemidl.h>
#include <wrl/client.h>

#include "log/DebugLog.h"
#include "platform/last_error.h"
#include "platform/text.h"

namespace gputune {

namespace {

using Microsoft::WRL::ComPtr;

constexpr std::string_view kMethod = "[GetWmiData()]";

// COM on this thread for the life of the object.
class Apartment {
public:
    Apartment() {
        constexpr log::Tag kTag = log::Tag{kMethod} / "CoInitializeEx";
        HRESULT const result = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        if (SUCCEEDED(result)) {
            usable_ = mustUninitialize_ = true;
        } else if (result == RPC_E_CHANGED_MODE) {
            log::Entry(kTag, "CoInitializeEx initialized as different mode beforehand, skip uninitialize after using");
            usable_ = true;
        } else {
            log::Entry(kTag, "failed: FAILED(hres) && (hres != RPC_E_CHANGED_MODE)");
        }
    }
    ~Apartment() {
        if (mustUninitialize_) {
            ::CoUninitialize();
        }
    }
    Apartment(Apartment const&) = delete;
    Apartment& operator=(Apartment const&) = delete;

    bool Usable() const { return usable_; }

private:
    bool usable_ = false;
    bool mustUninitialize_ = false;
};

bool InitializeSecurity() {
    constexpr log::Tag kTag = log::Tag{kMethod} / "CoInitializeSecurity";
    HRESULT const result = ::CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                                  RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    if (SUCCEEDED(result)) {
        return true;
    }
    if (result == RPC_E_TOO_LATE) {
        // The host has set its own security for the process, which serves as well.
        log::Entry(kTag, "failed: RPC_E_TOO_LATE");
        log::Entry(kTag, "Ignore RPC_E_TOO_LATE, continue...");
        return true;
    }
    log::Entry(kTag, result == RPC_E_NO_GOOD_SECURITY_PACKAGES ? "failed: RPC_E_NO_GOOD_SECURITY_PACKAGES"
                                                               : "failed: something else");
    return false;
}

// Whether a step succeeded; a failure is logged with the thread's last error code (not the HRESULT: deliberate).
bool Succeeded(HRESULT result, std::string_view step) {
    if (SUCCEEDED(result)) {
        return true;
    }
    std::uint32_t const lastError = platform::LastError();
    log::Entry(log::Tag{kMethod} / step, "failed: ", lastError);
    return false;
}

ComPtr<IWbemServices> Connect(ComPtr<IWbemLocator>& locator) {
    if (!Succeeded(::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&locator)),
                   "CoCreateInstance")) {
        return nullptr;
    }
    _bstr_t const name(L"root\\CIMV2");
    ComPtr<IWbemServices> services;
    if (!Succeeded(locator->ConnectServer(name, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services),
                   "ConnectServer")) {
        return nullptr;
    }
    if (!Succeeded(::CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                       RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE),
                   "CoSetProxyBlanket")) {
        return nullptr;
    }
    return services;
}

std::vector<std::wstring> ReadAll(IEnumWbemClassObject& objects, wchar_t const* property) {
    std::vector<std::wstring> values;
    for (;;) {
        ComPtr<IWbemClassObject> object;
        ULONG returned = 0;
        objects.Next(static_cast<long>(WBEM_INFINITE), 1, &object, &returned);
        if (returned == 0 || !object) {
            return values;
        }
        _variant_t value;
        object->Get(property, 0, &value, nullptr, nullptr);
        if (V_VT(&value) == VT_BSTR && V_BSTR(&value) != nullptr) {
            values.emplace_back(V_BSTR(&value), ::SysStringLen(V_BSTR(&value)));
        }
    }
}

}  // namespace

std::vector<std::wstring> GetWmiData(char const* query, wchar_t const* property) {
    // Declared first, so that every interface is released before COM is.
    Apartment const apartment;
    if (!apartment.Usable() || !InitializeSecurity()) {
        return {};
    }
    ComPtr<IWbemLocator> locator;
    ComPtr<IWbemServices> const services = Connect(locator);
    if (!services) {
        return {};
    }
    _bstr_t const language(L"WQL");
    _bstr_t const text(platform::ToWide(query).c_str());
    ComPtr<IEnumWbemClassObject> objects;
    if (!Succeeded(services->ExecQuery(language, text, WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                                       &objects),
                   "ExecQuery")) {
        return {};
    }
    if (!objects) {
        return {};
    }
    return ReadAll(*objects.Get(), property);
}

}  // namespace gputune
