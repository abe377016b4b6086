/*
 * gputune_sim_host.h - simulated boards for programs in any language: gputune_sim.dll, plain C.
 *
 * A program starts a board, then loads and uses gputune.dll, which finds the board as it would find a real one. All of
 * it is inside the calling process; nothing else on the machine changes. gputune_sim.dll has the stand-in libraries in
 * folders beside itself. docs/board-files.md describes boards.
 *
 * Functions are cdecl. Strings are UTF-8, NUL-terminated, and only read during the call. One caller at a time.
 */
#ifndef GPUTUNE_SIM_HOST_H
#define GPUTUNE_SIM_HOST_H

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Make this process's machine one with the board of a board file. To be called before InitVGAHelper, which then finds
 * the board.
 *
 * boardFile         its path
 * error, errorSize  storage for a message, and its size in bytes: the message is cut to fit. May be null. Untouched on
 *                   success.
 *
 * 1 on success; else 0 and a message: the file, the key and what was expected, or that a board is running already, or
 * that a library the board needs to stand in for is loaded in this process already. Nothing has changed then.
 */
int GputuneSim_Start(const char* boardFile, char* error, int errorSize);

/* The same with the text of a board file. */
int GputuneSim_StartText(const char* boardJson, char* error, int errorSize);

/*
 * End what a start began; without one, nothing happens. A thread with a single-threaded apartment stops what it started
 * itself. The system's management data is the machine's own again. The stand-in library stays loaded and keeps the
 * board, as a vendor's library would, so that gputune.dll goes on working; the next start brings a new board with a
 * fresh state. The end of the process needs no stop.
 */
void GputuneSim_Stop(void);

#ifdef __cplusplus
}
#endif
#endif /* GPUTUNE_SIM_HOST_H */
