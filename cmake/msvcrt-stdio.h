// Included ahead of everything in sources whose number formatting and scanning nobody uses: stdio's functions are then
// those of the system's runtime DLL. The C++ library's headers ask for mingw-w64's own, which are linked in and weigh
// 15 KB.
#include <cstddef>

#undef __USE_MINGW_ANSI_STDIO
#define __USE_MINGW_ANSI_STDIO 0
