#include "tool/system/Utf8.h"

#include <windows.h>

#include <cstring>

namespace gputune::tool {

namespace {

std::wstring Widen(unsigned codePage, std::string_view text) {
    int const size = static_cast<int>(text.size());
    int const needed = MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), needed);
    return wide;
}

}  // namespace

std::string Utf8FromWide(std::wstring_view text) {
    int const size = static_cast<int>(text.size());
    int const needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}

std::wstring WideFromUtf8(std::string_view text) {
    return Widen(CP_UTF8, text);
}

std::string Utf8FromAnsi(char const* text, std::size_t capacity) {
    return Utf8FromWide(Widen(CP_ACP, {text, strnlen(text, capacity)}));
}

std::string SystemMessage(unsigned long error) {
    wchar_t buffer[512];
    DWORD const length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                        buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    std::wstring_view message(buffer, length);
    message = message.substr(0, message.find_last_not_of(L"\r\n .") + 1);
    return (message.empty() ? std::string("error") : Utf8FromWide(message)) + " (" + std::to_string(error) + ")";
}

}  // namespace gputune::tool
