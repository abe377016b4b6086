// What all COM objects of the stand-in have in common: their references, and the count of the objects alive.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include "sim/wmi/wmi_state.h"

// COM interfaces have no virtual destructors; objects delete themselves, by their own type.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace gputune::sim {

// An object of the class Self, which starts with one reference. Self::Find(id) returns the interface that has the
// identifier, null when it has none. Counted objects are those that a client must release.
template <class Self, bool counted, class... Bases>
class ComObject : public Bases... {
public:
    explicit ComObject(SharedWmiState state) : state_(std::move(state)) { state_->liveObjects += counted ? 1 : 0; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = static_cast<Self*>(this)->Find(id);
        if (*out == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        ULONG const left = --references_;
        if (left == 0) {
            delete static_cast<Self*>(this);
        }
        return left;
    }

protected:
    // This interface when the identifier is its own or IUnknown's, else null.
    template <class Interface>
    void* As(REFIID id) {
        bool const isMeant = id == __uuidof(Interface) || id == __uuidof(IUnknown);
        return isMeant ? static_cast<Interface*>(this) : nullptr;
    }

    ~ComObject() { state_->liveObjects -= counted ? 1 : 0; }

    SharedWmiState const& State() const { return state_; }

private:
    SharedWmiState const state_;
    std::atomic<ULONG> references_ = 1;
};

}  // namespace gputune::sim
