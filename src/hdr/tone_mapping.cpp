// The tone-mapping bridge: load a plug-in, call one entry point, unload it.
#include <cstdio>

#include "effects/effects.h"
#include "platform/dynamic_library.h"

namespace effects {
namespace {

using ToneMapping128to32 = int32_t(EFFECTS_CALL*)(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t);
using TMOptionsUsed = int32_t(EFFECTS_CALL*)(intptr_t);

// The entry point's result is not looked at. A plug-in that loads but lacks
// the entry point is left loaded.
template <class Entry, class... Args>
int32_t callPlugin(const char* path, const char* entryName, Args... args) {
  if (platform::LibraryHandle lib = platform::openLibrary(path)) {
    if (void* entry = platform::findSymbol(lib, entryName)) {
      reinterpret_cast<Entry>(entry)(args...);
      platform::closeLibrary(lib);
      return 0;
    }
  }
  std::printf("Couldn't load plugin.\n");
  return 1;
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL CallToneMapping(const char* pluginPath, intptr_t a1, intptr_t a2, intptr_t a3, intptr_t a4, intptr_t a5) { return callPlugin<ToneMapping128to32>(pluginPath, "ToneMapping128to32", a1, a2, a3, a4, a5); }
EFFECTS_API int32_t EFFECTS_CALL CallToneMappingOptions(const char* pluginPath, intptr_t a1) { return callPlugin<TMOptionsUsed>(pluginPath, "TMOptionsUsed", a1); }

}  // extern "C"
