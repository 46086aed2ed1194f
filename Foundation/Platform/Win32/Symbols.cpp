#include "Foundation/Platform/Symbols.h"

#include <windows.h>

#include <dbghelp.h>

namespace Platform {

void findCode(std::uintptr_t address, void (*report)(const CodePlace& place, void* context), void* context)
{
  HANDLE process = GetCurrentProcess();
  static bool ready = false;
  if (ready)
    SymRefreshModuleList(process);
  else
  {
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
    SymInitialize(process, nullptr, TRUE); // fails when the program has done it already, which is as good
    ready = true;
  }

  CodePlace place;
  alignas(SYMBOL_INFO) char symbolStorage[sizeof(SYMBOL_INFO) + MAX_SYM_NAME] = {};
  SYMBOL_INFO* symbol = reinterpret_cast<SYMBOL_INFO*>(symbolStorage);
  symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
  symbol->MaxNameLen = MAX_SYM_NAME;
  if (SymFromAddr(process, address, nullptr, symbol))
    place.function = symbol->Name;

  IMAGEHLP_LINE64 line = {};
  line.SizeOfStruct = sizeof line;
  DWORD displacement = 0;
  if (SymGetLineFromAddr64(process, address, &displacement, &line))
  {
    place.file = line.FileName;
    place.line = int(line.LineNumber);
  }

  char moduleName[MAX_PATH] = "";
  HMODULE module = nullptr;
  if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(address), &module) &&
      GetModuleFileNameA(module, moduleName, sizeof moduleName) != 0)
  {
    place.module = moduleName;
    place.moduleOffset = address - reinterpret_cast<std::uintptr_t>(module);
  }
  report(place, context);
}

} // namespace Platform
