// Reading the registry of the local machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace gputune::platform {

struct RegistryAnswer {
    std::uint32_t error = 0;  // the system's code; 0 when it was read
    std::vector<std::wstring> texts;
};

// The text, or each of the texts, of a value below HKEY_LOCAL_MACHINE; none when the value is of another type.
RegistryAnswer ReadMachineTexts(std::wstring const& key, wchar_t const* value);

// The names of a key's own subkeys.
RegistryAnswer ReadMachineSubkeys(std::wstring const& key);

}  // namespace gputune::platform
