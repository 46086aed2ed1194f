/// \file
/// TfileStream: a standard stream over a file, which is an entry of the file system too.
///
/// Use it where code takes a std::iostream; use Tfile for the library's own strings and for a single answer to whether
/// all was written.

#pragma once

#include "Foundation/File/Tfilesystem.h"
#include "Foundation/Platform/Export.h"

#include <fstream>
#include <ios>

/// A std::fstream under the path of a Tfilesystem.
///
/// \code
///   TfileStream points("points.txt", std::ios::out);
///   points << 1.5 << ' ' << 2.5 << '\n';
///   const bool saved = points.close();
/// \endcode
///
/// Bytes are never translated, also on Windows.
class FOUNDATION_API TfileStream : public Tfilesystem, public std::fstream
{
public:
  TfileStream();

  /// As open(); isOpen() says whether it succeeded.
  explicit TfileStream(const TfilePath& path, std::ios::openmode mode = std::ios::in | std::ios::out);

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;

  /// Closes the file. Nobody learns whether what was still buffered could be written.
  ~TfileStream() override;

  /// Opens the file \p path, with a fresh state; one that is open is closed first. False, with failbit and badbit,
  /// when that fails, \p path cannot be opened, or it is a directory.
  bool open(const TfilePath& path, std::ios::openmode mode = std::ios::in | std::ios::out);

  bool isOpen() const { return is_open(); }

  /// Closes the file if it is open. False, with badbit, when it could not be opened or closed, or a transfer has
  /// failed; input that had ended, or was no number, is no failure.
  bool close();

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};
