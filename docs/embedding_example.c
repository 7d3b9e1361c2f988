/* SPDX-License-Identifier: MIT
 * Merging three pictures with the engine alone. Build against the shared library:
 *   cc embedding_example.c -I <tristop> -lhdr_engine */
#include "engine/hdr_engine.h"

#include <stdio.h>
#include <stdlib.h>

enum { WIDTH = 320, HEIGHT = 240 };

/* A picture of the engine's input format: bytes Y0 U Y1 V, two bytes a pixel. */
static Offscreen picture(double exposure) {
    Offscreen made = {HDR_FORMAT_YUY2, WIDTH, HEIGHT, {NULL}, {2 * WIDTH}};
    uint8_t *byte = made.ppu8Plane[0] = malloc((size_t)2 * WIDTH * HEIGHT);
    if (!byte)
        exit(1);
    for (int y = 0; y < HEIGHT; y++)
        for (int x = 0; x < WIDTH; x++) {
            /* A ramp of tiles; put your photograph's pixels here. */
            double light = (x + 1.0) / WIDTH * (((x / 16) ^ (y / 16)) & 1 ? 1.0 : 0.6) * exposure;
            *byte++ = (uint8_t)(16 + 219 * (light < 1 ? light : 1)); /* Y */
            *byte++ = 128;                                           /* U, V in turn: no colour */
        }
    return made;
}

static int64_t showProgress(int64_t percent, int64_t reserved, void *userData) {
    (void)reserved;
    (void)userData;
    fprintf(stderr, "\r%3d %%", (int)percent);
    return 0; /* 6 would cancel */
}

int main(void) {
    Offscreen pictures[3] = {picture(0.3), picture(0.9), picture(2.7)}; /* in any order */
    const HdrParams look = {45, 10, 40};
    HdrContext *context = NULL;
    HdrStatus status = hdrCreate(NULL, 0, &context);
    if (status == HDR_OK) {
        hdrSetGhostSuppressionLevel(NULL, context, 6);
        status = hdrProcess(NULL, context, pictures, 3, pictures, 2, &look, NULL, showProgress, NULL);
    }
    hdrDestroy(NULL, context);
    /* The merged picture is now in pictures[2]. */
    printf("\nstatus %d, luminance in the middle %d\n", (int)status,
           pictures[2].ppu8Plane[0][(size_t)HEIGHT / 2 * 2 * WIDTH + WIDTH]);
    for (int i = 0; i < 3; i++)
        free(pictures[i].ppu8Plane[0]);
    return status == HDR_OK ? 0 : 1;
}
