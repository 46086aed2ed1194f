/// \file
/// Treporter: shows a message to whoever can answer it, and tells the answer.
///
/// Derive from it to show assertion alerts (TassertAlert::setReporter) and the low-memory alert in a user interface;
/// until there is one, TlowLevelReporter writes them to standard error and TdebugReporter to a debug output.

#pragma once

#include "Foundation/Platform/Export.h"

class TdebugOutput;
class Tstring;

/// Shows messages.
///
/// The table of virtual operations is part of the interface and never reordered: the destructor (two entries with this
/// library's compilers), then reportMsg() as the third entry, then reportErrorMsg(). Texts stay the caller's and are
/// not kept. Each may be null: both are for the low-memory alert, whose reporter knows its own text.
class FOUNDATION_API Treporter
{
public:
  enum response
  {
    kStop = 0,    ///< take the usual course: an alert calls what it was given for that
    kContinue = 1 ///< the user chose to go on
  };

  virtual ~Treporter();

  /// Shows \p message with \p detail, such as where in the source it comes from.
  virtual response reportMsg(Tstring* message, Tstring* detail) = 0;

  /// The same for an error.
  virtual response reportErrorMsg(Tstring* message, Tstring* detail) = 0;

protected:
  Treporter() = default;
  Treporter(const Treporter&) = default;
  Treporter& operator=(const Treporter&) = default;
};

/// Prints messages to a debug output: a line "TITLE: MESSAGE" with the detail indented below it; errors in the manner
/// of TdebugOutput::printError. There is nobody to ask, so that each answer is kStop.
class FOUNDATION_API TdebugReporter : public Treporter
{
public:
  /// Keeps the addresses of both, which must outlive the reporter. Without a \p title (null) lines begin with the
  /// message.
  explicit TdebugReporter(TdebugOutput& output, Tstring* title = nullptr);

  response reportMsg(Tstring* message, Tstring* detail) override;
  response reportErrorMsg(Tstring* message, Tstring* detail) override;

private:
  TdebugOutput& fOutput;
  Tstring* fTitle;
};

/// Writes messages to standard error, a line each: "DETAIL: MESSAGE", errors behind "*** ERROR *** ". It allocates
/// nothing and needs no other object, so that it works while the program starts, ends or runs out of memory. Each
/// answer is kStop.
class FOUNDATION_API TlowLevelReporter : public Treporter
{
public:
  response reportMsg(Tstring* message, Tstring* detail) override;
  response reportErrorMsg(Tstring* message, Tstring* detail) override;
};
