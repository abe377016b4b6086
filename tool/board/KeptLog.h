// The library's log in a file that the tool reads. It holds what the library's functions do not return, such as the
// driver's answers and the names of the display controllers.
#pragma once

#include <string>

#include "gputune.h"
#include "tool/board/LogEntries.h"

namespace gputune::tool {

// Throws ToolError when `mode` wants a log file and it cannot be written.
void RequireLogFile(GputuneLogMode mode);

// The first InitVGAHelper opens the log in the current directory. When the user wants no log file, KeptLog makes a
// temporary folder for it and deletes that in its destructor; unload the library before.
class KeptLog {
public:
    // `wanted` is what the user chose with --log.
    explicit KeptLog(GputuneLogMode wanted);
    ~KeptLog();
    KeptLog(KeptLog const&) = delete;
    KeptLog& operator=(KeptLog const&) = delete;

    // What to pass to InitVGAHelper.
    GputuneLogMode Mode() const { return mode_; }

    // Makes the log's folder the current directory, for the time that the library creates its log.
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
    // All entries so far; none when the file cannot be read.
    LogEntries Read() const;

private:
    GputuneLogMode mode_;
    std::wstring folder_;  // the temporary one; empty: the current directory is used, or no folder could be made
    std::wstring file_;    // empty: no log is kept
};

}  // namespace gputune::tool
