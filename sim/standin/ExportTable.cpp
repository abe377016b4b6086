#include "sim/standin/ExportTable.h"

#include <windows.h>

#include <cstddef>
#include <vector>

namespace gputune::sim {

namespace {

// The start of this module in memory.
unsigned char* ModuleStart() {
    static unsigned char* const start = [] {
        HMODULE module = nullptr;
        ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                             reinterpret_cast<wchar_t const*>(&ModuleStart), &module);
        return reinterpret_cast<unsigned char*>(module);
    }();
    return start;
}

template <class T>
T* At(DWORD offset) {
    return reinterpret_cast<T*>(ModuleStart() + offset);
}

IMAGE_EXPORT_DIRECTORY* Directory() {
    auto const* const headers = At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    auto const& entry = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    return At<IMAGE_EXPORT_DIRECTORY>(entry.VirtualAddress);
}

// One entry of the table: the offset of the name in the module, and the number of its function.
struct Name {
    DWORD offset;
    WORD function;

    char const* Text() const { return At<char>(offset); }
};

// The names as the linker wrote them. The first call must come before anything is hidden, as it copies them.
std::vector<Name> const& AllNames() {
    static std::vector<Name> const names = [] {
        auto const* const directory = Directory();
        auto const* const offsets = At<DWORD>(directory->AddressOfNames);
        auto const* const functions = At<WORD>(directory->AddressOfNameOrdinals);
        std::vector<Name> all;
        for (DWORD i = 0; i < directory->NumberOfNames; ++i) {
            all.push_back({.offset = offsets[i], .function = functions[i]});
        }
        return all;
    }();
    return names;
}

// Makes memory writable while the object lives.
class Writable {
public:
    Writable(void* start, std::size_t size) : start_(start), size_(size) {
        ok_ = ::VirtualProtect(start_, size_, PAGE_READWRITE, &protection_) != 0;
    }
    ~Writable() {
        if (ok_) {
            ::VirtualProtect(start_, size_, protection_, &protection_);
        }
    }
    Writable(Writable const&) = delete;
    Writable& operator=(Writable const&) = delete;

    bool Ok() const { return ok_; }

private:
    void* start_;
    std::size_t size_;
    DWORD protection_ = 0;
    bool ok_ = false;
};

}  // namespace

bool HideExports(std::set<std::string> const& hidden) {
    auto const& names = AllNames();
    auto* const directory = Directory();
    auto* const offsets = At<DWORD>(directory->AddressOfNames);
    auto* const functions = At<WORD>(directory->AddressOfNameOrdinals);
    Writable const head(directory, sizeof(*directory));
    Writable const nameList(offsets, names.size() * sizeof(*offsets));
    Writable const functionList(functions, names.size() * sizeof(*functions));
    if (!head.Ok() || !nameList.Ok() || !functionList.Ok()) {
        return false;
    }
    DWORD count = 0;
    for (auto const& name : names) {
        if (!hidden.contains(name.Text())) {
            offsets[count] = name.offset;
            functions[count] = name.function;
            ++count;
        }
    }
    directory->NumberOfNames = count;
    return true;
}

}  // namespace gputune::sim
