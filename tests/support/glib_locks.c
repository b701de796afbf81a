/* SPDX-License-Identifier: MIT
 * GLib's locks, told to ThreadSanitizer, which can't see them: they are GLib's own and not
 * pthread's. A program that has these finds the races between its threads, and no others. */
#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>
#include <stddef.h>

typedef void (*Call)(void *lock);

static void CallNext(const char *name, void *lock) {
    union {
        void *object;
        Call call;
    } next = {dlsym(RTLD_NEXT, name)};
    next.call(lock);
}

#define LOCK(name)                                                                                 \
    void name(void *lock);                                                                         \
    void name(void *lock) {                                                                        \
        CallNext(#name, lock);                                                                     \
        __tsan_acquire(lock);                                                                      \
    }
#define UNLOCK(name)                                                                               \
    void name(void *lock);                                                                         \
    void name(void *lock) {                                                                        \
        __tsan_release(lock);                                                                      \
        CallNext(#name, lock);                                                                     \
    }

LOCK(g_mutex_lock)
UNLOCK(g_mutex_unlock)
LOCK(g_rec_mutex_lock)
UNLOCK(g_rec_mutex_unlock)
