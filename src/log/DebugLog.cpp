#include "log/DebugLog.h"

#include <utility>

#include "platform/text.h"

namespace gputune::log {

namespace {

constexpr int kModeConsole = 1;
constexpr int kModeFile = 2;
constexpr int kModeBoth = 3;

// Relative on purpose: the file lands in the process's current directory.
constexpr char kFileName[] = "debug.log";

}  // namespace

DebugLog& DebugLog::Get(int mode) {
    static DebugLog log(mode);
    return log;
}

DebugLog::DebugLog(int mode) : toConsole_(mode == kModeConsole || mode == kModeBoth) {
    if (mode == kModeFile || mode == kModeBoth) {
        file_ = std::fopen(kFileName, "w");
    }
}

DebugLog::~DebugLog() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
    toConsole_ = false;
}

void DebugLog::WriteLine(std::string&& line) {
    line.push_back('\n');
    for (std::FILE* stream : {file_, toConsole_ ? stdout : nullptr}) {
        if (stream != nullptr) {
            std::fwrite(line.data(), 1, line.size(), stream);
            std::fflush(stream);
        }
    }
}

namespace {

void AppendTag(std::string& line, Tag tag) {
    line.append(tag.method);
    if (!tag.subject.empty()) {
        line.push_back(' ');
        line.append(tag.subject);
    }
    line.append(" ... ");
}

void AppendAll(std::string& line, std::span<Part const> message) {
    for (Part const& part : message) {
        part.AppendTo(line);
    }
}

template <class Build>
void Write(Build&& build) noexcept {
    try {
        // Call sites pass 1; InitVGAHelper, with its own argument, comes first in practice.
        DebugLog& log = DebugLog::Get(1);
        if (log.WritesAnything()) {
            std::string line;
            build(line);
            log.WriteLine(std::move(line));
        }
    } catch (...) {
        // Out of memory: the entry is lost, the operation goes on.
    }
}

}  // namespace

namespace detail {

void WriteEntry(Tag tag, std::span<Part const> message) noexcept {
    Write([&](std::string& line) {
        AppendTag(line, tag);
        AppendAll(line, message);
    });
}

void WriteLine(std::span<Part const> message) noexcept {
    Write([&](std::string& line) { AppendAll(line, message); });
}

}  // namespace detail

void WideEntry(Tag tag, std::wstring_view message) noexcept {
    Write([&](std::string& line) {
        AppendTag(line, tag);
        line.append(platform::ToNarrow(message));
    });
}

void WideLine(std::wstring_view message) noexcept {
    Write([&](std::string& line) { line.append(platform::ToNarrow(message)); });
}

}  // namespace gputune::log
