/* Colour adjustments. Include effects/effects.h. */
#ifndef EFFECTS_COLOUR_H
#define EFFECTS_COLOUR_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
