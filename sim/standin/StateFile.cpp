#include "sim/standin/StateFile.h"

#include <windows.h>

#include <utility>

#include "sim/standin/wide_text.h"
#include "sim/state/state_image.h"

namespace gputune::sim {

namespace {

[[noreturn]] void Fail(std::string const& what) {
    throw StateError(what);
}

[[noreturn]] void FailWithError(std::string const& what) {
    Fail(what + " (error " + std::to_string(::GetLastError()) + ")");
}

}  // namespace

// One byte far behind the state: what is locked cannot be read by others, and those who only look need no lock.
class StateFile::Lock {
public:
    explicit Lock(StateFile const& file) : file_(file.file_) {
        OVERLAPPED place = Place();
        if (::LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place) == 0) {
            FailWithError("cannot be locked");
        }
    }
    ~Lock() {
        OVERLAPPED place = Place();
        ::UnlockFileEx(file_, 0, 1, 0, &place);
    }
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;

private:
    static OVERLAPPED Place() {
        constexpr DWORD kOffset = 0x40000000;
        OVERLAPPED place{};
        place.Offset = kOffset;
        return place;
    }

    void* file_;
};

StateFile::StateFile(std::string path, std::uint64_t board, StateBytes const& first)
    : path_(std::move(path)), board_(board) {
    file_ = ::CreateFileW(ToWide(path_).c_str(), GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                          FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file_ == INVALID_HANDLE_VALUE) {
        FailWithError(path_ + ": cannot be opened");
    }
    try {
        Lock const lock(*this);
        StateBytes const present = Read();
        if (present.empty()) {
            Write(0, NewStateImage(board_, first));
        } else if (NewestState(present, board_).bytes.size() != first.size()) {
            throw StateError("it is of another size than this board's");
        }
    } catch (StateError const& error) {
        ::CloseHandle(file_);
        throw StateError(path_ + ": " + error.what());
    }
}

StateFile::~StateFile() {
    ::CloseHandle(file_);
}

void StateFile::Change(std::function<StateBytes(StateBytes const&)> const& change) {
    Lock const lock(*this);
    BoardState state = NewestState(Read(), board_);
    StateBytes next = change(state.bytes);
    if (next == state.bytes) {
        return;
    }
    StatePart const part = PartOf({.number = state.number + 1, .bytes = std::move(next)});
    Write(part.offset, part.bytes);
}

StateBytes StateFile::Read() const {
    LARGE_INTEGER size{};
    constexpr LONGLONG kMost = 1 << 24;  // bytes; no board has that many
    if (::GetFileSizeEx(file_, &size) == 0 || size.QuadPart > kMost) {
        Fail("it is no board's state");
    }
    StateBytes bytes(static_cast<std::size_t>(size.QuadPart));
    OVERLAPPED begin{};
    DWORD read = 0;
    if (!bytes.empty() && (::ReadFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &read, &begin) == 0 ||
                           read != bytes.size())) {
        FailWithError("cannot be read");
    }
    return bytes;
}

void StateFile::Write(std::size_t offset, StateBytes const& bytes) const {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    DWORD written = 0;
    if (::WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, &place) == 0 ||
        written != bytes.size()) {
        FailWithError("cannot be written");
    }
}

}  // namespace gputune::sim
