// SPDX-License-Identifier: MIT
// Put before the C library (LD_PRELOAD), runs a program again and again, with one call failing each
// time: of the calls of the kind FAULT_CALL (memory, open, read, stream, map, write, sync or
// rename) the one whose number, from 1, comes as a line from descriptor 3, with the error
// FAULT_ERROR. The exit status goes as a line to descriptor 4. Each run is a copy of one process
// that has been loaded, which takes longer than the run; it reads the file "in" and writes "output"
// and "errors".
//
// Calls count from the program's own start on, when the libraries that it needs have been set up.
// At the end of a run it tells how many there were, as the size of the file FAULT_COUNT.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// The C library's own names of what stands below.
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *memory, size_t size);
int __open(const char *path, int flags, int mode);
FILE *_IO_fopen(const char *path, const char *mode);
ssize_t __read(int descriptor, void *bytes, size_t size);
size_t _IO_fread(void *bytes, size_t size, size_t count, FILE *file);
ssize_t __write(int descriptor, const void *bytes, size_t size);

enum { kNumbers = 3, kStatuses = 4 }; // descriptors

static int started;
static long failing;
static long calls;

static void Redirect(const char *path, int flags, int descriptor) {
    const int file = __open(path, flags, 0666);
    if (dup2(file, descriptor) != descriptor)
        abort();
    close(file);
}

// Returns in each of the copies, and never in the process that was loaded.
static void CopyForEachNumber(void) {
    char line[32];
    ssize_t size;
    while ((size = __read(kNumbers, line, sizeof line - 1)) > 0) {
        line[size] = 0;
        failing = atol(line);
        const pid_t copy = fork();
        if (copy == 0)
            return;
        int status = -1;
        waitpid(copy, &status, 0);
        size = snprintf(line, sizeof line, "%d\n",
                        WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
        if (__write(kStatuses, line, (size_t)size) != size)
            abort();
    }
    _exit(0);
}

typedef int Start(int (*main)(int, char **, char **), int count, char **arguments,
                  void (*init)(void), void (*end)(void), void (*endLoader)(void), void *stack);

int __libc_start_main(int (*main)(int, char **, char **), int count, char **arguments,
                      void (*init)(void), void (*end)(void), void (*endLoader)(void), void *stack) {
    void *const found = dlsym(RTLD_NEXT, "__libc_start_main");
    Start *start;
    memcpy(&start, &found, sizeof start); // ISO C has no such cast
    CopyForEachNumber();
    close(kNumbers);
    close(kStatuses);
    Redirect("in", O_RDONLY, STDIN_FILENO);
    Redirect("output", O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Redirect("errors", O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    started = 1;
    return start(main, count, arguments, init, end, endLoader, stack);
}

static int Fails(const char *kind) {
    const char *wanted = getenv("FAULT_CALL");
    if (!started || !wanted || strcmp(kind, wanted) != 0 || ++calls != failing)
        return 0;
    errno = atoi(getenv("FAULT_ERROR"));
    return 1;
}

void *malloc(size_t size) {
    return Fails("memory") ? NULL : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    return Fails("memory") ? NULL : __libc_calloc(count, size);
}

void *realloc(void *memory, size_t size) {
    return Fails("memory") ? NULL : __libc_realloc(memory, size);
}

int open(const char *path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const int mode = va_arg(rest, int);
    va_end(rest);
    return Fails("open") ? -1 : __open(path, flags, mode);
}

FILE *fopen(const char *path, const char *mode) {
    return Fails("open") ? NULL : _IO_fopen(path, mode);
}

FILE *fopen64(const char *path, const char *mode) {
    return fopen(path, mode);
}

int mkostemp(char *path, int flags) {
    return Fails("open") ? -1 : mkostemps(path, 0, flags);
}

ssize_t read(int descriptor, void *bytes, size_t size) {
    return Fails("read") ? -1 : __read(descriptor, bytes, size);
}

// From here on the stream leads to a folder, which can't be read.
size_t fread(void *bytes, size_t size, size_t count, FILE *file) {
    if (Fails("stream"))
        dup2(__open("/", O_RDONLY, 0), fileno(file));
    return _IO_fread(bytes, size, count, file);
}

ssize_t write(int descriptor, const void *bytes, size_t size) {
    return Fails("write") ? -1 : __write(descriptor, bytes, size);
}

void *mmap(void *wanted, size_t size, int access, int flags, int descriptor, off_t offset) {
    if (Fails("map"))
        return MAP_FAILED;
    return (void *)syscall(SYS_mmap, wanted, size, access, flags, descriptor, offset);
}

int fsync(int descriptor) {
    return Fails("sync") ? -1 : (int)syscall(SYS_fsync, descriptor);
}

int rename(const char *from, const char *to) {
    return Fails("rename") ? -1 : renameat(AT_FDCWD, from, AT_FDCWD, to);
}

__attribute__((destructor)) static void TellCount(void) {
    const char *path = getenv("FAULT_COUNT");
    if (path && truncate(path, calls) != 0)
        abort();
}
