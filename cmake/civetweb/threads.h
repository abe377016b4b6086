/* Included ahead of civetweb.c on Windows. There it reads what is left of a connection for as long as something comes,
   and all its threads run from the beginning. Here a connection whose time is over is one that the other side has
   closed, and a thread begins to run when it is needed. What is asked for is in tool/serve/ServerThreads.cpp. */
#include <process.h>
#include <stdint.h>
#include <winsock2.h>

/* What is left of the time of the connection that this thread serves, in milliseconds, and at most what it is given. */
long GputuneConnectionTime(long atMost);
/* As _beginthreadex; a thread for connections sleeps until it is needed. */
uintptr_t GputuneBeginThread(unsigned(__stdcall* function)(void*), void* argument, int isForConnections);

static unsigned __stdcall worker_thread(void*);

static __inline struct timeval* GputuneLimited(struct timeval* time) {
    long const left = GputuneConnectionTime(time->tv_sec * 1000 + time->tv_usec / 1000);
    time->tv_sec = left / 1000;
    time->tv_usec = left % 1000 * 1000;
    return time;
}

/* Nothing is asked about errors, which are those of sockets that connect to others, and urgent data: the server has
   neither. So a call has no socket twice. When it has one, and its other side hangs up at the wrong moment, Wine's
   server ends with a failed assertion (complete_async_poll), and all programs of the prefix with it. */
#define select(count, reading, writing, errors, time) \
    (FD_ZERO(errors), select(count, reading, writing, NULL, GputuneLimited(time)))
#define recv(socket, buffer, size, flags) (GputuneConnectionTime(1) == 0 ? 0 : recv(socket, buffer, size, flags))
#define send(socket, data, size, flags) \
    (GputuneConnectionTime(1) == 0 ? (WSASetLastError(WSAECONNRESET), -1) : send(socket, data, size, flags))
#define _beginthreadex(security, size, function, argument, flags, id) \
    GputuneBeginThread(function, argument, (function) == worker_thread)
