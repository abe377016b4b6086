// What GoogleTest's own sources include, built for Windows.
//
// At the first SCOPED_TRACE of a thread, GoogleTest starts another thread, which waits for the end of the former. Under
// Wine, a thread that ends while its process ends crashes the process now and then, after all tests have passed. So no
// such thread is started: what GoogleTest keeps for a thread stays until the process ends.
#pragma once

#include <windows.h>

inline HANDLE WINAPI StartNoThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*) {
    // A handle that GoogleTest can close.
    return ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}
#define CreateThread StartNoThread
