// The library's one diagnostic channel: entries of a tag and a message, on one line, flushed before the call returns.
//
// Write with the functions at the end of this file:
//
// clang-format off
//     constexpr log::Tag kTag{"[ADL::InitADL()]"};
//     log::Entry(kTag, "load adl dll failed");               // [ADL::InitADL()] ... load adl dll failed
//     log::Entry(kTag / "number of active adapter", count);  // [ADL::InitADL()] number of active adapter ... 2
// clang-format on
//
// A failure to log never changes a result, and no message is built when nothing will be logged.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "log/LineText.h"

namespace gputune::log {

// Who speaks: usually the method with its parameter types in brackets, then, behind a blank, what it speaks about.
struct Tag {
    std::string_view method;
    std::string_view subject{};
};

constexpr Tag operator/(Tag tag, std::string_view subject) {
    return {tag.method, subject};
}

// Of a literal, whose length is known here: tags are put together whether or not anything is logged.
template <std::size_t N>
constexpr Tag operator/(Tag tag, char const (&subject)[N]) {
    return {tag.method, {subject, N - 1}};
}

// One per process. Its mode is fixed by the call that creates it.
class DebugLog {
public:
    // The one log. `mode` counts only in the call that creates it: 1 standard output, 2 the file "debug.log" in the
    // current directory, 3 both, any other value nothing. Safe against concurrent first calls.
    static DebugLog& Get(int mode);

    bool WritesAnything() const { return toConsole_ || file_ != nullptr; }

    // One line, to which the line feed is added. I/O failures are ignored.
    void WriteLine(LineText& line);

    DebugLog(DebugLog const&) = delete;
    DebugLog& operator=(DebugLog const&) = delete;

private:
    explicit DebugLog(int mode);
    ~DebugLog();

    std::FILE* file_ = nullptr;  // null when the mode wants no file, or it could not be opened
    bool toConsole_ = false;
};

namespace detail {

// True once the log exists and writes nothing, as with most hosts: an entry then costs one comparison.
extern constinit std::atomic<bool> g_isSilent;
inline bool IsSilent() {
    return g_isSilent.load(std::memory_order_relaxed);
}

void WriteEntry(Tag tag, std::span<Part const> message) noexcept;
void WriteNumberedEntry(Tag tag, std::size_t number, std::span<Part const> message) noexcept;
void WriteLine(std::span<Part const> message) noexcept;

}  // namespace detail

// tag ... message
template <class... Parts>
void Entry(Tag tag, Parts const&... message) noexcept {
    if (detail::IsSilent()) {
        return;
    }
    Part const parts[] = {Part(message)...};
    detail::WriteEntry(tag, parts);
}

// tagnumber ... message: about one of several, whose number stands right behind the tag.
template <class... Parts>
void NumberedEntry(Tag tag, std::size_t number, Parts const&... message) noexcept {
    if (detail::IsSilent()) {
        return;
    }
    Part const parts[] = {Part(message)...};
    detail::WriteNumberedEntry(tag, number, parts);
}

// A message without a tag.
template <class... Parts>
void Line(Parts const&... message) noexcept {
    if (detail::IsSilent()) {
        return;
    }
    Part const parts[] = {Part(message)...};
    detail::WriteLine(parts);
}

// The same for wide messages, which are written in the system's narrow encoding.
void WideEntry(Tag tag, std::wstring_view message) noexcept;
void WideLine(std::wstring_view message) noexcept;

}  // namespace gputune::log
