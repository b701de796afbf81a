// SPDX-License-Identifier: MIT
// The operators of C++ lead to the wrapped functions, so that what is allocated in either way
// counts. Blocks that libraries allocate or free by themselves are few and pass uncounted.
#include "counted_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <malloc.h>

extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *block, size_t size);
void __wrap_free(void *block);
}

static size_t inUse = SIZE_MAX / 4; // away from 0, below which uncounted blocks could lead
static size_t peak;

size_t ResetPeak() {
    return peak = inUse;
}

size_t PeakBytes() {
    return peak;
}

static void *Counted(void *block) {
    inUse += block ? malloc_usable_size(block) : 0;
    peak = std::max(peak, inUse);
    return block;
}

static void Uncount(void *block) {
    inUse -= block ? malloc_usable_size(block) : 0;
}

void *__wrap_malloc(size_t size) {
    return Counted(__real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size) {
    return Counted(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size) {
    Uncount(block);
    void *const moved = __real_realloc(block, size);
    return Counted(moved || size == 0 ? moved : block);
}

void __wrap_free(void *block) {
    Uncount(block);
    __real_free(block);
}

void *operator new(size_t size) {
    if (void *const block = malloc(size ? size : 1))
        return block;
    throw std::bad_alloc();
}

void *operator new(size_t size, const std::nothrow_t &) noexcept {
    return malloc(size ? size : 1);
}

void operator delete(void *block) noexcept {
    free(block);
}

void operator delete(void *block, size_t) noexcept {
    free(block);
}
