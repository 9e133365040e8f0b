/* A plug-in with both entry points. Each writes what it was called with into
 * the record that its first argument points to (the plug-in is unloaded after
 * every call, so it cannot keep anything itself) and returns a value the
 * bridge must ignore. */
#include "plugin.h"

PLUGIN_EXPORT int32_t EFFECTS_CALL ToneMapping128to32(intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5) {
  intptr_t* record = (intptr_t*)a1;
  record[0] = 5;
  record[1] = a1;
  record[2] = a2;
  record[3] = a3;
  record[4] = a4;
  record[5] = a5;
  return -7;
}

PLUGIN_EXPORT int32_t EFFECTS_CALL TMOptionsUsed(intptr_t a1) {
  intptr_t* record = (intptr_t*)a1;
  record[0] = 1;
  record[1] = a1;
  return 1;
}
