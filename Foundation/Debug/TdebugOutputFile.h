/// \file
/// TdebugOutputFile: debug output to a file that appears with the first line.

#pragma once

#include "Foundation/Debug/TdebugOutput.h"

#include <fstream>

/// A debug output to a file, which is opened when something is printed and stays open until close() or destruction.
///
/// The first opening empties the file; one after a close() appends. While the file cannot be opened, output goes
/// nowhere and each print tries again. What a full disk does not take is written when it has room again, or lost.
class FOUNDATION_API TdebugOutputFile : public TdebugOutput
{
public:
  /// Keeps the address of \p fileName, which must outlive the output. Nothing is opened yet.
  explicit TdebugOutputFile(const char* fileName, int indent = 0);
  ~TdebugOutputFile() override;

  /// Opens the file unless it is open. Returns whether it is open now (1 or 0).
  unsigned char open();

  /// Closes the file. Nothing happens when it is not open.
  void close();

  void reportString() override;
  void reportString(const char* text) override;
  void getName(char* buffer) override;

private:
  enum State
  {
    kNotOpened,
    kOpen,
    kAppendNext // closed; the next opening appends
  };

  const char* fFileName;
  std::ofstream fFile;
  State fState = kNotOpened;
};
