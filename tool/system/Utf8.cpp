#include "tool/system/Utf8.h"

#include <windows.h>

#include <cstring>

#include "sim/standin/wide_text.h"

namespace gputune::tool {

std::string Utf8FromWide(std::wstring_view text) {
    return sim::FromWide(text);
}

std::wstring WideFromUtf8(std::string_view text) {
    return sim::ToWide(text);
}

std::string Utf8FromAnsi(char const* text, std::size_t capacity) {
    return sim::FromWide(sim::ToWide({text, strnlen(text, capacity)}, CP_ACP));
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
