#include "Foundation/Platform/Signals.h"

#include "Foundation/Platform/MappedFile.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>

namespace Platform {

namespace {

struct FatalSignal
{
  int number;
  const char* name;
  bool request;
};
constexpr FatalSignal kFatalSignals[] = {
  {SIGSEGV, "SIGSEGV", false}, {SIGBUS, "SIGBUS", false}, {SIGFPE, "SIGFPE", false}, {SIGILL, "SIGILL", false},
  {SIGABRT, "SIGABRT", false}, {SIGHUP, "SIGHUP", true},  {SIGINT, "SIGINT", true},  {SIGTERM, "SIGTERM", true},
};

bool (*gNote)(int signal) = nullptr;

void onFatalSignal(int signal, siginfo_t* info, void*)
{
  const int savedError = errno;
  if (signal != SIGBUS || !MappedFile::repair(info->si_addr))
  {
    if (!gNote(signal))
    {
      std::signal(signal, SIG_DFL);
      raise(signal); // blocked until this handler returns
    }
  }
  errno = savedError;
}

} // namespace

void catchFatalSignals(bool (*note)(int signal))
{
  gNote = note;
  struct sigaction action = {};
  action.sa_sigaction = onFatalSignal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const FatalSignal& fatal : kFatalSignals)
  {
    struct sigaction before;
    const bool ignored = sigaction(fatal.number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
    if (!ignored) // as requests are in a program that outlives its terminal
      sigaction(fatal.number, &action, nullptr);
  }
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
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0)
    return; // nowhere else to report it
}

bool installHandler(int signal, void (*handler)(int), void (**previous)(int))
{
  struct sigaction action = {};
  struct sigaction before = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  if (sigaction(signal, &action, &before) != 0)
    return false;
  if (previous)
    *previous = before.sa_handler;
  return true;
}

} // namespace Platform
