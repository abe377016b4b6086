// Queries of Windows Management Instrumentation.
#pragma once

#include <string>
#include <vector>

namespace gputune {

// The value of `property` of each object that the WQL `query` returns, in WMI's order. Objects whose property is not a
// string are left out. Empty on any failure, which is logged. Uses COM on the calling thread, multithreaded where the
// thread has no apartment yet, and leaves the thread as it was.
std::vector<std::wstring> GetWmiData(char const* query, wchar_t const* property);

}  // namespace gputune
