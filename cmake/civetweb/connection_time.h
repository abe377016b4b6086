/* Included ahead of civetweb.c on Windows, where it reads what is left of a connection for as long as something comes:
   to a client that sends a byte now and then it would listen for ever. Here a connection whose time is over is one that
   the other side has closed. */
#include <winsock2.h>

/* Whether the time of the connection that this thread serves is over; HttpServer.cpp has it. */
int GputuneConnectionIsLate(void);

#define recv(socket, buffer, size, flags) (GputuneConnectionIsLate() ? 0 : recv(socket, buffer, size, flags))
#define send(socket, data, size, flags) \
    (GputuneConnectionIsLate() ? (WSASetLastError(WSAECONNRESET), -1) : send(socket, data, size, flags))
