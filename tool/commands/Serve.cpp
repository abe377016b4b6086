// serve: readings over HTTP, for monitoring systems and for a browser.
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <memory>

#include "tool/commands/Commands.h"
#include "tool/commands/Sampling.h"
#include "tool/serve/Exporter.h"
#include "tool/serve/RequestCheck.h"
#include "tool/system/Console.h"
#include "tool/system/Files.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// As typed.
struct ServeOptions {
    std::string listen = ListenAddress{}.Text();
    double interval = 1;
    std::string textFolder{};
    std::string tokenFile{};
    bool noToken = false;
};

std::string ReadToken(std::string const& path) {
    constexpr std::size_t kEnough = 1024;
    std::string token = ReadTextFile(path, kEnough);
    token.erase(token.find_last_not_of("\r\n") + 1);
    if (!IsUsableToken(token)) {
        throw ToolError("The file " + path +
                        " holds no token: one line of 16 to 256 letters, figures and signs is needed, without blanks.");
    }
    return token;
}

ExporterSettings ToSettings(ServeOptions const& typed) {
    std::optional<ListenAddress> const address = ParseListenAddress(typed.listen);
    if (!address) {
        throw UsageError("\"" + typed.listen +
                         "\": write an address in figures and a port, for example 127.0.0.1:9835 or [::1]:9835.");
    }
    if (!address->IsLoopback() && typed.tokenFile.empty() && !typed.noToken) {
        throw UsageError("Others could read at " + address->Text() +
                         ": give --token-file, so that they need a token, or --no-token, so that everybody may.");
    }
    return {.address = *address,
            .token = typed.tokenFile.empty() ? "" : ReadToken(typed.tokenFile),
            .interval = typed.interval,
            .textFolder = typed.textFolder};
}

int RunServe(GlobalOptions const& options, ServeOptions const& typed) {
    if (options.LogsToOutput()) {
        throw UsageError("The log would go to the output of another process: use --log file.");
    }
    Exporter(options, ToSettings(typed)).Run([&options](ListenAddress const& address) {
        std::string const page = "http://" + address.Text() + "/";
        if (options.json) {
            Result result;
            result.Add({.fields = {{"listen", "Address", address.Text()},
                                   {"page", "Page", page},
                                   {"metrics", "Metrics", page + "metrics"}}});
            WriteOutput(result.Json(false));
        } else {
            WriteOutput("Serving " + page + " and " + page + "metrics until this program ends (Ctrl+C).\n");
        }
    });
    return kExitSuccess;
}

}  // namespace

void AddServeCommand(CLI::App& app, Context& context) {
    auto const typed = std::make_shared<ServeOptions>();
    CLI::App* serve = AddCommand(
        app, context,
        {"serve", "Serve the readings over HTTP: metrics for Prometheus, a live page",
         "Reads the board and changes nothing. Only programs of this machine can ask, unless --listen says otherwise.\n"
         "/ is the page, /metrics the metrics, /api/readings and /api/history JSON, /healthz a sign of life.\n"
         "Examples:\n"
         "  gputunectl serve\n"
         "  gputunectl serve --listen 192.168.1.7:9835 --token-file token.txt\n"
         "  gputunectl serve --textfile \"C:\\Program Files\\windows_exporter\\textfile_inputs\""},
        RunServe, typed);
    serve
        ->add_option("--listen", typed->listen,
                     "Where to listen; default 127.0.0.1:9835; port 0: a free one. Another address than this machine's "
                     "own 127.0.0.1 or [::1] needs --token-file or --no-token")
        ->type_name("ADDRESS:PORT");
    AddSecondsOption(*serve, "--interval", typed->interval, kShortestInterval, kLongestInterval,
                     "Between readings: seconds, 0.2 to 60; default 1");
    serve->add_option("--textfile", typed->textFolder, "Also keep the metrics in the file gputune.prom of this folder")
        ->type_name("DIRECTORY");
    CLI::Option* const token =
        serve
            ->add_option("--token-file", typed->tokenFile,
                         "Answer only those who know the token in this file: a line of 16 characters or more")
            ->type_name("FILE");
    serve->add_flag("--no-token", typed->noToken, "Answer everybody who reaches the address")->excludes(token);
}

}  // namespace gputune::tool
