/* SPDX-License-Identifier: MIT */
/**
 * Tristop's merge engine: three exposures of one scene in, one tone-mapped picture out.
 *
 * The engine is plain computation on pixel buffers. It knows no files, windows or messages; it
 * starts worker threads of its own inside hdrProcess and has joined them when the call returns.
 * Usable from C and C++. A context may be used by one thread at a time; different contexts are
 * independent of each other.
 */
#ifndef HDR_ENGINE_H
#define HDR_ENGINE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Result of every engine routine that can fail; one of the HDR_… codes below. */
typedef int64_t HdrStatus;

enum {
    HDR_OK = 0,         /**< success */
    HDR_ERR_PARAM = 2,  /**< a null or inconsistent argument */
    HDR_ERR_FORMAT = 3, /**< a pixel format that the routine does not handle */
    HDR_ERR_NOMEM = 4,  /**< an allocation failed, or a null context was to be released */
    HDR_ERR_SHIFT = 5,  /**< the exposures are too far apart to be merged */
    HDR_CANCELLED = 6,  /**< the progress callback asked to stop */
    HDR_ERR_ALIGN = 23, /**< an exposure could not be aligned: fewer than three features */
    HDR_ERR_ORDER = 24, /**< three unprepared inputs whose brightest is not the last */
    HDR_WARN_25 = 25    /**< success with a warning */
};

/**
 * Pixel formats. The engine's inputs are HDR_FORMAT_YUY2; HDR_FORMAT_YUV444 is its reduced working
 * format. offscreenInit (engine/core/offscreen.h) lists every code with its layout.
 */
enum {
    HDR_FORMAT_YUY2 = 0x501,   /**< packed 4:2:2, bytes Y0 U Y1 V */
    HDR_FORMAT_I420 = 0x601,   /**< planar 4:2:0: Y, U, V */
    HDR_FORMAT_I422 = 0x603,   /**< planar 4:2:2: Y, U, V */
    HDR_FORMAT_YUV444 = 0x604, /**< planar 4:4:4: Y, U, V */
    HDR_FORMAT_GRAY = 0x701,   /**< one 8-bit plane */
    HDR_FORMAT_NV12 = 0x801,   /**< Y plane, interleaved U V plane of half height */
    HDR_FORMAT_NV21 = 0x802,   /**< Y plane, interleaved V U plane of half height */
    HDR_FORMAT_NV16 = 0x803    /**< Y plane, interleaved U V plane of full height */
};

/**
 * A picture: format, size in pixels, plane pointers and row pitches in bytes. The record does not
 * say who owns the planes; records handed to hdrProcess belong to the caller.
 */
typedef struct Offscreen {
    uint32_t u32PixelArrayFormat; /**< pixel format code, HDR_FORMAT_… */
    int32_t i32Width;             /**< pixels in a row */
    int32_t i32Height;            /**< rows */
    uint8_t *ppu8Plane[4];        /**< planes; null where the format has none */
    int32_t pi32Pitch[4];         /**< bytes from one row to the next, 0 where there is no plane */
} Offscreen;

/** An arena for every allocation of a context (engine/core/memory.h); null means the C heap. */
typedef struct MemContext MemContext;

/** The engine's context record: tables, settings and the buffers of a run. */
typedef struct HdrContext HdrContext;

/** The picture's controls. Only the low 32 bits count; a value out of range takes the default. */
typedef struct HdrParams {
    int64_t toneLength;     /**< 0 to 100, default 25: how far shadows are lifted */
    int64_t brightness;     /**< -100 to 100, default 0 */
    int64_t toneSaturation; /**< 0 to 100, default 0 */
} HdrParams;

/**
 * Called during hdrProcess with a percentage, 0 and the caller's user data (null while the inputs
 * are being prepared). Returning 6 cancels the run, any other value goes on. Never entered by two
 * threads at once, but not always on the thread that called hdrProcess.
 */
typedef int64_t (*ProgressCallback)(int64_t progress, int64_t reserved, void *userData);

/**
 * Makes a context with its tables and default settings and stores it in *context, which must be
 * handed to hdrDestroy even when the call fails (HDR_ERR_NOMEM) after storing a non-null pointer.
 * `memory` may be null; creationMode is stored for the caller's use.
 */
HdrStatus hdrCreate(MemContext *memory, int64_t creationMode, HdrContext **context);

/** Sets how eagerly ghosts are suppressed, clamped to 0 (least) to 10. Always HDR_OK. */
HdrStatus hdrSetGhostSuppressionLevel(MemContext *memory, HdrContext *context, int32_t level);

/**
 * Merges `imageCount` pictures of one size and format (three of HDR_FORMAT_YUY2) into outputs[outputIndex].
 *
 * `outputs` must be the same array as `inputs`: the pictures are the run's working space and hold no
 * photographs afterwards. Sides of 100 to 65535 pixels, at most 2^29 pixels. The output index that every run
 * serves is 2. `parameters` and `callback` may be null; `reserved` is not read. Use a fresh context for every
 * merge: the brightness of a second run would be applied on top of the first one's. Returns HDR_OK,
 * HDR_WARN_25 or the error that ended the run.
 */
HdrStatus hdrProcess(MemContext *memory, HdrContext *context, Offscreen *inputs, int32_t imageCount,
                     Offscreen *outputs, int32_t outputIndex, const HdrParams *parameters, void *reserved,
                     ProgressCallback callback, void *userData);

/** Releases the context and all it owns. HDR_ERR_NOMEM for a null context, else HDR_OK. */
HdrStatus hdrDestroy(MemContext *memory, HdrContext *context);

/** Why a run shows a single exposure instead of a merge. */
typedef enum HdrFallback {
    HDR_FALLBACK_NONE = 0,          /**< the exposures were merged */
    HDR_FALLBACK_SHIFT = 1,         /**< an exposure is shifted by more than 64 pixels */
    HDR_FALLBACK_FEATURES = 2,      /**< too little in common to align the exposures */
    HDR_FALLBACK_BRIGHT_MOTION = 3, /**< the bright exposure differs over too much of the picture */
    HDR_FALLBACK_DARK_MOTION = 4,   /**< the dark exposure differs over too much of the picture */
    HDR_FALLBACK_SINGLE_INPUT = 5   /**< only one picture was given */
} HdrFallback;

/** The timed steps of a run, in order. */
enum {
    HDR_STEP_REDUCE,         /**< reduced pictures and exposure estimates */
    HDR_STEP_ALIGN,          /**< tone matching and alignment of the dark and the bright exposure */
    HDR_STEP_CHECK,          /**< input checking and scene analysis */
    HDR_STEP_CHROMA_WEIGHTS, /**< chroma weights and detail mask */
    HDR_STEP_WEIGHTS,        /**< exposure weights and ghost detection */
    HDR_STEP_FIRST_MERGE,    /**< first merge and luminance offsets */
    HDR_STEP_EXPOSURE_MERGE, /**< ghost patching and exposure merge */
    HDR_STEP_RENDER_SETUP,   /**< crop, merge tables, tone and colour maps, padding */
    HDR_STEP_RENDER,         /**< the four bands */
    HDR_STEP_OUTPUT,         /**< output crop and resize */
    HDR_STEP_COUNT
};

/** What the latest hdrProcess of a context found. Index 0 to 2 is the input's position. */
typedef struct HdrRunInfo {
    int32_t darkIndex;
    int32_t midIndex;
    int32_t brightIndex;
    double exposureEstimate[3]; /**< relative exposure, larger for darker pictures, at most 32 */
    int32_t shiftX[3];          /**< displacement against the middle exposure, in pixels */
    int32_t shiftY[3];
    int32_t excluded[3];  /**< 1 when the exposure was left out: it moved, or could not be aligned */
    HdrFallback fallback; /**< why one exposure stands in, or HDR_FALLBACK_NONE */
    int32_t crop[4];      /**< x0, y0, x1, y1: valid in all exposures, before the resize */
    int64_t stepMicroseconds[HDR_STEP_COUNT];
} HdrRunInfo;

/** Copies what the latest run found into *info. HDR_ERR_PARAM when either pointer is null. */
HdrStatus hdrGetRunInfo(const HdrContext *context, HdrRunInfo *info);

/**
 * Called at the end of each step of a run that goes on, on the thread that called hdrProcess; a step
 * of two parts is told twice. What the run holds by then can be read through the engine's internal
 * headers (engine/core/context.h) until the call returns. It must not be changed.
 */
typedef void (*HdrStepObserver)(const HdrContext *context, int32_t step, void *userData);

/** Sets the observer of the context's runs; null for none. HDR_ERR_PARAM for a null context. */
HdrStatus hdrSetStepObserver(HdrContext *context, HdrStepObserver observer, void *userData);

/** A short name of a step ("reduce", "align", …), or null for an index out of range. */
const char *hdrStepName(int32_t step);

#ifdef __cplusplus
}
#endif

#endif
