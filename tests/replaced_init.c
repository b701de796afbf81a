// SPDX-License-Identifier: MIT
/* A C99 program against the shared object that brings its own OrnMinRenderTextInit: context
 * creation must call it, once, before the context counts as created, and must fail when it fails.
 */
#include "orn_min_render.h"

#include <stdio.h>
#include <string.h>

struct ContextHead {
    uint32_t size;
    uint8_t *scratch;
};

static int calls;
static int32_t result;
static uint32_t sizeSeen;

int32_t OrnMinRenderTextInit(OrnMinRenderContext *context) {
    struct ContextHead head;
    memcpy(&head, context, sizeof head);
    ++calls;
    sizeSeen = head.size;
    memset(head.scratch, 0xAA, 32768);
    return result;
}

static int Expect(int holds, const char *what) {
    if (!holds)
        fprintf(stderr, "replaced_init: %s\n", what);
    return !holds;
}

int main(void) {
    struct ContextHead head;
    OrnMinRenderContext *context = OrnMinRenderCreateContext();
    int failures = Expect(context != NULL && calls == 1, "the hook is not called once");
    failures += Expect(sizeSeen == 0, "size is set before the hook has succeeded");
    memcpy(&head, context, sizeof head);
    failures += Expect(head.size == 24, "size is not 24");
    OrnMinRenderDestroyContext(context);
    result = -7;
    failures += Expect(OrnMinRenderCreateContext() == NULL, "a failing hook is not heeded");
    failures += Expect(OrnMinRenderTextDirectionInverted == 3, "the directions are misnumbered");
    return failures;
}
