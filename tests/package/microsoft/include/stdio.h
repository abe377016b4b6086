/* What c_host needs of the C library, which is the system's msvcrt.dll (msvcrt.def). */
#pragma once

__declspec(dllimport) int __cdecl printf(char const* format, ...);
