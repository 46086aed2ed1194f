#include "Foundation/Platform/Symbols.h"

#include <dlfcn.h>
#include <link.h>

#ifdef FOUNDATION_HAS_BACKTRACE
#  include <backtrace.h>
#endif

namespace Platform {

#ifdef FOUNDATION_HAS_BACKTRACE
namespace {

struct Search
{
  void (*report)(const CodePlace& place, void* context);
  void* context;
  CodePlace place; // what is reported next
};

void ignoreError(void*, const char*, int) {}

int countModules(dl_phdr_info* info, std::size_t, void* changes)
{
  *static_cast<unsigned long long*>(changes) = info->dlpi_adds + info->dlpi_subs;
  return 1;
}

// The reader of debug information knows the modules of the moment when it is made, and cannot be unmade: it is
// replaced, and left, when modules came or went.
backtrace_state* symbols()
{
  static backtrace_state* state = nullptr;
  static unsigned long long changesThen = 0;
  unsigned long long changes = 0;
  dl_iterate_phdr(countModules, &changes);
  if (!state || changes != changesThen)
  {
    state = backtrace_create_state(nullptr, 1, ignoreError, nullptr);
    changesThen = changes;
  }
  return state;
}

int onLine(void* data, std::uintptr_t, const char* file, int line, const char* function)
{
  Search& search = *static_cast<Search*>(data);
  if (search.place.file)
    search.report(search.place, search.context); // it is in line of what comes now
  search.place.function = function;
  search.place.file = file;
  search.place.line = line;
  return 0;
}

void onSymbol(void* data, std::uintptr_t, const char* symbol, std::uintptr_t, std::uintptr_t)
{
  *static_cast<const char**>(data) = symbol;
}

} // namespace
#endif

void findCode(std::uintptr_t address, void (*report)(const CodePlace& place, void* context), void* context)
{
  CodePlace place;
  Dl_info known;
  if (dladdr(reinterpret_cast<void*>(address), &known) != 0)
  {
    place.function = known.dli_sname;
    place.module = known.dli_fname;
    place.moduleOffset = address - reinterpret_cast<std::uintptr_t>(known.dli_fbase);
  }
#ifdef FOUNDATION_HAS_BACKTRACE
  if (backtrace_state* state = symbols())
  {
    Search search = {report, context, place};
    backtrace_pcinfo(state, address, onLine, ignoreError, &search);
    const char* symbol = nullptr; // unlike the debug information's name, it always has its scope
    backtrace_syminfo(state, address, onSymbol, ignoreError, &symbol);
    if (symbol)
      search.place.function = symbol;
    else if (!search.place.function)
      search.place.function = place.function;
    place = search.place;
  }
#endif
  report(place, context);
}

} // namespace Platform
