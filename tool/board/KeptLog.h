// The library's log, kept in a file by the tool: it tells what the library's functions do not return, such as what the
// driver answered and the names of the display controllers.
#pragma once

#include <string>

#include "gputune.h"
#include "tool/board/LogEntries.h"

namespace gputune::tool {

// Throws ToolError when `mode` wants a log file and it cannot be written.
void RequireLogFile(GputuneLogMode mode);

// The library opens its log in the current directory, in the first InitVGAHelper. Where the user wants no file, this is
// one in a folder for temporary files, which goes away with the object: unload the library before.
class KeptLog {
public:
    // `wanted` is the user's choice, which the library's log follows on standard output and in debug.log.
    explicit KeptLog(GputuneLogMode wanted);
    ~KeptLog();
    KeptLog(KeptLog const&) = delete;
    KeptLog& operator=(KeptLog const&) = delete;

    // What to pass to InitVGAHelper.
    GputuneLogMode Mode() const { return mode_; }

    // The current directory while the library creates its log.
    class InDirectory {
    public:
        explicit InDirectory(KeptLog const& log);
        ~InDirectory();
        InDirectory(InDirectory const&) = delete;
        InDirectory& operator=(InDirectory const&) = delete;

    private:
        std::wstring former_;
    };

    // Whether there is a file; not when no folder could be made for it.
    bool IsKept() const { return !file_.empty(); }
    // All there are so far; none when the file cannot be read.
    LogEntries Read() const;

private:
    GputuneLogMode mode_;
    std::wstring folder_;  // of the tool's own; empty: the current directory, or no folder could be made
    std::wstring file_;    // empty: no log is kept
};

}  // namespace gputune::tool
