// The part of a COM object that is the same for all of them: its references, and the count of those alive.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include "sim/wmi/wmi_state.h"

// COM interfaces have no virtual destructors; objects delete themselves, by their own type.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace gputune::sim {

// An object of the class Self, born with one reference. Self tells with a function Find(id) which of its interfaces has
// that identifier, null for none; Find answers for IUnknown, too. Counted objects are those a client must release.
template <class Self, bool counted, class... Bases>
class ComObject : public Bases... {
public:
    explicit ComObject(SharedWmiState state) : state_(std::move(state)) { state_->liveObjects += counted ? 1 : 0; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        if (!out) {
            return E_POINTER;
        }
        *out = static_cast<Self*>(this)->Find(id);
        if (!*out) {
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
    ~ComObject() { state_->liveObjects -= counted ? 1 : 0; }

    SharedWmiState const& State() const { return state_; }

private:
    SharedWmiState const state_;
    std::atomic<ULONG> references_ = 1;
};

}  // namespace gputune::sim
