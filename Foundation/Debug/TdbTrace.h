/// \file
/// TdbTrace: named trace channels that a developer lists and switches by level and key.
///
/// A module makes a channel for each thing it can tell about, usually as a static object, and prints to output() where
/// on() says so. In this build on() is always 0, so that compilers drop what is traced; the registry, the statuses and
/// the listings work all the same.

#pragma once

#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/String/Tstring.h"

#include <string_view>

class TdebugOutput;

/// A trace channel.
///
/// \code
///   static TdbTrace trace(3, "mesh.weld", &TdebugOutput::sCerr(), 0);
///   if (trace.on())
///     trace.output()->print("%d edges\n", count);
///   TdbTrace::sShowStatus(0, "", 1); // every channel and where it prints
/// \endcode
///
/// The static operations work on the channels that match a level and a key: those of that level or a lower one, and of
/// all levels when it is 0 or less; with that very key, and with any when it is empty or null. What they print goes to
/// standard output, a line for each channel, and they return how many matched.
///
/// An output that a channel owns is deleted with the channel or when it gets another; one that several channels own,
/// with the last of them. Channels that share it without owning it have none then. Nothing is locked.
class FOUNDATION_API TdbTrace
{
public:
  /// The key that a static operation looks for, given as a Tstring, which it shares, or a `const char*`, which must
  /// outlive the call.
  class Key
  {
  public:
    Key(const Tstring& key) noexcept // NOLINT(modernize-pass-by-value): sharing costs no more than moving
      : fShared(key)
      , fText(fShared)
    {
    }
    Key(const char* key) noexcept
      : fText(key ? key : "")
    {
    }
    std::string_view text() const noexcept { return fText; }

  private:
    Tstring fShared; // the key may be that of a channel that goes or gets another meanwhile
    std::string_view fText;
  };

  /// Registers a channel, which is off. \p output stays the caller's unless \p ownsOutput is 1, and may be null.
  /// Throws TmemoryException when the registry cannot grow; \p output stays the caller's then.
  TdbTrace(short level, const char* key, TdebugOutput* output, unsigned char ownsOutput);
  TdbTrace(short level, const Tstring& key, TdebugOutput* output, unsigned char ownsOutput);
  ~TdbTrace();
  TdbTrace(const TdbTrace&) = delete;
  TdbTrace& operator=(const TdbTrace&) = delete;

  short level() const noexcept { return fLevel; }
  const Tstring& key() const noexcept { return fKey; }
  TdebugOutput* output() const noexcept { return fOutput; }

  /// Whether the channel is switched on (1 or 0).
  unsigned char status() const noexcept { return fStatus; }

  /// Whether to trace: 0 in this build, whatever the status.
  unsigned char on() const noexcept { return 0; }

  void setLevel(short level) noexcept { fLevel = level; }
  void setKey(const Tstring& key) noexcept { fKey = key; }
  void setOutput(TdebugOutput* output, unsigned char ownsOutput);

  /// Order: by key, byte by byte as unsigned values, then by level.
  friend bool operator==(const TdbTrace& left, const TdbTrace& right) noexcept { return compare(left, right) == 0; }
  friend bool operator!=(const TdbTrace& left, const TdbTrace& right) noexcept { return compare(left, right) != 0; }
  friend bool operator<(const TdbTrace& left, const TdbTrace& right) noexcept { return compare(left, right) < 0; }
  friend bool operator<=(const TdbTrace& left, const TdbTrace& right) noexcept { return compare(left, right) <= 0; }
  friend bool operator>(const TdbTrace& left, const TdbTrace& right) noexcept { return compare(left, right) > 0; }
  friend bool operator>=(const TdbTrace& left, const TdbTrace& right) noexcept { return compare(left, right) >= 0; }

  /// Creates the registry, as the first channel does.
  static void sInitialize();

  /// Appends the channels that match to \p out, in order of construction. Throws TmemoryException when that cannot
  /// grow.
  static long sGetMatches(TdbTraceArray& out, short level, const Key& key);

  /// Switches channels on (1) or off (0). A line "Changed status of LEVEL KEY from FALSE to TRUE" tells of each change.
  static long sSetStatus(short level, const Key& key, unsigned char on);

  /// Gives channels another output, null for none. Without a match \p output stays the caller's, also with
  /// \p ownsOutput 1. A line "Changed output of LEVEL KEY from NAME to NAME" tells of each.
  static long sSetOutput(short level, const Key& key, TdebugOutput* output, unsigned char ownsOutput);

  /// Prints how many channels match, and lists those that are on and those that are off, each with the name of its
  /// output when \p withOutputs is 1.
  static long sShowStatus(short level, const Key& key, unsigned char withOutputs);

  /// Marks the place in the output of each channel; see TdebugOutput::printMark.
  static long sShowMark(short level, const Key& key, const char* text);
  static long sPrintMarker(short level, const Key& key, const Tstring& text);

  /// Does what the environment variable VEXA_DEBUG_KEYWORDS says now. Keywords are separated by blanks or commas:
  ///
  ///     on[:LEVEL[:KEY]]    switches channels on; without LEVEL those of all levels, without KEY those of any key
  ///     off[:LEVEL[:KEY]]   switches them off
  ///     show[:LEVEL[:KEY]]  lists them, with their outputs
  ///     mark[:TEXT]         marks the place in the outputs of all channels
  ///
  /// as in "on:3:mesh.weld,off::arena,show". Any other keyword is reported to standard error and skipped.
  static void sSignalHandler();

  /// Lets the signal SIGUSR2, from now on, have sSignalHandler() called at the next safe point: the next of the static
  /// operations with a key, before it does its own work, or sCheckSignal(). A signal that comes while one is obeyed
  /// waits. Returns 1, or 0 where there is no such signal.
  static unsigned char sInstallSignalHandler();

  /// A safe point for programs that call none of the others, as in their main loop. Costs a test when no signal came.
  static void sCheckSignal();

private:
  static int compare(const TdbTrace& left, const TdbTrace& right) noexcept;
  bool matches(short level, const Key& key) const noexcept;
  void releaseOutput();

  Tstring fKey;
  TdebugOutput* fOutput;
  short fLevel;
  unsigned char fStatus = 0;
  unsigned char fOwnsOutput;
};
