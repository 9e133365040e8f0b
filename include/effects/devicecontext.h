/* Selection, fill and the device-context entry points. Include effects/effects.h. */
#ifndef EFFECTS_DEVICECONTEXT_H
#define EFFECTS_DEVICECONTEXT_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
