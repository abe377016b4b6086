/*
 * scripted_adl.h - an AMD Display Library that answers as it is told to, byte by byte, and records what crossed the
 * table.
 *
 * It knows no record layout of the product's: what it writes and what it remembers are plain bytes, and its own table
 * of the entry points' arguments was entered by hand, so that a mistake on either side shows.
 *
 * Responses. Every entry point starts with one response: return 0 and write nothing. An order changes the response
 * begun last; Scripted_Then begins the next one, which holds from the following call on. The last response holds for
 * all later calls. Argument numbers count from 0, the context included.
 *
 * Plain C, because under Windows it is a DLL of its own.
 */
#ifndef SCRIPTED_ADL_H
#define SCRIPTED_ADL_H

#ifdef __cplusplus
extern "C" {
#endif

#define SCRIPTED_MAX_ARGS 6
#define SCRIPTED_MAX_RECORD 2600

typedef struct ScriptedCall {
    char const* entryPoint;
    int argCount;
    int args[SCRIPTED_MAX_ARGS];               /* as the caller passed them; pointers as numbers */
    int recordSize;                            /* of the record the caller passed in; 0 when the entry takes none */
    unsigned char record[SCRIPTED_MAX_RECORD]; /* its bytes on entry */
} ScriptedCall;

void Scripted_Reset(void);
void Scripted_Result(char const* entryPoint, int result);
void Scripted_Write(char const* entryPoint, int argument, int offset, void const* bytes, int size);

/* Hand a list out: a block of exactly `size` bytes from the client's allocation callback, its address into the pointer
 * that the argument points to. Of size 0: a null pointer, without asking for memory. */
void Scripted_Allocate(char const* entryPoint, int argument, void const* bytes, int size);

void Scripted_Then(char const* entryPoint);

/* The library does not export the entry point. */
void Scripted_Hide(char const* entryPoint);

int Scripted_CallCount(void);
void Scripted_GetCall(int index, ScriptedCall* call);
void Scripted_ClearCalls(void);

/* What the allocation callback returns for a size, asked before and after the context is created: null without one. */
void* Scripted_AskForMemory(int size);

/* Call the allocation callback with a stack that is 4 bytes off a 16-byte boundary, as other compilers' code does. */
void* Scripted_AskWithOddStack(int size);

#ifdef __cplusplus
}
#endif
#endif
