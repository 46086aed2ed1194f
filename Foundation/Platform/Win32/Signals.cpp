#include "Foundation/Platform/Signals.h"

#include <csignal>
#include <cstring>
#include <io.h>

namespace Platform {

namespace {

struct FatalSignal
{
  int number;
  const char* name;
  bool request;
};
constexpr FatalSignal kFatalSignals[] = {
  {SIGSEGV, "SIGSEGV", false}, {SIGFPE, "SIGFPE", false}, {SIGILL, "SIGILL", false},
  {SIGABRT, "SIGABRT", false}, {SIGINT, "SIGINT", true},  {SIGTERM, "SIGTERM", true},
};

bool (*gNote)(int signal) = nullptr;

void onFatalSignal(int signal)
{
  if (gNote(signal))
  {
    std::signal(signal, onFatalSignal); // the runtime has taken it out
    return;
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

} // namespace

void catchFatalSignals(bool (*note)(int signal))
{
  gNote = note;
  for (const FatalSignal& fatal : kFatalSignals)
    std::signal(fatal.number, onFatalSignal);
}

bool isRequest(int signal)
{
  for (const FatalSignal& fatal : kFatalSignals)
  {
    if (fatal.number == signal)
      return fatal.request;
  }
  return false;
}

const char* signalName(int signal)
{
  for (const FatalSignal& fatal : kFatalSignals)
  {
    if (fatal.number == signal)
      return fatal.name;
  }
  return "signal";
}

void writeError(const char* text)
{
  if (_write(2, text, unsigned(std::strlen(text))) < 0)
    return; // nowhere else to report it
}

bool installHandler(int signal, void (*handler)(int), void (**previous)(int))
{
  void (*before)(int) = std::signal(signal, handler);
  if (before == SIG_ERR)
    return false;
  if (previous)
    *previous = before;
  return true;
}

} // namespace Platform
