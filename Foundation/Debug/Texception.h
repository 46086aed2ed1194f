/// \file
/// Texception and its family: what the library throws.
///
/// The library throws when memory runs out and in the few cases that a function names; everything else is reported by
/// return value. Catch by reference, ask typeof() or the language for the class, and keep what outlives the handler
/// with cache(). Each class has one kept instance in the process, which the next cache() of the class overwrites; none
/// of this is locked.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <exception>

class Tmetaclass;

/// The base of the library's exceptions.
///
/// \code
///   const Texception* failure = nullptr;
///   try
///   {
///     load(file);
///   }
///   catch (const Texception& exception)
///   {
///     failure = exception.cache();
///   }
///   if (failure)
///     std::cerr << failure->what() << '\n'; // TfailedException: status 12
/// \endcode
///
/// Copies never throw. A class that derives from one of the family overrides all four virtual operations, what() among
/// them, and has a record of its own.
class FOUNDATION_API Texception : public std::exception
{
public:
  /// The class and what the exception holds: "CLASS" or "CLASS: MESSAGE". It lives as long as the exception.
  const char* what() const noexcept override;

  /// The record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// This object when \p type is the record of its class or of a base class; otherwise null.
  virtual void* cast(Tmetaclass* type);

  /// What the creator of \p type makes, when \p type is this class or derives from it; otherwise, and since exceptions
  /// have no creators for all of this library's, null.
  static void* construct(Tmetaclass* type);

  /// Copies this object into the kept instance of its class, unless it is that, and returns it. It is destroyed with
  /// the program's other static objects: neither ask for it nor use it in destructors that run then.
  virtual Texception* cache() const;

  /// The record; parents of other records are given as the address of this pointer.
  static Tmetaclass* fTypeid;
};

/// Memory ran out.
class FOUNDATION_API TmemoryException : public Texception
{
public:
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;
};

/// Tells of another exception that a handler has dealt with.
class FOUNDATION_API ThandledException : public Texception
{
public:
  /// Holds the kept instance of \p dealtWith (see cache()), so that \p dealtWith itself may go. Of an exception that
  /// is itself a ThandledException, what that holds.
  explicit ThandledException(const Texception& dealtWith);

  /// The exception held. It is its class's kept instance: a later one of the same class takes its place there, but not
  /// in what().
  const Texception* handled() const noexcept { return fHandled; }

  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;

private:
  const Texception* fHandled;
  char fText[320]; // what the exception said when it was handled
};

/// A resource is missing or exhausted.
class FOUNDATION_API TresourceException : public Texception
{
public:
  /// Bytes that a message takes at most, with its terminator.
  static constexpr unsigned kMessageSize = 256;

  /// The message is formatted as by printf and cut off at kMessageSize - 1 bytes. Null gives an empty one.
  explicit TresourceException(const char* format, ...) FOUNDATION_PRINTF(2, 3);

  const char* message() const noexcept { return fText + kPrefixSize; }
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;

private:
  static constexpr unsigned kPrefixSize = 20; // "TresourceException: "

  char fText[kPrefixSize + kMessageSize];
};

/// An operation failed with a status.
class FOUNDATION_API TfailedException : public Texception
{
public:
  explicit TfailedException(long code);

  Tint32 code() const noexcept { return fCode; }
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;

private:
  Tint32 fCode;
  char fText[40];
};

/// An operation on a file failed with a status, an errno. The library's own report it by return value.
class FOUNDATION_API TfileException : public Texception
{
public:
  explicit TfileException(long code);

  Tint32 code() const noexcept { return fCode; }
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;

private:
  Tint32 fCode;
  char fText[120]; // with what the system calls the status
};

/// What was asked for is not there yet.
class FOUNDATION_API TunimplementedException : public Texception
{
public:
  /// Without a message: message() is null.
  TunimplementedException() noexcept = default;

  /// Copies the message, as the copies do; without memory for it there is none.
  explicit TunimplementedException(const char* message) noexcept;
  TunimplementedException(const TunimplementedException& other) noexcept;
  TunimplementedException& operator=(const TunimplementedException& other) noexcept;
  ~TunimplementedException() override;

  const char* message() const noexcept;
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;

private:
  char* fText = nullptr; // what() with the message at its end, on the heap
};

/// Typed data cannot be converted to what was asked for.
class FOUNDATION_API TbadDataCast : public Texception
{
public:
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;
};

/// Typed data of kinds that do not go together, or an operation that its kind does not have.
class FOUNDATION_API TincompatibleData : public Texception
{
public:
  const char* what() const noexcept override;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  Texception* cache() const override;
  static Tmetaclass* fTypeid;
};
