#include "tool/serve/PageRoutes.h"

#include "tool/page/PageParts.h"
#include "tool/values/Text.h"

namespace gputune::embedded {

extern std::string_view const kServePageHtml;
extern std::string_view const kServePageLive;
extern std::string_view const kServePageScript;
extern std::string_view const kServePageStyle;
extern std::string_view const kServePageWords;

}  // namespace gputune::embedded

namespace gputune::tool {

namespace {

HttpRoute Route(char const* path, char const* contentType, std::string body) {
    return {.path = path, .handler = [response = HttpResponse{200, contentType, std::move(body)}](HttpRequest const&) {
                return response;
            }};
}

// The licence has to go with the library.
std::string WithLicence(std::string_view text) {
    return HasCharts() ? "/*\n" + std::string(embedded::kUplotLicence) + "*/\n" + std::string(text) : "";
}

}  // namespace

std::vector<HttpRoute> PageRoutes() {
    constexpr char const* kStyle = "text/css; charset=utf-8";
    constexpr char const* kScript = "text/javascript; charset=utf-8";
    std::string const credits = HasCharts() ? "Charts: uPlot " GPUTUNE_UPLOT_VERSION ", MIT licence." : "";
    return {
        Route("/", "text/html; charset=utf-8",
              FillPlaceholders(embedded::kServePageHtml, {{"version", GPUTUNE_VERSION}, {"credits", credits}})),
        Route("/page.css", kStyle, std::string(embedded::kPageCommonStyle) + std::string(embedded::kServePageStyle)),
        Route("/page.js", kScript,
              std::string(embedded::kPageCharts) + std::string(embedded::kServePageLive) +
                  std::string(embedded::kServePageWords) + std::string(embedded::kServePageScript)),
        Route("/uplot.css", kStyle, WithLicence(embedded::kUplotStyle)),
        Route("/uplot.js", kScript, WithLicence(embedded::kUplotScript))};
}

}  // namespace gputune::tool
