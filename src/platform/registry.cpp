#include "platform/registry.h"

#include <windows.h>

namespace gputune::platform {

namespace {

class Key {
public:
    explicit Key(std::wstring const& path)
        : error_(::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key_)) {}
    ~Key() {
        if (error_ == ERROR_SUCCESS) {
            ::RegCloseKey(key_);
        }
    }
    Key(Key const&) = delete;
    Key& operator=(Key const&) = delete;

    HKEY Get() const { return key_; }
    LSTATUS Error() const { return error_; }

private:
    HKEY key_ = nullptr;
    LSTATUS error_;
};

// Of one text, or of several in a row; an empty one ends the row.
std::vector<std::wstring> Split(std::wstring const& texts) {
    std::vector<std::wstring> split;
    std::size_t start = 0;
    for (std::size_t end; start < texts.size(); start = end + 1) {
        end = texts.find(L'\0', start);
        end = end == std::wstring::npos ? texts.size() : end;
        if (end == start) {
            break;
        }
        split.push_back(texts.substr(start, end - start));
    }
    return split;
}

}  // namespace

RegistryAnswer ReadMachineTexts(std::wstring const& key, wchar_t const* value) {
    // Texts with variables come expanded, as plain texts.
    constexpr DWORD kTexts = RRF_RT_REG_SZ | RRF_RT_REG_MULTI_SZ;
    std::wstring texts;
    auto const read = [&](void* buffer, DWORD& size) {
        return ::RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), value, kTexts, nullptr, buffer, &size);
    };
    DWORD size = 0;
    LSTATUS error = read(nullptr, size);
    // Three attempts, because the value may grow between the question for its size and the reading.
    for (int attempt = 0; attempt < 3 && (error == ERROR_SUCCESS || error == ERROR_MORE_DATA); ++attempt) {
        texts.resize(size / sizeof(wchar_t));
        error = read(texts.data(), size);
        if (error == ERROR_SUCCESS) {
            texts.resize(size / sizeof(wchar_t));
            return {0, Split(texts)};
        }
    }
    return {error == ERROR_UNSUPPORTED_TYPE ? 0 : static_cast<std::uint32_t>(error), {}};
}

RegistryAnswer ReadMachineSubkeys(std::wstring const& key) {
    Key const opened(key);
    RegistryAnswer answer{static_cast<std::uint32_t>(opened.Error()), {}};
    for (DWORD index = 0; answer.error == ERROR_SUCCESS; ++index) {
        wchar_t name[256];  // the longest name of a key has 255 characters
        DWORD length = 256;
        answer.error = static_cast<std::uint32_t>(
            ::RegEnumKeyExW(opened.Get(), index, name, &length, nullptr, nullptr, nullptr, nullptr));
        if (answer.error == ERROR_SUCCESS) {
            answer.texts.emplace_back(name, length);
        }
    }
    if (answer.error == ERROR_NO_MORE_ITEMS) {
        answer.error = ERROR_SUCCESS;
    }
    return answer;
}

}  // namespace gputune::platform
