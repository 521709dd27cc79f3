/* SPDX-License-Identifier: GPL-3.0-or-later
 *
 * Counts the calls by which a program changes (or reads) chosen files, and lets the n-th fail or kills the process
 * there. Preloaded into a program, or linked before the C library, it stands between the program with all its
 * libraries and the C library. Memory-mapped writes, such as those to SQLite's shared memory, are not seen.
 */
#define _GNU_SOURCE
#include "fault_shim.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { most_descriptors = 4096 };

static struct fault_plan the_plan;
static atomic_int armed;
static atomic_long counted;
static atomic_long hits;
static atomic_char watched[most_descriptors];

#define NEXT(name)                                                                                                     \
    static __typeof__(&name) next;                                                                                     \
    if (!next)                                                                                                         \
    *(void **)&next = dlsym(RTLD_NEXT, #name)

void fault_shim_arm(const struct fault_plan *plan)
{
    the_plan = *plan;
    atomic_store(&counted, 0);
    atomic_store(&hits, 0);
    atomic_store(&armed, 1);
}

long fault_shim_disarm(void)
{
    atomic_store(&armed, 0);
    return atomic_load(&counted);
}

long fault_shim_hits(void)
{
    return atomic_load(&hits);
}

static const char *setting(const char *name)
{
    const char *value = getenv(name);
    return value ? value : "";
}

__attribute__((constructor)) static void arm_by_environment(void)
{
    if (!getenv("FAULT_NAMES"))
        return;
    struct fault_plan plan = {.at = atol(setting("FAULT_AT")),
        .action = (enum fault_action)atoi(setting("FAULT_ACTION")),
        .sticky = atoi(setting("FAULT_STICKY"))};
    snprintf(plan.names, sizeof plan.names, "%s", getenv("FAULT_NAMES"));
    fault_shim_arm(&plan);
}

__attribute__((destructor)) static void write_count(void)
{
    const char *path = getenv("FAULT_COUNT");
    if (!path || !atomic_load(&armed))
        return;
    fault_shim_disarm();
    FILE *file = fopen(path, "w");
    if (!file)
        return;
    fprintf(file, "%ld\n", atomic_load(&counted));
    fclose(file);
}

static int names_hit(const char *path)
{
    const char *name = the_plan.names;
    while (path && *name) {
        const size_t length = strcspn(name, ":");
        if (length && memmem(path, strlen(path), name, length))
            return 1;
        name += length + (name[length] == ':');
    }
    return 0;
}

static int path_watched(const char *path)
{
    return atomic_load(&armed) && names_hit(path);
}

/* Files that were opened while armed stay watched, so that arming again in the same process finds them. */
static int descriptor_watched(int descriptor)
{
    return atomic_load(&armed) && descriptor >= 0 && descriptor < most_descriptors && atomic_load(&watched[descriptor]);
}

/* A disk that is full still opens the files that are there; one that is broken for good opens none. */
static int counts_as_change(const char *path, int flags)
{
    if (!path_watched(path))
        return 0;
    const int space = the_plan.action == FAULT_NO_SPACE || the_plan.action == FAULT_SHORT;
    if (flags & O_CREAT)
        return !space || access(path, F_OK) != 0;
    return the_plan.action == FAULT_IO_ERROR && the_plan.sticky && atomic_load(&hits) > 0;
}

/* What is to be done at this call: FAULT_COUNT means to go on. */
static enum fault_action due(int reads)
{
    if ((the_plan.action == FAULT_READ_ERROR) != reads)
        return FAULT_COUNT;
    const long number = atomic_fetch_add(&counted, 1) + 1;
    if (the_plan.action == FAULT_COUNT || number < the_plan.at || (number > the_plan.at && !the_plan.sticky))
        return FAULT_COUNT;
    atomic_fetch_add(&hits, 1);
    return the_plan.action;
}

static void die(void)
{
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

/* Before a call that is no write; true when it is to fail, with errno set. */
static int fails(enum fault_action action)
{
    switch (action) {
    case FAULT_KILL_BEFORE:
    case FAULT_KILL_TORN:
        die();
        return 1;
    case FAULT_NO_SPACE:
    case FAULT_SHORT:
        errno = ENOSPC;
        return 1;
    case FAULT_IO_ERROR:
    case FAULT_READ_ERROR:
        errno = EIO;
        return 1;
    case FAULT_INTERRUPTED:
        errno = EINTR;
        return 1;
    default:
        return 0;
    }
}

#define GUARDED(watched_now, call)                                                                                     \
    do {                                                                                                               \
        const enum fault_action action = (watched_now) ? due(0) : FAULT_COUNT;                                         \
        if (fails(action))                                                                                             \
            return -1;                                                                                                 \
        const __typeof__(call) result = call;                                                                          \
        if (action == FAULT_KILL_AFTER)                                                                                \
            die();                                                                                                     \
        return result;                                                                                                 \
    } while (0)

#define GUARDED_WRITE(call_of_size)                                                                                    \
    do {                                                                                                               \
        const enum fault_action action = descriptor_watched(descriptor) ? due(0) : FAULT_COUNT;                        \
        if ((action == FAULT_KILL_TORN || action == FAULT_SHORT) && size > 1) {                                        \
            const ssize_t half = call_of_size(size / 2);                                                               \
            if (action == FAULT_KILL_TORN)                                                                             \
                die();                                                                                                 \
            return half;                                                                                               \
        }                                                                                                              \
        if (fails(action))                                                                                             \
            return -1;                                                                                                 \
        const ssize_t result = call_of_size(size);                                                                     \
        if (action == FAULT_KILL_AFTER)                                                                                \
            die();                                                                                                     \
        return result;                                                                                                 \
    } while (0)

static int note_opened(int descriptor, const char *path)
{
    if (descriptor >= 0 && descriptor < most_descriptors)
        atomic_store(&watched[descriptor], path_watched(path) ? 1 : 0);
    return descriptor;
}

static mode_t mode_argument(int flags, va_list arguments)
{
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

#define OPEN(name)                                                                                                     \
    int name(const char *path, int flags, ...)                                                                         \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const mode_t mode = mode_argument(flags, arguments);                                                           \
        va_end(arguments);                                                                                             \
        GUARDED(counts_as_change(path, flags), note_opened(next(path, flags, mode), path));                            \
    }
OPEN(open)
OPEN(open64)

#define OPENAT(name)                                                                                                   \
    int name(int folder, const char *path, int flags, ...)                                                             \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const mode_t mode = mode_argument(flags, arguments);                                                           \
        va_end(arguments);                                                                                             \
        GUARDED(counts_as_change(path, flags), note_opened(next(folder, path, flags, mode), path));                    \
    }
OPENAT(openat)
OPENAT(openat64)

int close(int descriptor)
{
    NEXT(close);
    if (descriptor >= 0 && descriptor < most_descriptors)
        atomic_store(&watched[descriptor], 0);
    return next(descriptor);
}

ssize_t write(int descriptor, const void *bytes, size_t size)
{
    NEXT(write);
#define WRITE(count) next(descriptor, bytes, count)
    GUARDED_WRITE(WRITE);
}

ssize_t pwrite(int descriptor, const void *bytes, size_t size, off_t offset)
{
    NEXT(pwrite);
#define PWRITE(count) next(descriptor, bytes, count, offset)
    GUARDED_WRITE(PWRITE);
}

ssize_t pwrite64(int descriptor, const void *bytes, size_t size, off64_t offset)
{
    NEXT(pwrite64);
    GUARDED_WRITE(PWRITE);
}

#define READ(name, parameters, arguments)                                                                              \
    ssize_t name parameters                                                                                            \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        if (descriptor_watched(descriptor) && fails(due(1)))                                                           \
            return -1;                                                                                                 \
        return next arguments;                                                                                         \
    }
READ(read, (int descriptor, void *bytes, size_t size), (descriptor, bytes, size))
READ(pread, (int descriptor, void *bytes, size_t size, off_t offset), (descriptor, bytes, size, offset))
READ(pread64, (int descriptor, void *bytes, size_t size, off64_t offset), (descriptor, bytes, size, offset))

#define ON_DESCRIPTOR(name, parameters, arguments)                                                                     \
    int name parameters                                                                                                \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        GUARDED(descriptor_watched(descriptor), next arguments);                                                       \
    }
ON_DESCRIPTOR(fsync, (int descriptor), (descriptor))
ON_DESCRIPTOR(fdatasync, (int descriptor), (descriptor))
ON_DESCRIPTOR(ftruncate, (int descriptor, off_t size), (descriptor, size))
ON_DESCRIPTOR(ftruncate64, (int descriptor, off64_t size), (descriptor, size))

#define ON_PATH(name, parameters, arguments)                                                                           \
    int name parameters                                                                                                \
    {                                                                                                                  \
        NEXT(name);                                                                                                    \
        GUARDED(path_watched(path), next arguments);                                                                   \
    }
ON_PATH(unlink, (const char *path), (path))
ON_PATH(rmdir, (const char *path), (path))
ON_PATH(mkdir, (const char *path, mode_t mode), (path, mode))
ON_PATH(rename, (const char *old, const char *path), (old, path))
ON_PATH(link, (const char *old, const char *path), (old, path))
