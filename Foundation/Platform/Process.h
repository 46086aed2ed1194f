/// \file
/// Child processes at the end of a pipe, and whether a host exists. Internal to the library.

#pragma once

#include <cstddef>
#include <cstdint>

namespace Platform {

/// A child to be waited for; 0 stands for none. On Windows a handle.
using Process = std::intptr_t;

enum class Ending
{
  success,     // exit status 0
  failure,     // another exit status, or one that the system does not tell
  killed,      // a signal
  brokenOutput // the signal for a pipe without a reader, or the shell's report of it
};

/// Whether the system tells an ending with brokenOutput from one with failure.
extern const bool kTellsBrokenOutput;

/// A pipe whose ends no child inherits: [0] to read, [1] to write. False with errno.
bool openPipe(int ends[2]);

/// Starts the program at the path argv[0] with \p argv (null-terminated), without a shell. \p input and \p output
/// become its standard input and output, -1 leaves the caller's; it inherits no other descriptor of the library's.
/// Returns 0 with errno on failure.
Process startProgram(const char* const* argv, int input, int output);

/// The same for a command line that a shell interprets.
Process startShell(const char* command, int input, int output);

/// Waits for the child to end and releases it.
Ending waitFor(Process child);

/// Looks for the program \p name in the directories of \p path (separated as in the variable PATH; an empty one is the
/// current directory) and writes where it is to \p result. False when it is nowhere, or \p size is too small.
bool findProgram(const char* name, const char* path, char* result, std::size_t size);

/// What separates the directories of a path, and where the system keeps the libraries' own programs.
extern const char kPathSeparator;
extern const char* const kLibraryDirectories;

/// Whether the name of a host resolves to an address.
bool hostResolves(const char* host);

} // namespace Platform
