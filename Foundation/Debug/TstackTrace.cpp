#include "Foundation/Debug/TstackTrace.h"

#include "Foundation/Platform/Symbols.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <unwind.h>

namespace {

unsigned char gGprofDisabled = 0;

struct Walk
{
  std::uintptr_t addresses[TstackTrace::kMostFrames];
  int count = 0;
  int skip;
};

_Unwind_Reason_Code takeFrame(_Unwind_Context* context, void* data)
{
  Walk& walk = *static_cast<Walk*>(data);
  if (walk.skip > 0)
  {
    --walk.skip;
    return _URC_NO_REASON;
  }
  int beforeInstruction = 0;
  const std::uintptr_t address = _Unwind_GetIPInfo(context, &beforeInstruction);
  if (address == 0 || walk.count == TstackTrace::kMostFrames)
    return _URC_END_OF_STACK;
  // A return address may be that of the next function already; the one that a signal interrupted at is exact.
  walk.addresses[walk.count++] = address - (beforeInstruction ? 0 : 1);
  return _URC_NO_REASON;
}

struct Listing
{
  std::FILE* stream;
  int lines = 0;
};

void printPlace(const Platform::CodePlace& place, void* data)
{
  Listing& listing = *static_cast<Listing*>(data);
  const char* name = place.function ? place.function : "?";
  if (std::strncmp(name, "__Z", 3) == 0) // the platform's underscore in front
    ++name;
  // Other names may read as types: "f" as float.
  char* demangled = std::strncmp(name, "_Z", 2) == 0 ? abi::__cxa_demangle(name, nullptr, nullptr, nullptr) : nullptr;
  std::fprintf(listing.stream, "#%d %s", listing.lines++, demangled ? demangled : name);
  std::free(demangled);
  if (place.file)
    std::fprintf(listing.stream, " at %s:%d\n", place.file, place.line);
  else
    std::fprintf(listing.stream, " at %s+0x%llx\n", place.module ? place.module : "?",
                 static_cast<unsigned long long>(place.moduleOffset));
}

} // namespace

[[gnu::noinline]] int TstackTrace::print(std::FILE* stream, int skip)
{
  if (!stream || std::getenv("VEXA_NO_STACK_TRACE"))
    return 0;
  Walk walk;
  walk.skip = std::clamp(skip, 0, INT_MAX - 1) + 1; // this function
  _Unwind_Backtrace(takeFrame, &walk);
  Listing listing = {stream};
  for (int i = 0; i < walk.count; ++i)
    Platform::findCode(walk.addresses[i], printPlace, &listing);
  std::fflush(stream);
  return listing.lines;
}

void TstackTrace::gprofEnable(unsigned char enable)
{
  gGprofDisabled = !enable;
}

unsigned char TstackTrace::gprofDisabled()
{
  return gGprofDisabled;
}
