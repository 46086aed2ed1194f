#include "Foundation/Platform/Process.h"

#include "Foundation/Platform/Descriptor.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace Platform {

const char kPathSeparator = ':';
const bool kTellsBrokenOutput = true;
const char* const kLibraryDirectories = "/usr/local/lib/flib:/usr/lib/flib";

namespace {

// What a shell's exit status is when its command died of a pipe without a reader.
constexpr int kShellPipeStatus = 128 + SIGPIPE;

} // namespace

bool openPipe(int ends[2])
{
  if (pipe2(ends, O_CLOEXEC) != 0)
    return false;
  if (aboveStandard(ends[0]) && aboveStandard(ends[1]))
    return true;
  const int savedError = errno;
  if (ends[0] >= 0)
    close(ends[0]);
  if (ends[1] >= 0)
    close(ends[1]);
  errno = savedError;
  return false;
}

Process startProgram(const char* const* argv, int input, int output)
{
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  if ((errno = posix_spawn_file_actions_init(&actions)) != 0)
    return 0;
  if ((errno = posix_spawnattr_init(&attributes)) != 0)
  {
    posix_spawn_file_actions_destroy(&actions);
    return 0;
  }
  // The child dies of a pipe without a reader even where its parent ignores that: so its ending can be told from
  // other failures.
  sigset_t pipeSignal, mask;
  sigemptyset(&pipeSignal);
  sigaddset(&pipeSignal, SIGPIPE);
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  sigdelset(&mask, SIGPIPE);

  pid_t child = 0;
  int error = posix_spawnattr_setsigdefault(&attributes, &pipeSignal);
  if (error == 0)
    error = posix_spawnattr_setsigmask(&attributes, &mask);
  if (error == 0)
    error = posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  if (error == 0 && input >= 0)
    error = posix_spawn_file_actions_adddup2(&actions, input, 0);
  if (error == 0 && output >= 0)
    error = posix_spawn_file_actions_adddup2(&actions, output, 1);
  if (error == 0)
    error = posix_spawn(&child, argv[0], &actions, &attributes, const_cast<char* const*>(argv), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  errno = error;
  return error == 0 ? child : 0;
}

Process startShell(const char* command, int input, int output)
{
  const char* const argv[] = {"/bin/sh", "-c", "--", command, nullptr};
  return startProgram(argv, input, output);
}

Ending waitFor(Process child)
{
  int status = 0;
  pid_t ended;
  do
    ended = waitpid(pid_t(child), &status, 0);
  while (ended < 0 && errno == EINTR);
  if (ended < 0) // the program ignores the deaths of children: nobody can tell how this one went
    return Ending::failure;
  if (WIFSIGNALED(status))
    return WTERMSIG(status) == SIGPIPE ? Ending::brokenOutput : Ending::killed;
  if (WEXITSTATUS(status) == kShellPipeStatus)
    return Ending::brokenOutput;
  return WEXITSTATUS(status) == 0 ? Ending::success : Ending::failure;
}

bool findProgram(const char* name, const char* path, char* result, std::size_t size)
{
  for (const char* folder = path; folder;)
  {
    const std::size_t length = std::strcspn(folder, ":");
    const int total = length == 0 ? std::snprintf(result, size, "./%s", name)
                                  : std::snprintf(result, size, "%.*s/%s", int(length), folder, name);
    struct stat status;
    if (total > 0 && std::size_t(total) < size && stat(result, &status) == 0 && S_ISREG(status.st_mode) &&
        access(result, X_OK) == 0)
      return true;
    folder = folder[length] ? folder + length + 1 : nullptr;
  }
  return false;
}

bool hostResolves(const char* host)
{
  addrinfo* found = nullptr;
  if (getaddrinfo(host, nullptr, nullptr, &found) != 0)
    return false;
  freeaddrinfo(found);
  return true;
}

} // namespace Platform
