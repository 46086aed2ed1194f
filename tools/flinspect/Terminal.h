/// \file
/// What the tool needs of the operating system and the standard library does not have: terminals, binary standard
/// streams, and tidying up on a signal. The only header of the tool whose source includes system headers.

#pragma once

#include "Foundation/Platform/Types.h"

#include <string>

/// Whether \p descriptor is a terminal that a person looks at.
bool isTerminal(int descriptor);

/// Columns of the terminal at \p descriptor; 80 when they cannot be told.
int terminalWidth(int descriptor);

/// Makes the standard streams carry bytes as they are.
void setBinaryStreams();

/// Bytes between the position of \p descriptor and its end; -1 unless it is a regular file.
Tint64 bytesLeft(int descriptor);

/// Lets SIGINT, SIGTERM and SIGHUP remove the file \p path before they end the process. There is room for a few.
void removeOnSignal(const std::string& path);

/// Takes that back.
void keepOnSignal(const std::string& path);
