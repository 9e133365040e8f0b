// Loading a shared library by file name and resolving a symbol in it:
// LoadLibraryA/GetProcAddress/FreeLibrary on Windows, dlopen/dlsym/dlclose
// elsewhere.
#pragma once

namespace effects::platform {

using LibraryHandle = void*;

LibraryHandle openLibrary(const char* fileName);
void* findSymbol(LibraryHandle library, const char* name);
void closeLibrary(LibraryHandle library);

}  // namespace effects::platform
