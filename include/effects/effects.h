/*
 * Effects: image-processing routines for layer-based paint applications.
 *
 * Every export is a flat C function with an undecorated name. On 32-bit x86
 * (Windows and elsewhere) the calling convention is __stdcall (the callee
 * removes its arguments); on 64-bit platforms it is the platform's C
 * convention. The library keeps no state between calls and never keeps a
 * pointer to a caller's buffer.
 *
 * Pixels are four elements in memory order blue, green, red, mask.
 */
#ifndef EFFECTS_EFFECTS_H
#define EFFECTS_EFFECTS_H

#include <stdint.h>

#if defined(_WIN32) && !defined(_WIN64)
#  define EFFECTS_CALL __stdcall
#elif defined(__i386__) && defined(__GNUC__)
   /* 32-bit x86 elsewhere: the same convention as on 32-bit Windows. */
#  define EFFECTS_CALL __attribute__((stdcall))
#else
#  define EFFECTS_CALL
#endif

#if defined(_WIN32)
   /* The Windows builds export through the module-definition file. */
#  define EFFECTS_API
#elif defined(EFFECTS_BUILDING)
#  define EFFECTS_API __attribute__((visibility("default")))
#else
#  define EFFECTS_API
#endif

#ifdef __cplusplus
#  define EFFECTS_EXTERN_C_BEGIN extern "C" {
#  define EFFECTS_EXTERN_C_END }
#else
#  define EFFECTS_EXTERN_C_BEGIN
#  define EFFECTS_EXTERN_C_END
#endif

EFFECTS_EXTERN_C_BEGIN

/* 8 bits per element; full = 255. */
typedef struct Pixel32 { uint8_t blue, green, red, mask; } Pixel32;
/* 15 bits in 16 per element; full = 32767 (not 65535). */
typedef struct Pixel64 { uint16_t blue, green, red, mask; } Pixel64;
/* 32-bit float per element; full = 1.0, colour may exceed 1.0. */
typedef struct Pixel128 { float blue, green, red, mask; } Pixel128;

/* Channel selector values taken by the per-channel effects. */
enum {
  EFFECTS_CHANNEL_ALL = 1,
  EFFECTS_CHANNEL_RED = 2,
  EFFECTS_CHANNEL_GREEN = 3,
  EFFECTS_CHANNEL_BLUE = 4
};

EFFECTS_EXTERN_C_END

/* The exports, one header per family. Each declaration stays on one line
 * that starts with EFFECTS_API: scripts/gen-exports reads them from there. */
#include "effects/buffers.h"
#include "effects/convert.h"
#include "effects/hdr.h"
#include "effects/composite.h"
#include "effects/tonal.h"
#include "effects/colour.h"
#include "effects/filters.h"
#include "effects/stylize.h"
#include "effects/geometry.h"
#include "effects/maskcomposite.h"
#include "effects/devicecontext.h"

#endif
