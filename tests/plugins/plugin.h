/* What a tone-mapping plug-in needs to export its entry points undecorated
 * with the library's calling convention. */
#ifndef EFFECTS_TEST_PLUGIN_H
#define EFFECTS_TEST_PLUGIN_H
#include <stdint.h>
#include "effects/effects.h"
#if defined(_WIN32)
#  define PLUGIN_EXPORT __declspec(dllexport)
#else
#  define PLUGIN_EXPORT __attribute__((visibility("default")))
#endif
#endif
