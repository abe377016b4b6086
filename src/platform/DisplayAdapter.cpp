#include "platform/DisplayAdapter.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>

#include "platform/library.h"

namespace gputune::platform {

namespace {

constexpr std::size_t kDeviceNameLength = 32;

struct OpenAdapter {
    WCHAR deviceName[kDeviceNameLength];
    std::uint32_t adapter;
    LUID luid;
    std::uint32_t source;
};
static_assert(sizeof(OpenAdapter) == 80);
static_assert(offsetof(OpenAdapter, source) == 76);

struct CloseAdapter {
    std::uint32_t adapter;
};
static_assert(sizeof(CloseAdapter) == 4);

using Status = LONG;
constexpr Status kSuccess = 0;

// Looked up when first needed, so that GDI is not loaded into hosts without a window before.
template <class Record>
Status Call(char const* thunk, Record& record) {
    static LibraryHandle const gdi = LoadLibraryByName(L"gdi32.dll");
    auto* const function =
        gdi == nullptr ? nullptr : reinterpret_cast<Status(WINAPI*)(Record*)>(FindSymbol(gdi, thunk));
    constexpr auto kNotImplemented = static_cast<Status>(0xC0000002);
    return function == nullptr ? kNotImplemented : function(&record);
}

}  // namespace

DisplayAdapter::DisplayAdapter(std::wstring_view displayName) {
    OpenAdapter open{};
    // A name that fills the record has no terminator there.
    std::copy_n(displayName.begin(), std::min(displayName.size(), kDeviceNameLength), open.deviceName);
    if (Call("D3DKMTOpenAdapterFromGdiDisplayName", open) == kSuccess) {
        adapter_ = open.adapter;
        source_ = open.source;
    }
}

DisplayAdapter::~DisplayAdapter() {
    if (source_) {
        CloseAdapter close{adapter_};
        Call("D3DKMTCloseAdapter", close);
    }
}

}  // namespace gputune::platform
