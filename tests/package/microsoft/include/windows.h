/* What c_host needs of the system (kernel32.def). */
#pragma once

typedef struct HINSTANCE__* HMODULE;
typedef int(__stdcall* FARPROC)(void);

__declspec(dllimport) HMODULE __stdcall LoadLibraryA(char const* name);
__declspec(dllimport) FARPROC __stdcall GetProcAddress(HMODULE module, char const* name);
