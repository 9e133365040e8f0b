/* Conversions between layouts, histograms and dynamic range. Include effects/effects.h. */
#ifndef EFFECTS_CONVERT_H
#define EFFECTS_CONVERT_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
