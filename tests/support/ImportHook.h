// While one exists, gputune.dll calls a function of the test instead of one that it imports.
#pragma once

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "machine_windows.h"

namespace gputune::test {

class ImportHook {
public:
    // Throws std::runtime_error when the library imports no function of this name.
    template <class Function>
    ImportHook(char const* name, Function* replacement) : ImportHook(LibraryUnderTest(), name, replacement) {}
    template <class Function>
    ImportHook(HMODULE library, char const* name, Function* replacement) : slot_(FindSlot(library, name)) {
        original_ = Exchange(slot_, reinterpret_cast<ULONG_PTR>(replacement));
    }
    ~ImportHook() { Exchange(slot_, original_); }

    // As long as the library is loaded, which a test may unload at any time.
    template <class Function>
    static void ForGood(HMODULE library, char const* name, Function* replacement) {
        Exchange(FindSlot(library, name), reinterpret_cast<ULONG_PTR>(replacement));
    }

    ImportHook(ImportHook const&) = delete;
    ImportHook& operator=(ImportHook const&) = delete;

private:
    static ULONG_PTR* FindSlot(HMODULE module, char const* name) {
        auto const at = [module](ULONG_PTR offset) { return reinterpret_cast<unsigned char*>(module) + offset; };
        auto const* const dos = reinterpret_cast<IMAGE_DOS_HEADER const*>(at(0));
        auto const* const headers =
            reinterpret_cast<IMAGE_NT_HEADERS const*>(at(static_cast<ULONG_PTR>(dos->e_lfanew)));
        DWORD const imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
        for (auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR const*>(at(imports)); library->Name != 0;
             ++library) {
            auto const* names = reinterpret_cast<IMAGE_THUNK_DATA const*>(at(library->OriginalFirstThunk));
            auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(at(library->FirstThunk));
            for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
                if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                    auto const* const byName =
                        reinterpret_cast<IMAGE_IMPORT_BY_NAME const*>(at(names->u1.AddressOfData));
                    if (std::strcmp(reinterpret_cast<char const*>(&byName->Name), name) == 0) {
                        return reinterpret_cast<ULONG_PTR*>(&addresses->u1.Function);
                    }
                }
            }
        }
        throw std::runtime_error(std::string("gputune.dll does not import ") + name);
    }

    static ULONG_PTR Exchange(ULONG_PTR* slot, ULONG_PTR address) {
        DWORD protection = 0;
        ::VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
        ULONG_PTR const previous = *slot;
        *slot = address;
        ::VirtualProtect(slot, sizeof *slot, protection, &protection);
        return previous;
    }

    ULONG_PTR* slot_;
    ULONG_PTR original_ = 0;
};

}  // namespace gputune::test
