/// \file
/// TassertAlert: shows that something is wrong in the program, and asks whether to go on.
///
/// Without a reporter the message goes to standard error. An alert never throws and never ends the program itself:
/// give it a function that does, such as std::abort.

#pragma once

#include "Foundation/Platform/Export.h"

class Treporter;

/// An alert is shown by constructing it.
///
/// \code
///   if (count < 0)
///     TassertAlert(TassertAlert::kPrecondition, "count < 0", __FILE__, __LINE__, std::abort);
/// \endcode
///
/// The reporter, if one is installed, gets the message and the location, "File: FILE Line: LINE". Unless it answers
/// Treporter::kContinue, the function given as \p after is called, if any. Without a reporter, or without memory for
/// its two texts, the line "LOCATION: MESSAGE" is written to standard error and \p after is called. Null texts are
/// empty.
class FOUNDATION_API TassertAlert
{
public:
  enum kind
  {
    kAssertion,
    kPrecondition,
    kPostcondition,
    kCreatedTwice,
    kNotCreated,
    kInvalidCase,
    kUnreachableElse,
    kMemoryManager,
    kError,
    kWarning,
    kNotImplemented
  };

  /// Bytes of a kind and a message together, beside the terminator; the rest is cut off.
  static constexpr unsigned kMessageLength = 256;

  TassertAlert(const char* file, int line, const char* message, void (*after)() = nullptr);

  /// The message is "KIND: MESSAGE", cut off at kMessageLength.
  TassertAlert(kind what, const char* message, const char* file, int line, void (*after)() = nullptr);

  /// The same two without an object.
  static void display(const char* message, const char* file, int line, void (*after)());
  static void display(const char* kind, const char* text, const char* file, int line, void (*after)());

  /// How a message of that kind begins: "Assertion failed", "Pre-condition failed" and so on.
  static const char* kindText(kind what);

  /// Shows alerts through \p reporter, which stays the caller's and must outlive its use, and returns the one before.
  /// Null, as at first, is none.
  static Treporter* setReporter(Treporter* reporter);
};
