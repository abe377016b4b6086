// src/runtime/stack_protection.cpp: this program is linked with it, and runs itself to see how it ends when a function
// writes past the end of an array.
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>

extern "C" std::uintptr_t __stack_chk_guard;

namespace {

constexpr DWORD kStackBufferOverrun = 0xC0000409;

int g_failures = 0;

void Expect(bool holds, char const* what) {
    if (!holds) {
        std::printf("%s\n", what);
        ++g_failures;
    }
}

// Not for the compiler to see through.
[[gnu::noinline]] void Fill(char volatile* bytes, std::size_t count) {
    for (std::size_t index = 0; index < count; ++index) {
        bytes[index] = 'A';
    }
}

[[gnu::noinline]] int WriteTo16Bytes(std::size_t count) {
    char volatile bytes[16];
    Fill(bytes, count);
    return bytes[0];
}

DWORD Run(wchar_t const* argument) {
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command = L"\"" + std::wstring(program) + L"\" " + argument;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    DWORD code = ~DWORD{0};
    if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        ::WaitForSingleObject(process.hProcess, INFINITE);
        ::GetExitCodeProcess(process.hProcess, &code);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
    return code;
}

}  // namespace

int main(int count, char** arguments) {
    std::string const argument = count > 1 ? arguments[1] : "";
    if (argument == "value") {
        // As an exit code, which is no one's address.
        return static_cast<int>(__stack_chk_guard >> 8);
    }
    if (!argument.empty()) {
        return WriteTo16Bytes(std::strtoul(argument.c_str(), nullptr, 10)) == 'A' ? 0 : 1;
    }

    Expect(Run(L"15") == 0 && Run(L"16") == 0, "a function that keeps to its array does not end well");
    // Compilers leave up to 16 bytes free behind the array. The longest of these writes still ends within the stack.
    for (wchar_t const* const bytes : {L"36", L"64", L"300"}) {
        Expect(Run(bytes) == kStackBufferOverrun, "a function that writes past its array goes on");
    }
    DWORD const value = Run(L"value");
    Expect(value != Run(L"value") || value != Run(L"value"), "the value is the same in every process");
    std::puts(g_failures == 0 ? "all as promised" : "failed");
    return g_failures == 0 ? 0 : 1;
}
