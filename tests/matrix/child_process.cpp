#include "child_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace gputune::matrix {

namespace {

// A child's output goes to a file; the number of ancestors tells them apart.
int g_generation = 0;
std::string OutputFile(int generation) {
    return "child-output-" + std::to_string(generation);
}

// What a child has to do at its end. Never destroyed: it is used after all destructors.
struct Ending {
    int pipe;
    std::string answer;
    std::string (*last)();
};
Ending* g_ending = nullptr;

void WriteAll(int file, std::string const& text) {
    for (std::size_t written = 0; written < text.size();) {
        ssize_t const count = ::write(file, text.data() + written, text.size() - written);
        if (count <= 0) {
            ::_exit(3);
        }
        written += static_cast<std::size_t>(count);
    }
}

void End() {
    if (g_ending == nullptr) {
        return;
    }
    if (g_ending->last != nullptr) {
        g_ending->answer += g_ending->last();
    }
    // The parent takes an answer without this line end for one that broke off.
    WriteAll(g_ending->pipe, g_ending->answer + '\n');
    ::_exit(0);
}

[[noreturn]] void Work(int pipe, unsigned seconds, std::function<std::string()> const& work, std::string (*last)()) {
    ::alarm(seconds);
    int const output = ::open(OutputFile(++g_generation).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
    g_ending = new Ending{pipe, work(), last};
    std::exit(0);
}

std::string DescribeDeath(int status) {
    std::ostringstream text;
    if (WIFSIGNALED(status)) {
        text << "the process died of signal " << WTERMSIG(status) << " (" << ::strsignal(WTERMSIG(status)) << ")\n";
    } else {
        text << "the process ended with " << WEXITSTATUS(status) << "\n";
    }
    text << std::ifstream(OutputFile(g_generation + 1)).rdbuf();
    return text.str();
}

}  // namespace

void PrepareChildren() {
    std::atexit(End);
}

ChildResult RunInChild(unsigned seconds, std::function<std::string()> const& work, std::string (*last)()) {
    int ends[2];
    if (::pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::fflush(nullptr);
    pid_t const child = ::fork();
    if (child < 0) {
        throw std::runtime_error("no process");
    }
    if (child == 0) {
        ::close(ends[0]);
        Work(ends[1], seconds, work, last);
    }
    ::close(ends[1]);
    ChildResult result;
    char part[4096];
    for (ssize_t count = 0; (count = ::read(ends[0], part, sizeof part)) > 0;) {
        result.answer.append(part, static_cast<std::size_t>(count));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0 || !result.answer.ends_with('\n')) {
        result.death = DescribeDeath(status);
    } else {
        result.answer.pop_back();
    }
    return result;
}

}  // namespace gputune::matrix
