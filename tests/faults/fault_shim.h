/* SPDX-License-Identifier: GPL-3.0-or-later */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* What happens at the chosen call. */
enum fault_action {
    FAULT_COUNT, /* nothing: the calls are only counted */
    FAULT_KILL_BEFORE, /* the process dies before the call */
    FAULT_KILL_AFTER, /* the process dies after the call */
    FAULT_KILL_TORN, /* a write is made by half, then the process dies; any other call as FAULT_KILL_BEFORE */
    FAULT_NO_SPACE, /* the call fails with ENOSPC */
    FAULT_IO_ERROR, /* the call fails with EIO */
    FAULT_SHORT, /* a write is made by half and says so; any other call fails with ENOSPC */
    FAULT_INTERRUPTED, /* the call fails with EINTR */
    FAULT_READ_ERROR /* as FAULT_IO_ERROR, but the calls that read are counted and fail */
};

struct fault_plan {
    char names[256]; /* calls on paths that hold one of these, parted by ':', are counted */
    long at; /* the call that is hit, from 1 */
    enum fault_action action;
    int sticky; /* whether every later call is hit too */
};

/* Starts counting at zero. Files that are already open are known only if they were opened under a plan of the same
   names. A program that was started with FAULT_NAMES in its environment is armed from its first call on by FAULT_NAMES,
   FAULT_AT, FAULT_ACTION (the number of the action) and FAULT_STICKY; at its end it writes the count to FAULT_COUNT. */
void fault_shim_arm(const struct fault_plan *plan);

/* Stops; returns how many calls were counted. */
long fault_shim_disarm(void);

/* How many calls have been hit since arming. */
long fault_shim_hits(void);

#ifdef __cplusplus
}
#endif
