/* Radiance RGBE files, the VXL layer file and tone-mapping plug-ins. Include effects/effects.h. */
#ifndef EFFECTS_HDR_H
#define EFFECTS_HDR_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

EFFECTS_EXTERN_C_END
#endif
