#include "platform/dynamic_library.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace effects::platform {

#ifdef _WIN32
LibraryHandle openLibrary(const char* fileName) {
  return reinterpret_cast<LibraryHandle>(LoadLibraryA(fileName));
}
void* findSymbol(LibraryHandle library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
void closeLibrary(LibraryHandle library) { FreeLibrary(static_cast<HMODULE>(library)); }
#else
// dlopen of a null or empty name hands back the host program itself, where
// LoadLibraryA fails; a plug-in path that names nothing must fail here too.
LibraryHandle openLibrary(const char* fileName) {
  if (fileName == nullptr || *fileName == '\0') return nullptr;
  return dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
}
void* findSymbol(LibraryHandle library, const char* name) { return dlsym(library, name); }
void closeLibrary(LibraryHandle library) { dlclose(library); }
#endif

}  // namespace effects::platform
