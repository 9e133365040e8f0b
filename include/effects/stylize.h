/* Stylize effects. Include effects/effects.h. */
#ifndef EFFECTS_STYLIZE_H
#define EFFECTS_STYLIZE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
