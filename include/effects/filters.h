/* Blurs, sharpening and edge filters, morphology. Include effects/effects.h. */
#ifndef EFFECTS_FILTERS_H
#define EFFECTS_FILTERS_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
