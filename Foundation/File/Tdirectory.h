/// \file
/// Tdirectory: a directory by path, and the directories in which the system wants a user's files.
///
/// Each of the special ones knows its path, as the environment says when the object is made; docs/environment.md has
/// the table. Making the object makes no directory: call create() before you write. The trap: where the environment
/// says nothing the path is empty, and create() gives ENOENT.

#pragma once

#include "Foundation/Container/StringArrays.h"
#include "Foundation/File/Tfilesystem.h"
#include "Foundation/Platform/Export.h"

/// A directory, there or not.
///
/// \code
///   const TuserScriptDirectory scripts;
///   TstringArray names;
///   if (scripts.list(names) == 0)
///     for (const Tstring& name : names)
///       run(scripts.path() / name);
/// \endcode
class FOUNDATION_API Tdirectory : public Tfilesystem
{
public:
  using Tfilesystem::Tfilesystem;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;

  /// The process's current directory, with an absolute path; an empty one when it is gone.
  static Tdirectory current() noexcept;

  /// Makes the directory and those above it that are missing. 0 also when it is there already; otherwise what stopped
  /// it, with those made that came before.
  long create() const noexcept;

  /// Makes \p names the names of the entries, in the order of their bytes, without "." and "..". On failure, ENOMEM
  /// among them, \p names is empty.
  long list(TstringArray& names) const noexcept;

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// Where the program that is running lies.
class FOUNDATION_API TappDirectory : public Tdirectory
{
public:
  TappDirectory() noexcept;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// For files that nobody misses.
class FOUNDATION_API TtemporaryDirectory : public Tdirectory
{
public:
  TtemporaryDirectory() noexcept;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// For the user's settings.
class FOUNDATION_API TpreferencesDirectory : public Tdirectory
{
public:
  TpreferencesDirectory() noexcept;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// For the user's own icons and pictures of the interface.
class FOUNDATION_API TuserBitmapsDirectory : public Tdirectory
{
public:
  TuserBitmapsDirectory() noexcept;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// For the user's own scripts.
class FOUNDATION_API TuserScriptDirectory : public Tdirectory
{
public:
  TuserScriptDirectory() noexcept;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// For the user's own shelves of tools.
class FOUNDATION_API TuserShelfDirectory : public Tdirectory
{
public:
  TuserShelfDirectory() noexcept;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};
