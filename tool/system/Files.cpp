#include "tool/system/Files.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "sim/host/module_path.h"
#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

constexpr char const* kExistsAlready = " exists already: choose another name, or replace it with --force.";

// The system's last error.
[[noreturn]] void Fail(std::string const& path) {
    throw ToolError(path + ": " + SystemMessage(GetLastError()) + ".");
}

struct CloseFile {
    void operator()(void* handle) const { CloseHandle(handle); }
};

using Handle = std::unique_ptr<void, CloseFile>;

// Null when the system refuses.
Handle Open(std::string const& path, DWORD access, DWORD sharing, DWORD disposition) {
    HANDLE const handle = CreateFileW(WideFromUtf8(path).c_str(), access, sharing | FILE_SHARE_READ | FILE_SHARE_DELETE,
                                      nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// Empty when it is not set.
std::wstring EnvironmentVariable(wchar_t const* name) {
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

}  // namespace

std::wstring ProgramDirectory() {
    return (sim::ModulePath().parent_path() / L"").wstring();
}

std::wstring SystemDirectory() {
    std::wstring directory(MAX_PATH, L'\0');
    directory.resize(GetSystemDirectoryW(directory.data(), MAX_PATH));
    return directory + L'\\';
}

std::string ReadTextFile(std::string const& path, std::size_t enough) {
    Handle const file = Open(path, GENERIC_READ, FILE_SHARE_WRITE, OPEN_EXISTING);
    if (file == nullptr) {
        Fail(path);
    }
    std::string text;
    std::array<char, 64 * 1024> block;
    while (text.size() <= enough) {
        DWORD read = 0;
        if (!ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &read, nullptr)) {
            Fail(path);
        }
        if (read == 0) {
            break;
        }
        text.append(block.data(), read);
    }
    return text;
}

bool IsSameFile(std::string const& one, std::string const& other) {
    Handle const files[] = {Open(one, 0, FILE_SHARE_WRITE, OPEN_EXISTING),
                            Open(other, 0, FILE_SHARE_WRITE, OPEN_EXISTING)};
    BY_HANDLE_FILE_INFORMATION information[2]{};
    return files[0] != nullptr && files[1] != nullptr && GetFileInformationByHandle(files[0].get(), &information[0]) &&
           GetFileInformationByHandle(files[1].get(), &information[1]) &&
           information[0].dwVolumeSerialNumber == information[1].dwVolumeSerialNumber &&
           information[0].nFileIndexHigh == information[1].nFileIndexHigh &&
           information[0].nFileIndexLow == information[1].nFileIndexLow;
}

OutputFile::OutputFile(std::string const& path, Existing existing, std::string const& shown)
    : shown_(shown.empty() ? path : shown),
      handle_(Open(path, GENERIC_WRITE, 0, existing == Existing::Replace ? CREATE_ALWAYS : CREATE_NEW).release()) {
    if (handle_ == nullptr) {
        if (GetLastError() == ERROR_FILE_EXISTS) {
            throw ToolError(shown_ + kExistsAlready);
        }
        Fail(shown_);
    }
}

void OutputFile::Write(std::string_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        auto const part = static_cast<DWORD>(std::min<std::size_t>(text.size(), 1U << 20U));
        if (!WriteFile(handle_.get(), text.data(), part, &written, nullptr) || written == 0) {
            Fail(shown_);
        }
        text.remove_prefix(written);
    }
}

void OutputFile::Flush() {
    if (!FlushFileBuffers(handle_.get())) {
        Fail(shown_);
    }
}

void OutputFile::Close::operator()(void* handle) const {
    CloseHandle(handle);
}

void WriteWholeFile(std::string const& path, std::string_view text, Existing existing) {
    std::wstring const name = WideFromUtf8(path);
    if (existing == Existing::Keep && GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES) {
        throw ToolError(path + kExistsAlready);
    }
    std::string const partPath = path + ".part";
    std::wstring const part = WideFromUtf8(partPath);
    try {
        OutputFile(partPath, Existing::Replace, path).Write(text);
    } catch (ToolError const&) {
        DeleteFileW(part.c_str());
        throw;
    }
    if (!MoveFileExW(part.c_str(), name.c_str(), existing == Existing::Replace ? MOVEFILE_REPLACE_EXISTING : 0)) {
        DWORD const error = GetLastError();
        DeleteFileW(part.c_str());
        throw ToolError(path + (error == ERROR_ALREADY_EXISTS ? kExistsAlready : ": " + SystemMessage(error) + "."));
    }
}

void WriteDurably(std::string const& path, std::string_view text) {
    std::string const partPath = path + ".part";
    {
        OutputFile part(partPath, Existing::Replace, path);
        part.Write(text);
        part.Flush();
    }
    if (!MoveFileExW(WideFromUtf8(partPath).c_str(), WideFromUtf8(path).c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        Fail(path);
    }
}

bool FileExists(std::string const& path) {
    return GetFileAttributesW(WideFromUtf8(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void RemoveFile(std::string const& path) {
    if (!DeleteFileW(WideFromUtf8(path).c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) {
        Fail(path);
    }
}

std::string StateDirectory() {
    std::wstring folder = EnvironmentVariable(L"GPUTUNE_STATE_DIRECTORY");
    if (folder.empty()) {
        folder = EnvironmentVariable(L"LOCALAPPDATA");
        if (folder.empty()) {
            throw ToolError("There is no folder for programs' data: the environment variable LOCALAPPDATA is not set.");
        }
        folder += L"\\gputune";
    }
    if (!CreateDirectoryW(folder.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) {
        Fail(Utf8FromWide(folder));
    }
    return Utf8FromWide(folder) + "\\";
}

std::vector<std::string> FilesIn(std::string const& folder, std::string const& pattern) {
    std::vector<std::string> files;
    WIN32_FIND_DATAW found{};
    HANDLE const search = FindFirstFileW(WideFromUtf8(folder + pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return files;
    }
    do {
        files.push_back(folder + Utf8FromWide(found.cFileName));
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return files;
}

std::string FullPath(std::string const& path) {
    std::wstring const given = WideFromUtf8(path);
    std::wstring full(GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.empty() ? path : Utf8FromWide(full);
}

}  // namespace gputune::tool
