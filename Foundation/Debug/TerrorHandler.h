/// \file
/// TerrorHandler: where the library, and whoever likes, reports errors and warnings that a program survives.
///
/// A program makes one and installs an implementation that shows or logs reports; modules report to
/// TerrorHandler::sInstalled(). Nothing is locked.

#pragma once

#include "Foundation/Platform/Export.h"

class TdebugOutput;
class Tstring;

/// What a TerrorHandler does with its reports. The order of the virtual operations, the destructor first, is part of
/// the interface. Texts stay the caller's; \p detail may be null.
class FOUNDATION_API TerrorHandlerImplementation
{
public:
  virtual ~TerrorHandlerImplementation();

  virtual void reportWarning(const Tstring* message, const Tstring* detail) = 0;
  virtual void reportError(const Tstring* message, const Tstring* detail) = 0;

  /// Switches reporting on (1) or off (0) and returns how it was.
  virtual unsigned char setLogging(unsigned char on) = 0;

protected:
  TerrorHandlerImplementation() = default;
  TerrorHandlerImplementation(const TerrorHandlerImplementation&) = default;
  TerrorHandlerImplementation& operator=(const TerrorHandlerImplementation&) = default;
};

/// Prints reports to a debug output: "Warning: MESSAGE" and, as TdebugOutput::printError does, errors; a detail is
/// indented below. Logging is on at first.
class FOUNDATION_API TconsoleErrorLog : public TerrorHandlerImplementation
{
public:
  /// Prints to standard error, or to \p output, which must outlive the log.
  TconsoleErrorLog();
  explicit TconsoleErrorLog(TdebugOutput& output);

  void reportWarning(const Tstring* message, const Tstring* detail) override;
  void reportError(const Tstring* message, const Tstring* detail) override;
  unsigned char setLogging(unsigned char on) override;

private:
  TdebugOutput& fOutput;
  unsigned char fLogging = 1;
};

/// The process-wide error handler while it lives: the one constructed last counts, and once that is destroyed there is
/// none until the next one is constructed.
///
/// \code
///   TconsoleErrorLog log;
///   TerrorHandler handler;
///   handler.setImplementation(&log);
///   TerrorHandler::sInstalled()->reportWarning("No textures found");
/// \endcode
class FOUNDATION_API TerrorHandler
{
public:
  TerrorHandler() noexcept;
  ~TerrorHandler();
  TerrorHandler(const TerrorHandler&) = delete;
  TerrorHandler& operator=(const TerrorHandler&) = delete;

  /// The process-wide handler, or null.
  static TerrorHandler* sInstalled() noexcept;

  /// Hands reports to \p implementation, which must outlive its use, and returns the one before. With null, as at
  /// first, reports go nowhere.
  TerrorHandlerImplementation* setImplementation(TerrorHandlerImplementation* implementation) noexcept;

  void reportError(const Tstring& message);
  void reportWarning(const Tstring& message);

  /// Switches the implementation's reporting on or off and returns how it was; 0 without an implementation.
  unsigned char setLogging(unsigned char on);

private:
  TerrorHandlerImplementation* fImplementation = nullptr;
};
