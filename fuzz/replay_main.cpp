// replay_main RUNS TRUNCATIONS FILE...
//
// Runs a fuzz target without a fuzzing engine, on every file, on TRUNCATIONS truncations of every file (on all when it
// has fewer), and on RUNS random changes of the files. The same arguments give the same inputs.
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
// Defined by the sanitizers, when the program is built with them.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

// The present input. It is written to a file when it ends the process.
std::string g_input;

void WriteInput() {
    if (std::FILE* const file = std::fopen("crash-input", "wb")) {
        std::fwrite(g_input.data(), 1, g_input.size(), file);
        std::fclose(file);
        std::fputs("the input is in the file crash-input\n", stderr);
    }
}

void OnAbort(int) {
    WriteInput();
}

void Run(std::string input) {
    g_input = std::move(input);
    // A copy of exactly this size, so that the sanitizer sees a read behind its end.
    std::vector<std::uint8_t> const bytes(g_input.begin(), g_input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

class Mutator {
public:
    explicit Mutator(std::vector<std::string> const& corpus) : corpus_(corpus) {}

    std::string Next() {
        std::string text = Any();
        for (std::size_t changes = 1 + Below(4); changes > 0; --changes) {
            Change(text);
        }
        return text;
    }

private:
    // std::mt19937 gives the same numbers everywhere; the distributions of the library do not.
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }

    std::string const& Any() { return corpus_[Below(corpus_.size())]; }

    // Half of the time one that has a meaning in such files, else any.
    char Character() {
        constexpr char kMeaningful[] = "<>/=\"'&#;!-?[]{}:, \n\0x0159AFe.+\xEF\xFF";
        return Below(2) == 0 ? kMeaningful[Below(sizeof(kMeaningful))] : static_cast<char>(Below(256));
    }

    void Change(std::string& text) {
        std::size_t const at = Below(text.size() + 1);
        switch (Below(5)) {
            case 0:  // another character
                if (at < text.size()) {
                    text[at] = Character();
                }
                break;
            case 1:  // one inserted
                text.insert(at, 1, Character());
                break;
            case 2:  // some erased
                text.erase(at, 1 + Below(8));
                break;
            case 3: {  // a piece of a file inserted
                std::string const& other = Any();
                std::size_t const from = Below(other.size() + 1);
                text.insert(at, other.substr(from, Below(64)));
                break;
            }
            default:  // a piece of the same text inserted
                text.insert(at, text.substr(Below(text.size() + 1), Below(32)));
        }
    }

    std::vector<std::string> const& corpus_;
    std::mt19937 random_{1};
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: %s RUNS TRUNCATIONS FILE...\n", argv[0]);
        return 2;
    }
    std::vector<std::string> corpus;
    for (int i = 3; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "%s cannot be read\n", argv[i]);
            return 2;
        }
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    if (LLVMFuzzerInitialize != nullptr) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    std::signal(SIGABRT, OnAbort);
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(WriteInput);
    }
    long executions = 0;
    auto const truncations = static_cast<std::size_t>(std::atol(argv[2]));
    for (std::string const& text : corpus) {
        for (std::size_t length = 0; length < text.size(); length += text.size() / truncations + 1, ++executions) {
            Run(text.substr(0, length));
        }
        Run(text);
        ++executions;
    }
    Mutator mutator(corpus);
    for (long run = std::atol(argv[1]); run > 0; --run, ++executions) {
        Run(mutator.Next());
    }
    std::printf("%ld executions\n", executions);
    return 0;
}
