/// \file
/// TdebugOutput: indented diagnostic text to a stream, or to a debugger's dump context.
///
/// Use it for dumps and traces that people read; every line is flushed, so that nothing is lost in a crash and no line
/// is cheap. The trap: indentation is put before each print call, not after each newline, so print whole lines, or
/// continue one with printNoIndent() or after skipNextIndent().

#pragma once

#include "Foundation/Debug/CDumpContext.h"
#include "Foundation/Platform/Export.h"

#include <cstdarg>
#include <iosfwd>

/// The base of debug outputs.
///
/// \code
///   TdebugOutput& out = TdebugOutput::sCout();
///   out.beginSection("Arena %s", name); // Arena mesh
///   out.print("%d pages\n", pages);     // {
///   out.endSection();                   //    3 pages
/// \endcode                              // }
///
/// Formats are those of printf. A text of any length comes out whole; when memory for a long one runs out, its first
/// 511 bytes do. What a format cannot express (a wide character that is none) comes out as the format itself. Null
/// formats are empty. Every operation ends in reportString(const char*): override that to send the text elsewhere.
class FOUNDATION_API TdebugOutput
{
public:
  enum
  {
    kSpacesPerIndent = 3,
    kMostIndents = 10, ///< deeper levels are shown at this depth
    kNameSize = 256    ///< of the buffer for getName(), in bytes
  };

  /// Prints to \p stream or \p context, which must outlive the output.
  explicit TdebugOutput(std::ostream& stream, int indent = 0);
  explicit TdebugOutput(CDumpContext& context, int indent = 0);
  TdebugOutput(const TdebugOutput&) = delete;
  TdebugOutput& operator=(const TdebugOutput&) = delete;

  /// The outputs on standard error and on standard output; made at the first call, never destroyed.
  static TdebugOutput& sCerr();
  static TdebugOutput& sCout();

  virtual ~TdebugOutput();

  /// Prints the title on a line and "{" on the next, and indents by one level more.
  virtual void beginSection(const char* format, ...) FOUNDATION_PRINTF(2, 3);
  virtual void vbeginSection(const char* format, std::va_list arguments) FOUNDATION_PRINTF(2, 0);

  /// Goes back by one level and prints "}" on a line.
  virtual void endSection();

  /// Prints a line that stands out: a rule of 78 '=' when \p text is null, otherwise \p text between two pieces of it,
  /// for about the same width; without a rule where \p text leaves no room for one.
  virtual void printMark(const char* text);

  /// Prints without indentation, which leaves skipNextIndent() for the next print.
  virtual void printNoIndent(const char* format, ...) FOUNDATION_PRINTF(2, 3);
  virtual void vprintNoIndent(const char* format, std::va_list arguments) FOUNDATION_PRINTF(2, 0);

  /// Prints behind the indentation.
  virtual void print(const char* format, ...) FOUNDATION_PRINTF(2, 3);
  virtual void vprint(const char* format, std::va_list arguments) FOUNDATION_PRINTF(2, 0);

  /// Prints a line that begins with "*** ERROR *** ". The format needs no newline.
  virtual void printError(const char* format, ...) FOUNDATION_PRINTF(2, 3);
  virtual void vprintError(const char* format, std::va_list arguments) FOUNDATION_PRINTF(2, 0);

  /// Prints \p text on a line, one level deeper. Null is nothing.
  void printDetail(const char* text);

  /// Changes the level by \p delta, or to \p level. Levels below 0 are kept and show as 0.
  virtual void setIndent(int delta);
  virtual void setIndentAbsolute(int level);

  /// Switches indentation off (0) or on again; levels go on being counted.
  virtual void setUseIndent(unsigned char use);

  /// Lets the next print go without indentation, to continue a line.
  virtual void skipNextIndent();

  /// Flushes the target.
  virtual void reportString();

  /// Writes \p text as it is and flushes. Null is nothing.
  virtual void reportString(const char* text);

  /// Writes what the target is to \p buffer of kNameSize bytes: "stderr" and "stdout" for the two standard outputs, the
  /// name of a file (cut off where it is longer), "stream" or "dump context".
  virtual void getName(char* buffer);

protected:
  /// For outputs with a stream of their own, which call setTarget() once it is constructed. Until then text is dropped.
  TdebugOutput() = default;
  void setTarget(std::ostream& stream, int indent);

private:
  class Line;

  std::ostream* fStream = nullptr;
  CDumpContext* fContext = nullptr; // in use while there is no stream
  long long fIndent = 0;            // so wide that no program counts over its end
  bool fUseIndent = true;
  bool fSkipNextIndent = false;
};
