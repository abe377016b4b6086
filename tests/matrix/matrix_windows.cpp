// Tries the matrix on the real gputune.dll, which is loaded for every cell and unloaded after it.
//
//     windows_matrix BOARD PART OF       the PART-th (from 0) of every OF cells of the board at this position
//     windows_matrix BOARD --only TEXT   the cells whose names hold the text
//
// A process has one board, as the vendors' libraries stay loaded. Two kinds of cells need the native machine and are
// left out: lack of memory, and a vendor's library that is not on the machine.
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "Trial.h"
#include "high_memory.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::matrix {

namespace {

// The name of the current cell, for what ends the process.
std::string g_cell;

LONG CALLBACK ReportFault(EXCEPTION_POINTERS* exception) {
    constexpr DWORD kError = 0xC0000000;
    DWORD const code = exception->ExceptionRecord->ExceptionCode;
    if ((code & kError) == kError) {
        std::printf("red: %s\n    exception %lX at %p\n", g_cell.c_str(), code,
                    exception->ExceptionRecord->ExceptionAddress);
        std::fflush(stdout);
        ::TerminateProcess(::GetCurrentProcess(), 1);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

// While one exists, the library under test is loaded.
class LoadedLibrary {
public:
    explicit LoadedLibrary(std::wstring const& path) : module_(::LoadLibraryW(path.c_str())) {
        if (module_ == nullptr) {
            throw std::runtime_error("gputune.dll cannot be loaded");
        }
        exports_ = test::FindExports(module_);
    }
    ~LoadedLibrary() {
        ::FreeLibrary(module_);
        if (::GetModuleHandleW(L"gputune.dll") != nullptr) {
            std::printf("red: %s\n    the library stays loaded\n", g_cell.c_str());
            std::exit(1);
        }
    }
    LoadedLibrary(LoadedLibrary const&) = delete;
    LoadedLibrary& operator=(LoadedLibrary const&) = delete;

    test::Exports const& Exports() const { return exports_; }

private:
    HMODULE module_;
    test::Exports exports_{};
};

class WindowsSurroundings final : public Surroundings {
public:
    test::Exports const& Api() override { return library_->Exports(); }
    void RefuseMemory(int, bool) override {}
    void PutLibrary(bool) override {}
    void SetLibrary(LoadedLibrary const* library) { library_ = library; }

private:
    LoadedLibrary const* library_ = nullptr;
};

class WindowsMatrix {
public:
    explicit WindowsMatrix(Board const& board)
        : board_(board), machine_(board.make()), trial_(board, machine_, surroundings_) {
        path_ = sim::ModulePath(test::LibraryUnderTest());
        ::FreeLibrary(test::LibraryUnderTest());
    }

    std::vector<Cell> Cells() {
        reference_ = trial_.Observe([this](Trial::Observation const& observe) { return WithLibrary(observe); });
        std::vector<Cell> cells = CellsOf(board_, reference_);
        std::erase_if(cells, [](Cell const& cell) { return cell.entryPoint == kWholeLibrary; });
        return cells;
    }

    std::string Try(Cell const& cell) {
        g_cell = cell.Name();
        return WithLibrary([&] {
            if (!cell.IsFromStart()) {
                trial_.Initialise();
            }
            return trial_.Try(cell, reference_);
        });
    }

private:
    template <class Work>
    auto WithLibrary(Work const& work) -> decltype(work()) {
        LoadedLibrary const library(path_);
        surroundings_.SetLibrary(&library);
        return work();
    }

    Board const& board_;
    test::Machine machine_;
    WindowsSurroundings surroundings_;
    Trial trial_;
    std::wstring path_;
    Reference reference_;
};

int Main(int argc, char** argv) {
    auto const boards = Boards();
    std::size_t const position = argc == 4 ? static_cast<std::size_t>(std::atoi(argv[1])) : boards.size();
    if (position >= boards.size()) {
        std::printf("usage: windows_matrix BOARD PART OF | windows_matrix BOARD --only TEXT\n");
        return 2;
    }
    std::string const only = std::strcmp(argv[2], "--only") == 0 ? argv[3] : "";
    auto const of = only.empty() ? static_cast<std::size_t>(std::atoi(argv[3])) : 1;
    auto const part = only.empty() ? static_cast<std::size_t>(std::atoi(argv[2])) : 0;
    ::AddVectoredExceptionHandler(1, ReportFault);
    WindowsMatrix matrix(boards[position]);
    std::vector<Cell> const cells = matrix.Cells();
    int tried = 0;
    int red = 0;
    for (std::size_t index = part; index < cells.size(); index += of) {
        if (cells[index].Name().find(only) == std::string::npos) {
            continue;
        }
        ++tried;
        std::string const failures = matrix.Try(cells[index]);
        if (!failures.empty()) {
            ++red;
            std::printf("red: %s\n%s\n", cells[index].Name().c_str(), failures.c_str());
        }
    }
    std::printf("%s: %d cells, part %d of %d: %d tried, %d red\n", boards[position].name,
                static_cast<int>(cells.size()), static_cast<int>(part), static_cast<int>(of), tried, red);
    return red == 0 && tried > 0 ? 0 : 1;
}

}  // namespace

}  // namespace gputune::matrix

int main(int argc, char** argv) {
#if defined(_WIN64)
    return gputune::test::RunInHighMemory([&] { return gputune::matrix::Main(argc, argv); });
#else
    return gputune::matrix::Main(argc, argv);
#endif
}
