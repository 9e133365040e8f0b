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
LibraryHandle openLibrary(const char* fileName) { return dlopen(fileName, RTLD_NOW | RTLD_LOCAL); }
void* findSymbol(LibraryHandle library, const char* name) { return dlsym(library, name); }
void closeLibrary(LibraryHandle library) { dlclose(library); }
#endif

}  // namespace effects::platform
