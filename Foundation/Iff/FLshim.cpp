// Small services beside the chunks: names, memory, environment, and the system's calls under their portable names.

#include "Foundation/Iff/FLfile.h"
#include "Foundation/Platform/Descriptor.h"
#include "Foundation/Platform/Signals.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace {

#ifdef _WIN32
constexpr const char* kSeparators = "/\\:";
#else
constexpr const char* kSeparators = "/";
#endif

// Passes a system call's result on and notes its failure.
template <class Result>
Result noted(Result result, bool failed)
{
  if (failed)
    FLfail(errno == ENOSYS ? kFLnotImplemented : kFLioError);
  return result;
}

int noted(int result)
{
  return noted(result, result == -1);
}

} // namespace

const char* FLbasename(const char* path)
{
  if (!path)
    return nullptr;
  const char* last = path;
  for (const char* at = path; *at; ++at)
  {
    if (std::strchr(kSeparators, *at))
      last = at + 1;
  }
  return last;
}

const char* FLgetext(const char* name)
{
  if (!name)
    return nullptr;
  const char* base = FLbasename(name);
  const char* dot = std::strrchr(base, '.');
  return dot ? dot + 1 : base + std::strlen(base);
}

int FLcheckext(const char* name, const char* extension)
{
  if (!name || !extension)
    return 0;
  const std::size_t length = std::strlen(name);
  const std::size_t tail = std::strlen(extension);
  return length > tail && name[length - tail - 1] == '.' && std::strcmp(name + length - tail, extension) == 0;
}

void* FLmalloc(std::size_t size)
{
  void* memory = std::malloc(size ? size : 1);
  if (!memory)
    FLfail(kFLnoMemory);
  return memory;
}

void* FLcalloc(std::size_t size)
{
  void* memory = std::calloc(size ? size : 1, 1);
  if (!memory)
    FLfail(kFLnoMemory);
  return memory;
}

void FLfree(void* memory)
{
  std::free(memory);
}

void FLsetwork(const char* graph, const char* project)
{
  // The system keeps its own copy.
  if (graph && !Platform::setEnvironment("GRAPH", graph))
    FLfail(kFLnoMemory);
  if (project && !Platform::setEnvironment("PROJ", project))
    FLfail(kFLnoMemory);
}

int FLdup(int descriptor)
{
  return noted(Platform::duplicate(descriptor));
}

int FLdup2(int descriptor, int target)
{
  return noted(Platform::duplicateTo(descriptor, target));
}

int FLfcntl(int descriptor, int command, long argument)
{
  return noted(Platform::control(descriptor, command, argument));
}

int FLfsync(int descriptor)
{
  return noted(Platform::synchronise(descriptor));
}

int FListty(int descriptor)
{
  return Platform::isTerminal(descriptor);
}

const char* FLttyname(int descriptor)
{
  const char* name = Platform::terminalName(descriptor);
  return noted(name, !name);
}

int FLtcdrain(int descriptor)
{
  return noted(Platform::drainTerminal(descriptor));
}

int FLtcgetpgrp(int descriptor)
{
  return noted(Platform::terminalGroup(descriptor));
}

void FLsetpwent()
{
  Platform::rewindUsers();
}

void FLendpwent()
{
  Platform::closeUsers();
}

void FLsetgrent()
{
  Platform::rewindGroups();
}

void FLendgrent()
{
  Platform::closeGroups();
}

void FLcloselog()
{
  Platform::closeLog();
}

int FLsigvec(int signal, FLsignalhandler handler, FLsignalhandler* previous)
{
  return noted(Platform::installHandler(signal, handler, previous) ? 0 : -1);
}

int FLsprintf(char* buffer, const char* format, ...)
{
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsprintf(buffer, format, arguments);
  va_end(arguments);
  return length;
}
