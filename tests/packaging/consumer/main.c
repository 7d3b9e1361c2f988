/* SPDX-License-Identifier: MIT */
#include <hdr_engine.h>
#include <stddef.h>

int main(void) {
    HdrContext *context = NULL;
    HdrStatus created = hdrCreate(NULL, 0, &context);
    HdrStatus destroyed = hdrDestroy(NULL, context);
    return created == HDR_OK && destroyed == HDR_OK ? 0 : 1;
}
