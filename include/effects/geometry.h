/* Flips, mirrors, quarter turns, scaling, free rotation, skew and distortions. Include effects/effects.h. */
#ifndef EFFECTS_GEOMETRY_H
#define EFFECTS_GEOMETRY_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
