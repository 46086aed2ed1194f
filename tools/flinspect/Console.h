/// \file
/// Console: the tool's standard output, its messages and its progress bar.
///
/// The three share a terminal, so one class keeps them apart: a message comes after the output that precedes it and
/// wipes the bar. Output is gathered in blocks of 64 KiB. What is put is written as it is; text that comes from a file
/// or a name goes through printable() or idText() first, so that no control byte reaches a terminal.

#pragma once

#include "Foundation/Platform/Types.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>

/// The tool cannot go on: exit status 2. what() is the text behind "flinspect: ".
class Failure : public std::runtime_error
{
public:
  Failure(std::string_view subject, std::string_view text);
};

/// Standard output takes no more: other inputs need not be tried.
class OutputFailure : public Failure
{
public:
  using Failure::Failure;
};

class Console
{
public:
  Console();

  void put(std::string_view text);

  /// Puts \p number in decimal, right-aligned in \p width columns.
  void put(Tint64 number, int width);

  /// Hands what was put to the system. Throws OutputFailure when standard output does not take it; put() does too.
  void flush();

  /// Writes "flinspect: \p text" to standard error, as a line.
  void complain(std::string_view text);

  /// Lets progress() draw. \p quiet: the command puts nothing before its end, so that a bar does not disturb a
  /// terminal that shows the output too.
  void allowProgress(bool quiet);

  /// Says that \p done of \p total bytes (negative: unknown) are worked through. Draws at most ten times a second, and
  /// not before half a second of work.
  void progress(Tint64 done, Tint64 total);

  /// Wipes the bar.
  void endProgress();

private:
  using Clock = std::chrono::steady_clock;

  std::string fBuffer;
  bool fProgressAllowed = false;
  bool fBarShown = false;
  Clock::time_point fNextBar;
};

/// \p text with control characters as \xNN.
std::string printable(std::string_view text);
