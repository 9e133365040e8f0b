/* Tonal and colour adjustments. Include effects/effects.h. */
#ifndef EFFECTS_ADJUST_H
#define EFFECTS_ADJUST_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
