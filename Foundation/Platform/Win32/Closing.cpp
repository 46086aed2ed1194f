#include "Foundation/Platform/Closing.h"

#include <windows.h>

int g_bClosing = 0;

// What Windows calls when the library comes and goes.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
  if (reason == DLL_PROCESS_DETACH)
    g_bClosing = 1;
  return TRUE;
}
