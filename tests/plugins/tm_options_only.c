/* A plug-in with the options entry point but no tone mapping. */
#include "plugin.h"

PLUGIN_EXPORT int32_t EFFECTS_CALL TMOptionsUsed(intptr_t a1) {
  intptr_t* record = (intptr_t*)a1;
  record[0] = 11;
  record[1] = a1;
  return 0;
}
