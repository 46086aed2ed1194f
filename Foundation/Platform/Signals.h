/// \file
/// Fatal signals. Internal to the library.

#pragma once

namespace Platform {

/// Lets \p note be called, in the signal's handler, for each signal that would end the process. It returns whether
/// the program may go on; after a fault it cannot, and the signal takes its usual course.
void catchFatalSignals(bool (*note)(int signal));

/// Whether the signal asks the program to stop, so that it can go on if it likes; a fault otherwise.
bool isRequest(int signal);

/// A short name: "SIGSEGV"; "signal" for others. Safe in a handler.
const char* signalName(int signal);

/// Writes to standard error, safely in a handler.
void writeError(const char* text);

/// Installs \p handler for good, interrupted system calls go on; \p previous receives what was there.
bool installHandler(int signal, void (*handler)(int), void (**previous)(int));

} // namespace Platform
