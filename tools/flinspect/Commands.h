/// \file
/// The commands of flinspect. Each works on one input, returns an exit status and throws Failure when it could not run.

#pragma once

#include "Console.h"
#include "Source.h"

#include <string>
#include <vector>

/// Prints the nesting, a line for each chunk.
int showTree(Console& console, Source& source, bool inColour);

/// Reports every departure and a summary. With \p strict an oddity makes the file invalid.
int check(Console& console, Source& source, bool strict);

/// Prints the data of the plain chunk at \p path in hexadecimal.
int dump(Console& console, Source& source, const std::string& path);

/// Writes the data of plain chunks into files in \p directory: of those that \p paths lead to or that lie in groups
/// that they lead to, or of all when there are none.
int extract(Console& console, Source& source, const std::vector<std::string>& paths, const std::string& directory);

/// Prints what differs between two files, chunk by chunk: kValid when nothing does, kInvalid when something does.
int diff(Console& console, Source& a, Source& b);

/// Prints the events of a parse, as a receiver gets them.
int showEvents(Console& console, Source& source);

/// Prints everything as one JSON document.
int showJson(Console& console, Source& source);

/// Writes the file anew to \p target, "-" for standard output, as the format wants it.
int copy(Console& console, Source& source, const std::string& target);
