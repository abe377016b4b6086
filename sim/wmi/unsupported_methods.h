// The methods of WMI's interfaces that no client of the stand-in calls. All return that they are not supported.
#pragma once

#include <windows.h>

#include <wbemidl.h>

// COM interfaces have no virtual destructors; objects delete themselves, by their own type.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace gputune::sim {

inline HRESULT Result(WBEMSTATUS status) {
    return static_cast<HRESULT>(status);
}
inline HRESULT NotSupported() {
    return Result(WBEM_E_NOT_SUPPORTED);
}

class UnsupportedServices : public IWbemServices {
public:
    HRESULT STDMETHODCALLTYPE OpenNamespace(const BSTR, LONG, IWbemContext*, IWbemServices**,
                                            IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE CancelAsyncCall(IWbemObjectSink*) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE QueryObjectSink(LONG, IWbemObjectSink**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetObject(const BSTR, LONG, IWbemContext*, IWbemClassObject**,
                                        IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE GetObjectAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE DeleteClass(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE DeleteClassAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE CreateClassEnum(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE CreateClassEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE PutInstance(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE DeleteInstance(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE DeleteInstanceAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE CreateInstanceEnum(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE CreateInstanceEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE ExecQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE ExecNotificationQuery(const BSTR, const BSTR, LONG, IWbemContext*,
                                                    IEnumWbemClassObject**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE ExecNotificationQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*,
                                                         IWbemObjectSink*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE ExecMethod(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                         IWbemClassObject**, IWbemCallResult**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE ExecMethodAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                              IWbemObjectSink*) override {
        return NotSupported();
    }
};

class UnsupportedEnumerator : public IEnumWbemClassObject {
public:
    HRESULT STDMETHODCALLTYPE Reset() override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE NextAsync(ULONG, IWbemObjectSink*) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE Clone(IEnumWbemClassObject**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE Skip(LONG, ULONG) override { return NotSupported(); }
};

class UnsupportedObject : public IWbemClassObject {
public:
    HRESULT STDMETHODCALLTYPE GetQualifierSet(IWbemQualifierSet**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE Put(LPCWSTR, LONG, VARIANT*, CIMTYPE) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE Delete(LPCWSTR) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetNames(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE EndEnumeration() override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE Clone(IWbemClassObject**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetObjectText(LONG, BSTR*) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE SpawnDerivedClass(LONG, IWbemClassObject**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE SpawnInstance(LONG, IWbemClassObject**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE CompareTo(LONG, IWbemClassObject*) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetPropertyOrigin(LPCWSTR, BSTR*) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE InheritsFrom(LPCWSTR) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetMethod(LPCWSTR, LONG, IWbemClassObject**, IWbemClassObject**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE DeleteMethod(LPCWSTR) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE BeginMethodEnumeration(LONG) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override {
        return NotSupported();
    }
    HRESULT STDMETHODCALLTYPE EndMethodEnumeration() override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return NotSupported(); }
    HRESULT STDMETHODCALLTYPE GetMethodOrigin(LPCWSTR, BSTR*) override { return NotSupported(); }
};

}  // namespace gputune::sim
