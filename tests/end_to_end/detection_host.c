/*
 * Starts the library on the machine as it is, with the log in debug.log, and prints what GetVendorInfo tells: interface
 * and vendor.
 */
#include <stdio.h>

#include "gputune.h"

int main(void) {
    uint64_t info;

    InitVGAHelper(GPUTUNE_LOG_FILE);
    info = GetVendorInfo();
    printf("api %u vendor %u\n", (unsigned)(info >> 32), (unsigned)info);
    return 0;
}
