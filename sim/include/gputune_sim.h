/*
 * gputune_sim.h - control interface of the simulated boards' vendor libraries, plain C.
 *
 * A stand-in for a vendor library exports, beside the vendor's entry points, the functions below, and the four of
 * gputune_sim_host.h that change a running board, which gputune_sim.dll passes on to it. There is no import library: a
 * stand-in is found at run time, once it is loaded. One caller at a time. Strings are UTF-8 and copied.
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

/* One call that reached the stand-in. What the pointer arguments point to is kept one after the other, in their order:
 * a setting call's record comes first and whole, an output argument's former value follows in its place; of storage
 * for lists, nothing is kept. */
typedef struct GputuneSimCall {
    const char* EntryPoint; /* lives as long as the stand-in */
    int ArgCount;
    /* Integers as they are; pointers as their address; a floating-point number as two integers, the low half first. */
    int Args[GPUTUNE_SIM_MAX_ARGS];
    int RecordSize; /* bytes of the record the caller passed in, as they were on entry; 0 when none */
    unsigned char Record[GPUTUNE_SIM_MAX_RECORD];
} GputuneSimCall;

/* 1 on success; else 0 and a message in error (size errorSize): the file, the key, what was expected; the former board
 * then stays. A new board is a fresh state: its settings, hidden entry points, calls, orders and time are its own. Only
 * the client's context and allocation callback remain, so that a board can be changed under a running client. */
int GPUTUNE_SIM_CALL GputuneSim_LoadBoard(const char* path, char* error, int errorSize);
int GPUTUNE_SIM_CALL GputuneSim_LoadBoardText(const char* json, char* error, int errorSize);

/* The record of calls, oldest first; the last 16384 of them. GetCall: 1 when there is such a call. */
int GPUTUNE_SIM_CALL GputuneSim_CallCount(void);
int GPUTUNE_SIM_CALL GputuneSim_GetCall(int index, GputuneSimCall* call);
void GPUTUNE_SIM_CALL GputuneSim_ClearCalls(void);

/* Blocks handed out by the client's allocation callback and not seen freed cannot be known here; this counts the
 * requests made through the callback since the board was loaded. */
int GPUTUNE_SIM_CALL GputuneSim_AllocationCount(void);

#ifdef __cplusplus
}
#endif
#endif /* GPUTUNE_SIM_H */
