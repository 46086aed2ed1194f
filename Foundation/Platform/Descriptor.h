/// \file
/// Files by descriptor, and the terminal and user-database services beside them. Internal to the library.
///
/// Thin: errors stay in errno, nothing is buffered, offsets have 64 bits. On Windows a descriptor is the runtime's.

#pragma once

#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <cstdio>

namespace Platform {

enum OpenFlags : unsigned
{
  kOpenRead = 1,
  kOpenWrite = 2,
  kOpenCreate = 4,    // creates what is missing, empties what exists
  kOpenExclusive = 8, // with kOpenCreate: fails with EEXIST on what exists
  kOpenAppend = 16,   // creates what is missing, every write goes to the end
};

/// Opens \p path, never inherited by child processes and never in the place of a standard stream, in binary. -1 with
/// errno; EISDIR for a directory.
int openFile(const char* path, unsigned flags);

/// A nameless file to read and write, gone with its descriptor; otherwise the same.
int openTemporary();

/// Moves \p descriptor, which it may close for that, out of the places of the standard streams. False with errno and
/// -1 in its place.
bool aboveStandard(int& descriptor);

/// What a descriptor leads to.
struct Examination
{
  enum Kind
  {
    file,   // regular: it has a size and a position
    stream, // fifo, character device or nothing known: strictly forwards
    other   // directory and the like
  };
  Kind kind = other;
  Tint64 size = 0;      // of a file
  bool appends = false; // every write goes to the end, wherever the position is
};
bool examine(int descriptor, Examination& result);

/// Reads or writes at least one byte of \p count; 0 is the end of input; -1 with errno. Interrupted calls are resumed,
/// descriptors that do not block are waited for.
std::ptrdiff_t readSome(int descriptor, void* buffer, std::size_t count);
std::ptrdiff_t writeSome(int descriptor, const void* bytes, std::size_t count);

/// Call it when a transfer by other means failed with errno: waits for what it lacked and says whether to try again.
bool worthAnotherTry(int descriptor, bool writing);

/// Sets the offset (whence as in fseek) and returns it; -1 with errno, ESPIPE where there is none.
Tint64 seekTo(int descriptor, Tint64 offset, int whence);

bool closeFile(int descriptor);
bool removeFile(const char* path);

/// The same for a stream of the runtime.
int descriptorOf(std::FILE* stream);
Tint64 streamOffset(std::FILE* stream);
bool seekStream(std::FILE* stream, Tint64 offset);

/// Switches the translation of line ends off and returns the mode to restore. Nothing to do but on Windows.
int setBinary(int descriptor);
void restoreMode(int descriptor, int mode);

/// While one of these lives, writing to a pipe that nobody reads gives this thread EPIPE instead of a signal.
class PipeSignalHold
{
public:
  PipeSignalHold();
  ~PipeSignalHold();
  PipeSignalHold(const PipeSignalHold&) = delete;
  PipeSignalHold& operator=(const PipeSignalHold&) = delete;

private:
  bool fHeld = false;
  bool fWasPending = false;
};

/// Numbers as the system gives them; -1 (or null) with errno, ENOSYS where the platform has no such service.
int duplicate(int descriptor);
int duplicateTo(int descriptor, int target);
int control(int descriptor, int command, long argument);
int synchronise(int descriptor);
bool isTerminal(int descriptor);
const char* terminalName(int descriptor);
int drainTerminal(int descriptor);
int terminalGroup(int descriptor);
void rewindUsers();
void closeUsers();
void rewindGroups();
void closeGroups();
void closeLog();

bool setEnvironment(const char* name, const char* value);

} // namespace Platform
