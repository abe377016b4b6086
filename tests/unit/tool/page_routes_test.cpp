// The parts of the live page, as the server hands them out. tests/tool/serve_page_test looks at it in a browser.
#include <gtest/gtest.h>

#include "tool/page/PageParts.h"
#include "tool/serve/PageRoutes.h"

namespace gputune::tool {
namespace {

HttpResponse Get(char const* path) {
    for (HttpRoute const& route : PageRoutes()) {
        if (route.path == path) {
            return route.handler({});
        }
    }
    return {.status = 404};
}

bool Has(HttpResponse const& response, char const* text) {
    return response.body.find(text) != std::string::npos;
}

TEST(ToolPageRoutes, EveryPartThatThePageNamesIsThere) {
    HttpResponse const page = Get("/");
    EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
    EXPECT_TRUE(page.body.starts_with("<!DOCTYPE html>"));
    for (char const* const name : {"/page.css", "/uplot.css"}) {
        EXPECT_TRUE(Has(page, name));
        EXPECT_EQ(Get(name).status, 200);
        EXPECT_EQ(Get(name).contentType, "text/css; charset=utf-8");
    }
    for (char const* const name : {"/page.js", "/uplot.js"}) {
        EXPECT_TRUE(Has(page, name));
        EXPECT_EQ(Get(name).status, 200);
        EXPECT_EQ(Get(name).contentType, "text/javascript; charset=utf-8");
    }
    EXPECT_TRUE(Has(Get("/page.css"), ":root"));
    EXPECT_TRUE(Has(Get("/page.js"), "const charts ="));
    EXPECT_TRUE(Has(Get("/page.js"), "const live ="));
    EXPECT_TRUE(Has(Get("/page.js"), "const words ="));
}

// The server's content security policy allows none of it.
TEST(ToolPageRoutes, PageHasNoScriptOrStyleOfItsOwn) {
    HttpResponse const page = Get("/");
    for (char const* const text : {"{{", "<style", "style=", "onload=", "http:", "https:"}) {
        EXPECT_FALSE(Has(page, text)) << text;
    }
    for (std::size_t at = page.body.find("<script"); at != std::string::npos; at = page.body.find("<script", at + 1)) {
        std::size_t const end = page.body.find('>', at);
        EXPECT_NE(page.body.substr(at, end - at).find("src=\"/"), std::string::npos);
        EXPECT_EQ(page.body.substr(end, 10), "></script>");
    }
}

TEST(ToolPageRoutes, LibraryComesWithItsLicence) {
    for (char const* const path : {"/uplot.js", "/uplot.css"}) {
        EXPECT_EQ(Has(Get(path), "The MIT License"), HasCharts());
    }
    EXPECT_EQ(Has(Get("/uplot.js"), "var uPlot="), HasCharts());
    EXPECT_EQ(Has(Get("/"), "Charts: uPlot"), HasCharts());
}

}  // namespace
}  // namespace gputune::tool
