/*
 * gputune_sim_host.h - simulated boards for programs in any language: gputune_sim.dll, plain C.
 *
 * A program starts a board, then loads and uses gputune.dll, which finds the board as it would find a real one. The
 * board exists in the calling process only; nothing else on the machine changes. gputune_sim.dll needs the stand-in
 * libraries in folders beside itself. docs/board-files.md describes boards.
 *
 * Functions are cdecl, undecorated. Strings are UTF-8, NUL-terminated, and only read during the call. One caller at a
 * time.
 */
#ifndef GPUTUNE_SIM_HOST_H
#define GPUTUNE_SIM_HOST_H

#if defined(_WIN32)
#define GPUTUNE_SIM_CALL __cdecl
#else
#define GPUTUNE_SIM_CALL
#endif

/* Defined while gputune_sim.dll and the stand-ins are built; hosts leave it undefined. */
#if defined(_WIN32) && !defined(GPUTUNE_SIM_BUILDING_LIBRARY)
#define GPUTUNE_SIM_API __declspec(dllimport)
#else
#define GPUTUNE_SIM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Start the board of a board file in this process. Call it before InitVGAHelper, which then finds the board.
 *
 * boardFile         its path
 * error, errorSize  storage for a message, and its size in bytes: the message is cut to fit. May be null. Untouched on
 *                   success.
 *
 * 1 on success; else 0 and a message: the file, the key and what was expected, or that a board is running already, or
 * that a library the board needs to stand in for is loaded in this process already. Nothing has changed then.
 */
GPUTUNE_SIM_API int GPUTUNE_SIM_CALL GputuneSim_Start(const char* boardFile, char* error, int errorSize);

/* The same with the text of a board file. */
GPUTUNE_SIM_API int GPUTUNE_SIM_CALL GputuneSim_StartText(const char* boardJson, char* error, int errorSize);

/*
 * Stop the running board; does nothing without one. A thread with a single-threaded apartment must itself stop the
 * board that it started. Queries of the system's management data reach the machine's own again. The stand-in library
 * stays loaded with the board, so that gputune.dll goes on working; the next start begins a new board. No stop is
 * needed before the process ends.
 */
GPUTUNE_SIM_API void GPUTUNE_SIM_CALL GputuneSim_Stop(void);

/*
 * Make an entry point of the vendor's library return a result and do nothing else, until GputuneSim_ClearFaults or the
 * next start.
 *
 * entryPoint  its name, as in the "faults" of a board file: "ADL2_OverdriveN_FanControl_Set"
 * result      what it returns; 0 is success with every vendor
 *
 * 1 on success; 0, and nothing has changed, when no board runs, the vendor's library has no entry point of that name,
 * or the entry point does not return a result (nvapi_QueryInterface).
 */
GPUTUNE_SIM_API int GPUTUNE_SIM_CALL GputuneSim_SetResult(const char* entryPoint, int result);

/* End all orders of GputuneSim_SetResult. The faults of the board file stay, and hidden entry points stay hidden. */
GPUTUNE_SIM_API void GPUTUNE_SIM_CALL GputuneSim_ClearFaults(void);

/*
 * Hide an entry point until the next start: it is not found from now on. A program that has its address already can
 * still call it. gputune.dll looks its entry points up in the first InitVGAHelper: hide them before that.
 *
 * 1 when it is hidden; 0 when no board runs or the vendor's library has no entry point of that name.
 */
GPUTUNE_SIM_API int GPUTUNE_SIM_CALL GputuneSim_HideEntryPoint(const char* entryPoint);

/*
 * Move the board's time on. From the first call until the next start, it moves by these steps only. Does nothing
 * without a running board.
 *
 * milliseconds  the step; a negative one counts as 0
 */
GPUTUNE_SIM_API void GPUTUNE_SIM_CALL GputuneSim_Advance(int milliseconds);

#ifdef __cplusplus
}
#endif
#endif /* GPUTUNE_SIM_HOST_H */
