/// \file
/// Source: the bytes of one input file, through the engine, forwards and once more from the start.
///
/// The walk takes raw bytes, not the engine's chunks: it has to go on where the engine rightly stops. Everything else
/// the engine gives: name forms, filters, pipes, push-back, large files. What cannot seek is read, never sought.

#pragma once

#include "Console.h"

#include "Foundation/Iff/FL.h"

#include <functional>
#include <memory>
#include <string>

class Source
{
public:
  /// Opens \p name: "-" is standard input; otherwise a path, or with \p openForms any form of a name that FLopen knows
  /// but "mem:". Throws Failure, as everything here does when the system or a filter fails. \p console shows how far
  /// the reading is.
  Source(Console& console, const std::string& name, bool openForms);

  /// Reads \p count bytes; fewer only at the end of the file.
  std::size_t read(void* buffer, std::size_t count);

  /// Puts the last \p count bytes back.
  void unread(const void* bytes, std::size_t count);

  /// Moves forward by \p count bytes, or to the end of the file; returns by how many.
  Tint64 skip(Tint64 count);

  /// Bytes from the start of the file.
  Tint64 position() const { return fPosition; }

  /// Bytes of a file that can seek; -1 when that is not known.
  Tint64 size() const { return fSize; }

  /// Pretends that \p count bytes more were there: for padding that the end of the file lacks.
  void pretend(Tint64 count) { fPosition += count; }

  /// Back to the start. What cannot seek must have been spooled.
  void rewind();

  /// Copies what cannot seek into a temporary file, to be read from there.
  void spool();

  /// Goes on, from the start, with what \p write puts into a temporary file of that path.
  void replace(const std::function<void(const std::string& path, _FLfile* file)>& write);

  /// Gives the file away, which stands at its start as long as nothing was read. It must be closed before this object
  /// goes: then a temporary file is removed.
  _FLfile* release() { return fFile.release(); }

  /// Ends the reading. A filter that failed is known only now.
  void close();

  const std::string& name() const { return fName; }

private:
  struct Close
  {
    void operator()(_FLfile* file) const { FLclose(file); }
  };

  void examine();
  [[noreturn]] void fail(int code) const;

  Console& fConsole;
  std::string fName; // as messages show it
  std::unique_ptr<_FLfile, Close> fTemporary; // what is read, as it was written; closing it removes the file
  std::unique_ptr<_FLfile, Close> fFile;
  bool fSeeks = false;
  Tint64 fSize = -1; // of a file that can seek; -1 when not known
  Tint64 fPosition = 0;
  Tint64 fNextProgress = 0;
};

/// An engine file opened for writing under a name that did not exist: \p stem with a number behind it. \p path receives
/// it. Throws Failure.
_FLfile* createBeside(const std::string& stem, std::string& path);
