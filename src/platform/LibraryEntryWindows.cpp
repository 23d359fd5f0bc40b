// SPDX-License-Identifier: MIT
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// The library keeps nothing for a thread, so that it need not be told of each one. The call may
// fail where a runtime that was linked in has thread data of its own: nothing is lost then.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}
