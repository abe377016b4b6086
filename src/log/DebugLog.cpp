#include "log/DebugLog.h"

#include "platform/text.h"

namespace gputune::log {

namespace {

constexpr int kModeConsole = 1;
constexpr int kModeFile = 2;
constexpr int kModeBoth = 3;

// Relative on purpose: the file lands in the process's current directory.
constexpr char kFileName[] = "debug.log";

}  // namespace

constinit std::atomic<bool> detail::g_isSilent = false;

DebugLog& DebugLog::Get(int mode) {
    static DebugLog log(mode);
    return log;
}

DebugLog::DebugLog(int mode) : toConsole_(mode == kModeConsole || mode == kModeBoth) {
    if (mode == kModeFile || mode == kModeBoth) {
        file_ = std::fopen(kFileName, "w");
    }
    detail::g_isSilent = !WritesAnything();
}

DebugLog::~DebugLog() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
    toConsole_ = false;
}

void DebugLog::WriteLine(LineText& line) {
    line.Append("\n");
    std::string_view const text = line.View();
    for (std::FILE* stream : {file_, toConsole_ ? stdout : nullptr}) {
        if (stream != nullptr) {
            std::fwrite(text.data(), 1, text.size(), stream);
            std::fflush(stream);
        }
    }
}

namespace {

constexpr std::string_view kSeparator = " ... ";

void AppendTag(LineText& line, Tag tag) {
    line.Append(tag.method);
    if (!tag.subject.empty()) {
        line.Append(" ");
        line.Append(tag.subject);
    }
}

void AppendAll(LineText& line, std::span<Part const> message) {
    for (Part const& part : message) {
        part.AppendTo(line);
    }
}

template <class Build>
void Write(Build&& build) noexcept {
    try {
        // Something logged before InitVGAHelper: the log is then created for standard output.
        DebugLog& log = DebugLog::Get(kModeConsole);
        if (log.WritesAnything()) {
            LineText line;
            build(line);
            log.WriteLine(line);
        }
    } catch (...) {
        // Out of memory: the entry is lost, the operation goes on.
    }
}

}  // namespace

namespace detail {

void WriteEntry(Tag tag, std::span<Part const> message) noexcept {
    Write([&](LineText& line) {
        AppendTag(line, tag);
        line.Append(kSeparator);
        AppendAll(line, message);
    });
}

void WriteNumberedEntry(Tag tag, std::size_t number, std::span<Part const> message) noexcept {
    Write([&](LineText& line) {
        AppendTag(line, tag);
        Part(number).AppendTo(line);
        line.Append(kSeparator);
        AppendAll(line, message);
    });
}

void WriteLine(std::span<Part const> message) noexcept {
    Write([&](LineText& line) { AppendAll(line, message); });
}

}  // namespace detail

void WideEntry(Tag tag, std::wstring_view message) noexcept {
    Write([&](LineText& line) {
        AppendTag(line, tag);
        line.Append(kSeparator);
        line.Append(platform::ToNarrow(message));
    });
}

void WideLine(std::wstring_view message) noexcept {
    Write([&](LineText& line) { line.Append(platform::ToNarrow(message)); });
}

}  // namespace gputune::log
