/* Mask compositing on device-context bitmaps. Include effects/effects.h. */
#ifndef EFFECTS_MASKCOMPOSITE_H
#define EFFECTS_MASKCOMPOSITE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
