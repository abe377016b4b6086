#include "sim/wmi/wmi_objects.h"

#include <oleauto.h>

#include <cwchar>

#include "sim/wmi/com_object.h"
#include "sim/wmi/unsupported_methods.h"

namespace gputune::sim {

namespace {

std::wstring Text(BSTR text) {
    return text != nullptr ? std::wstring(text, ::SysStringLen(text)) : std::wstring();
}

// A display controller.
class Controller final : public ComObject<Controller, true, UnsupportedObject> {
public:
    Controller(SharedWmiState state, WmiCaption caption) : ComObject(std::move(state)), caption_(std::move(caption)) {}

    void* Find(REFIID id) { return As<IWbemClassObject>(id); }

    HRESULT STDMETHODCALLTYPE Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override {
        State()->Log([&](WmiRequests& requests) {
            ++requests.getCount;
            requests.property = name != nullptr ? name : L"";
            requests.getFlags = flags;
        });
        if (auto const failure = State()->Failure(WmiStep::Get)) {
            return *failure;
        }
        if (name == nullptr || value == nullptr) {
            return Result(WBEM_E_INVALID_PARAMETER);
        }
        if (_wcsicmp(name, L"Caption") != 0) {
            return Result(WBEM_E_NOT_FOUND);
        }
        if (type != nullptr) {
            *type = caption_.kind == WmiCaption::Kind::Number ? CIM_SINT32 : CIM_STRING;
        }
        if (flavor != nullptr) {
            *flavor = WBEM_FLAVOR_ORIGIN_LOCAL;
        }
        return Store(*value);
    }

private:
    HRESULT Store(VARIANT& value) const {
        constexpr LONG kSomeNumber = 7;
        ::VariantInit(&value);
        switch (caption_.kind) {
            case WmiCaption::Kind::Text:
                V_BSTR(&value) = ::SysAllocStringLen(caption_.text.data(), static_cast<UINT>(caption_.text.size()));
                if (V_BSTR(&value) == nullptr) {
                    return Result(WBEM_E_OUT_OF_MEMORY);
                }
                V_VT(&value) = VT_BSTR;
                break;
            case WmiCaption::Kind::Null:
                V_VT(&value) = VT_NULL;
                break;
            case WmiCaption::Kind::Number:
                V_VT(&value) = VT_I4;
                V_I4(&value) = kSomeNumber;
                break;
        }
        return Result(WBEM_S_NO_ERROR);
    }

    WmiCaption const caption_;
};

// All controllers, in order.
class Enumerator final : public ComObject<Enumerator, true, UnsupportedEnumerator> {
public:
    Enumerator(SharedWmiState state, std::vector<WmiCaption> captions)
        : ComObject(std::move(state)), captions_(std::move(captions)) {}

    void* Find(REFIID id) { return As<IEnumWbemClassObject>(id); }

    HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override {
        State()->Log([&](WmiRequests& requests) {
            ++requests.nextCount;
            requests.nextTimeout = timeout;
            requests.nextWanted = count;
        });
        if (objects == nullptr || returned == nullptr) {
            return Result(WBEM_E_INVALID_PARAMETER);
        }
        *returned = 0;
        if (auto const failure = State()->Failure(WmiStep::Next)) {
            return *failure;
        }
        while (*returned < count && next_ < captions_.size()) {
            objects[(*returned)++] = new Controller(State(), captions_[next_++]);
        }
        return Result(*returned == count ? WBEM_S_NO_ERROR : WBEM_S_FALSE);
    }

private:
    std::vector<WmiCaption> const captions_;
    std::size_t next_ = 0;
};

// A connection to a namespace. It takes the place of a remote object's proxy, whose security a client sets.
class Services final : public ComObject<Services, true, UnsupportedServices, IClientSecurity> {
public:
    using ComObject::ComObject;

    void* Find(REFIID id) {
        void* const found = As<IWbemServices>(id);
        return found != nullptr ? found : As<IClientSecurity>(id);
    }

    HRESULT STDMETHODCALLTYPE ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext*,
                                        IEnumWbemClassObject** out) override {
        State()->Log([&](WmiRequests& requests) {
            ++requests.queryCount;
            requests.language = Text(language);
            requests.query = Text(query);
            requests.queryFlags = flags;
        });
        if (out == nullptr) {
            return Result(WBEM_E_INVALID_PARAMETER);
        }
        *out = nullptr;
        if (auto const failure = State()->Failure(WmiStep::ExecQuery)) {
            return *failure;
        }
        if (Text(language) != L"WQL") {
            return Result(WBEM_E_INVALID_QUERY_TYPE);
        }
        std::vector<WmiCaption> captions;
        {
            std::lock_guard const guard(State()->lock);
            captions = State()->captions;
        }
        *out = new Enumerator(State(), std::move(captions));
        return Result(WBEM_S_NO_ERROR);
    }

    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorization, OLECHAR* principal,
                                         DWORD authenticationLevel, DWORD impersonationLevel, void* identity,
                                         DWORD capabilities) override {
        State()->Log([&](WmiRequests& requests) {
            ++requests.blanketCount;
            requests.authenticationService = authentication;
            requests.authorizationService = authorization;
            requests.principalNameGiven = principal != nullptr;
            requests.authenticationLevel = authenticationLevel;
            requests.impersonationLevel = impersonationLevel;
            requests.identityGiven = identity != nullptr;
            requests.blanketCapabilities = capabilities;
        });
        return State()->Failure(WmiStep::SetBlanket).value_or(S_OK);
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
};

class Locator final : public ComObject<Locator, true, IWbemLocator> {
public:
    using ComObject::ComObject;

    void* Find(REFIID id) { return As<IWbemLocator>(id); }

    HRESULT STDMETHODCALLTYPE ConnectServer(BSTR nameSpace, BSTR user, BSTR password, BSTR locale, LONG flags,
                                            BSTR authority, IWbemContext* context, IWbemServices** out) override {
        State()->Log([&](WmiRequests& requests) {
            ++requests.connectCount;
            requests.nameSpace = Text(nameSpace);
            requests.connectWithExtras = user != nullptr || password != nullptr || locale != nullptr || flags != 0 ||
                                         authority != nullptr || context != nullptr;
        });
        if (out == nullptr) {
            return Result(WBEM_E_INVALID_PARAMETER);
        }
        *out = nullptr;
        if (auto const failure = State()->Failure(WmiStep::ConnectServer)) {
            return *failure;
        }
        *out = new Services(State());
        return Result(WBEM_S_NO_ERROR);
    }
};

class LocatorFactory final : public ComObject<LocatorFactory, false, IClassFactory> {
public:
    using ComObject::ComObject;

    void* Find(REFIID id) { return As<IClassFactory>(id); }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** out) override {
        State()->Log([](WmiRequests& requests) { ++requests.createCount; });
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = nullptr;
        if (auto const failure = State()->Failure(WmiStep::CreateInstance)) {
            return *failure;
        }
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        auto* const locator = new Locator(State());
        HRESULT const result = locator->QueryInterface(id, out);
        locator->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

IClassFactory* NewLocatorFactory(SharedWmiState state) {
    return new LocatorFactory(std::move(state));
}

}  // namespace gputune::sim
