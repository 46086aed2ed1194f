#include "Foundation/Platform/Symbols.h"

#include <algorithm>
#include <dlfcn.h>
#include <iterator>
#include <link.h>
#include <string_view>

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

// Tells a module from another that has its place later.
std::size_t identity(const dl_phdr_info& module)
{
  const std::string_view layout(reinterpret_cast<const char*>(module.dlpi_phdr),
                                module.dlpi_phnum * sizeof *module.dlpi_phdr);
  const std::hash<std::string_view> hash;
  return (hash(module.dlpi_name) * 31 + hash(layout)) * 31 + module.dlpi_addr;
}

bool contains(const dl_phdr_info& module, std::uintptr_t address)
{
  return std::any_of(module.dlpi_phdr, module.dlpi_phdr + module.dlpi_phnum, [&](const auto& segment) {
    return segment.p_type == PT_LOAD && address - module.dlpi_addr - segment.p_vaddr < segment.p_memsz;
  });
}

struct Modules
{
  std::size_t known[1000]; // identities; when they are too many, any other passes for known
  std::size_t count;
  std::uintptr_t address; // what is asked for
} gModules;

int learn(dl_phdr_info* module, std::size_t, void*)
{
  gModules.known[gModules.count++] = identity(*module);
  return gModules.count == std::size(gModules.known);
}

// 1 when the address is in a module and that is not known, 0 to ask for the next module.
int isNew(dl_phdr_info* module, std::size_t, void*)
{
  if (!contains(*module, gModules.address) || gModules.count == std::size(gModules.known))
    return 0;
  const std::size_t* end = gModules.known + gModules.count;
  return std::find<const std::size_t*>(gModules.known, end, identity(*module)) == end;
}

// The reader of debug information knows the modules of the moment when it is made, takes megabytes and cannot be
// unmade. It is replaced, and left, only when an address lies in a module that came later.
backtrace_state* symbols(std::uintptr_t address)
{
  static backtrace_state* state = nullptr;
  gModules.address = address;
  if (!state || dl_iterate_phdr(isNew, nullptr) != 0)
  {
    gModules.count = 0;
    dl_iterate_phdr(learn, nullptr);
    state = backtrace_create_state(nullptr, 1, ignoreError, nullptr);
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
  if (backtrace_state* state = symbols(address))
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
