/* Tonal adjustments. Include effects/effects.h. */
#ifndef EFFECTS_TONAL_H
#define EFFECTS_TONAL_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
