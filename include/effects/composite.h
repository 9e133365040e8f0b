/* Layer compositing, direct drawing and block transfer. Include effects/effects.h. */
#ifndef EFFECTS_COMPOSITE_H
#define EFFECTS_COMPOSITE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
