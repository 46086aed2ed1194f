/// \file
/// TstackTrace: prints which functions are being called, for messages about what should not have happened.

#pragma once

#include "Foundation/Platform/Export.h"

#include <cstdio>

/// The functions under way in the calling thread.
class FOUNDATION_API TstackTrace
{
public:
  /// The calls shown at most; of a deeper stack the innermost are.
  static constexpr int kMostFrames = 100;

  /// Writes a line for each call to \p stream, the innermost first, leaving out the first \p skip, and flushes:
  ///
  ///     #0 Tmesh::weld(double) at Mesh/Tmesh.cpp:120
  ///     #1 run at ../bin/modeller+0x4f31
  ///
  /// with the source line where the module has debug information, or else the place in the module. Calls that the
  /// compiler put in line have lines of their own where that is known.
  ///
  /// Returns the number of lines; 0, with nothing written, for a null stream and while the environment variable
  /// VEXA_NO_STACK_TRACE is set. It works in the handler of a signal too, unless that struck in the middle of malloc()
  /// or of output to the same stream; an alternate stack for the handler should have 64 KiB. Return addresses that were
  /// overwritten may crash it. The first trace reads the debug information, which takes time and megabytes, and so does
  /// one from a module that was loaded later.
  static int print(std::FILE* stream, int skip = 0);

  /// Sets the process-wide flag that gprofDisabled() tells to the contrary of \p enable: whether a host that profiles
  /// should leave that.
  static void gprofEnable(unsigned char enable);
  static unsigned char gprofDisabled();
};
