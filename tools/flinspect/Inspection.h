/// \file
/// Inspection: what every command does with a walk. It reports each departure on standard error, counts them, and
/// knows the exit status that follows.

#pragma once

#include "Console.h"
#include "Walker.h"

/// Exit statuses.
enum
{
  kValid = 0,
  kInvalid = 1,
  kCouldNotRun = 2
};

class Inspection : public Receiver
{
public:
  /// Of the file that messages call \p name.
  Inspection(Console& console, std::string name);

  bool begin(const Chunk&) override { return false; }
  void data(const unsigned char*, std::size_t) override {}
  bool end(const Chunk&) override { return true; }

  /// Writes "flinspect: FILE: offset N: message" and counts.
  void departure(Severity severity, Tint64 offset, const std::string& message) override;

  Tint64 oddities() const { return fOddities; }
  Tint64 errors() const { return fErrors; }
  int status() const { return fErrors != 0 ? kInvalid : kValid; }

protected:
  Console& fConsole;
  const std::string fName;

private:
  Tint64 fOddities = 0;
  Tint64 fErrors = 0;
};
