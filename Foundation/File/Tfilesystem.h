/// \file
/// Tfilesystem: what stands under a path in the file system.
///
/// Use it to ask about, rename and remove files by their path. Nothing is kept but the path: each question goes to the
/// system, and what one says may have changed at the next. No call throws; a status is 0 or an errno.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/TfilePath.h"
#include "Foundation/Time/Ttime.h"

#include <iosfwd>

class Tmetaclass;

/// An entry of the file system, there or not.
///
/// \code
///   Tfilesystem scene("scenes/arm.iff");
///   if (scene.isFile() && scene.size() == 0)
///     scene.remove();
/// \endcode
///
/// Questions follow symbolic links: one that leads nowhere does not exist. A path with a zero in it leads nowhere. On
/// Windows paths are in the system's code page, may have '\\' for '/', and what the library finds has '/'.
class FOUNDATION_API Tfilesystem
{
public:
  /// An empty path leads nowhere.
  Tfilesystem() noexcept = default;
  explicit Tfilesystem(TfilePath path) noexcept;

  Tfilesystem(const Tfilesystem&) = default;
  Tfilesystem(Tfilesystem&&) noexcept = default;
  Tfilesystem& operator=(const Tfilesystem&) = default;
  Tfilesystem& operator=(Tfilesystem&&) noexcept = default;

  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);
  virtual ~Tfilesystem();

  const TfilePath& path() const noexcept { return fPath; }
  void setPath(const TfilePath& path) noexcept { fPath = path; }

  /// Also false where the system does not let us look.
  bool exists() const noexcept;
  bool isDirectory() const noexcept;
  bool isFile() const noexcept; ///< a regular one

  /// Bytes in the file; -1 for what is none.
  Tint64 size() const noexcept;

  /// When the contents changed last; 0 when there is nothing.
  Ttime modificationTime() const noexcept;

  /// Removes the file, the link itself or the empty directory.
  long remove() const noexcept;

  /// Moves the entry to \p path, which is the object's path then. A file takes the place of a file that is there. On
  /// failure nothing changes; EXDEV when it is on another volume.
  long rename(const TfilePath& path) noexcept;

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  /// \p path for the system; "", which leads nowhere, for one with a zero in it.
  static const char* systemPath(const TfilePath& path) noexcept;

  TfilePath fPath;
};

FOUNDATION_API std::ostream& operator<<(std::ostream& out, const Tfilesystem& entry);
