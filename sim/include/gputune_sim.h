/*
 * gputune_sim.h - control interface of the simulated boards' vendor libraries, plain C.
 *
 * A stand-in for a vendor library exports the vendor's entry points, the functions below, and the four functions of
 * gputune_sim_host.h that change a running board; gputune_sim.dll passes calls of these four on to it. There is no
 * import library: find a stand-in at run time, once it is loaded. One caller at a time. Strings are UTF-8 and copied.
 * docs/board-files.md describes boards.
 */
#ifndef GPUTUNE_SIM_H
#define GPUTUNE_SIM_H

#include "gputune_sim_host.h"

#ifdef __cplusplus
extern "C" {
#endif

#define GPUTUNE_SIM_MAX_ARGS 8
#define GPUTUNE_SIM_MAX_RECORD 2560

/* One call that reached the stand-in. Record holds what the pointer arguments pointed to on entry, one after the other,
 * output arguments included. Of storage for lists, nothing is kept. */
typedef struct GputuneSimCall {
    const char* EntryPoint; /* lives as long as the stand-in */
    int ArgCount;
    /* Integers as they are; pointers as their address; a floating-point number as two integers, the low half first. */
    int Args[GPUTUNE_SIM_MAX_ARGS];
    int RecordSize; /* bytes in Record */
    unsigned char Record[GPUTUNE_SIM_MAX_RECORD];
} GputuneSimCall;

/* 1 on success; else 0 and a message in error (size errorSize): the file, the key, what was expected. The former board
 * then stays. A new board starts with its own settings, hidden entry points and time, without logged calls and orders.
 * Only the client's context and allocation callback stay, so that a board can be changed under a running client. */
int GPUTUNE_SIM_CALL GputuneSim_LoadBoard(const char* path, char* error, int errorSize);
int GPUTUNE_SIM_CALL GputuneSim_LoadBoardText(const char* json, char* error, int errorSize);

/* From now on, until the next board, the board's settings, readings, time and faults are those in the file, which other
 * processes share and which stays when all of them have ended (docs/board-files.md). A missing or empty file is made. 1
 * on success; else 0 and a message, and nothing has changed. */
int GPUTUNE_SIM_CALL GputuneSim_KeepState(const char* path, char* error, int errorSize);

/* The record of calls, oldest first; the last 16384 of them. GetCall: 1 when there is such a call. */
int GPUTUNE_SIM_CALL GputuneSim_CallCount(void);
int GPUTUNE_SIM_CALL GputuneSim_GetCall(int index, GputuneSimCall* call);
void GPUTUNE_SIM_CALL GputuneSim_ClearCalls(void);

/* How often the stand-in has called the client's allocation callback since the board was loaded. Which blocks the
 * client has freed is not known here. */
int GPUTUNE_SIM_CALL GputuneSim_AllocationCount(void);

#ifdef __cplusplus
}
#endif
#endif /* GPUTUNE_SIM_H */
