// The page that shows the readings, with its parts. What it shows, it asks /api/history and /api/events for.
#pragma once

#include <vector>

#include "tool/serve/Http.h"

namespace gputune::tool {

// "/", "/page.css", "/page.js", "/uplot.css", "/uplot.js". The page needs a content security policy with
// default-src 'none', script-src, style-src and connect-src 'self', img-src data:, and nothing else.
std::vector<HttpRoute> PageRoutes();

}  // namespace gputune::tool
