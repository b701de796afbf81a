/* SPDX-License-Identifier: MIT */
/*
 * Loaded before a program (LD_PRELOAD), lets one of its allocations fail: the one whose number is
 * in FAIL_AT. At the end it writes how many there were into the file that is named in COUNT_TO.
 */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

static long allocations;

static int Fails(void) {
    static long failing = -1;
    if (failing < 0) {
        const char *number = getenv("FAIL_AT");
        failing = number ? atol(number) : 0;
    }
    if (++allocations != failing)
        return 0;
    errno = ENOMEM;
    return 1;
}

void *malloc(size_t size) {
    return Fails() ? NULL : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    return Fails() ? NULL : __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) {
    return Fails() ? NULL : __libc_realloc(block, size);
}

__attribute__((destructor)) static void TellCount(void) {
    const char *path = getenv("COUNT_TO");
    FILE *file = path ? fopen(path, "w") : NULL;
    if (!file)
        return;
    fprintf(file, "%ld\n", allocations);
    fclose(file);
}
