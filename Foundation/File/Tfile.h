/// \file
/// Tfile: a file that is read or written from its beginning to its end, or extended, through a buffer.
///
/// Use it for text and for bytes that come one behind the other. No call throws: each says whether it did what was
/// asked, and the first failure is kept in error() and ends all transfer, so that a writer need look only at what
/// close() returns. The trap: what is written is in the file only when flush() or close() has said so.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/String/Tstring.h"

#include <cstddef>
#include <memory>

class Tmetaclass;

/// A file opened by name.
///
/// \code
///   Tfile notes("notes.txt", "w");
///   notes.put("two\nlines\n");
///   if (!notes.close())
///     std::cerr << notes.name() << ": " << std::strerror(notes.error()) << '\n';
///
///   Tstring line;
///   for (Tfile file("notes.txt", "r"); file.readLine(line);)
///     std::cout << line << '\n';
/// \endcode
///
/// Bytes are never translated: a line ends as it was written, also on Windows, where names are in the system's code
/// page. Offsets have 64 bits. Child processes do not inherit the file.
class FOUNDATION_API Tfile
{
public:
  /// Not open, without a name.
  Tfile() noexcept;

  /// As open(); isOpen() says whether it succeeded.
  Tfile(const Tstring& name, const char* mode) noexcept;

  /// The file changes hands; \p other is left as a new one.
  Tfile(Tfile&& other) noexcept;
  Tfile& operator=(Tfile&& other) noexcept;

  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);

  /// Closes the file. Nobody learns whether what was still buffered could be written.
  virtual ~Tfile();

  /// Opens the file \p name to read it ("r"), to write it anew ("w"), or to write behind what it holds ("a"); the last
  /// two make a missing one. A 'b' or 't' behind that letter means nothing. A file that is open is closed first; when
  /// that fails, nothing is opened. False otherwise with error(): EINVAL for another mode or a name with a zero in it,
  /// EISDIR for what has no contents, ENOMEM, or what the system says. A pipe is waited for.
  bool open(const Tstring& name, const char* mode) noexcept;

  bool isOpen() const noexcept { return fDescriptor >= 0; }

  /// The name given last, also when that failed or the file has been closed.
  const Tstring& name() const noexcept { return fName; }

  /// The errno of the first failure since the file was opened, 0 without one. Reading a file that is open for writing,
  /// or is not open, is EBADF, and so is the opposite.
  int error() const noexcept { return fError; }

  // Writing. False when this or anything before has failed; what came before that is written all the same.

  bool write(const void* bytes, std::size_t count) noexcept;
  bool put(const char* text) noexcept; ///< null stands for ""
  bool put(const Tstring& text) noexcept { return write(text.asC(), text.length()); }

  /// Gives what is buffered to the system.
  bool flush() noexcept;

  // Reading. A failure reads like the end; error() tells them apart.

  /// Returns how many bytes it put into \p buffer: fewer than \p count at the end only.
  std::size_t read(void* buffer, std::size_t count) noexcept;

  /// Puts the next line without the "\n" or "\r\n" at its end into \p line; the last line may have neither. False, and
  /// an empty \p line, when there is none. A line that there is no memory for is ENOMEM.
  bool readLine(Tstring& line) noexcept;

  /// Puts all that is left into \p text. False, and an empty \p text, after a failure, ENOMEM when it does not fit.
  bool readAll(Tstring& text) noexcept;

  /// Whether nothing is left to read; a file that cannot be read is at its end. May wait for input. What is appended
  /// to the file after the end was met is not seen.
  bool isAtEnd() noexcept;

  /// Closes the file if it is open, and says whether all went well since it was opened.
  bool close() noexcept;

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  void swap(Tfile& other) noexcept;
  bool fail(int error) noexcept;
  bool drain(const char* bytes, std::size_t count) noexcept;
  bool fill() noexcept;
  bool take(Tstring& text, std::size_t count) noexcept;

  Tstring fName;
  std::unique_ptr<char[]> fBuffer; // while the file is open
  unsigned fNext = 0;              // the bytes of the buffer from here
  unsigned fEnd = 0;               // to here are still to be read, or to be written
  int fDescriptor = -1;
  int fError = 0;
  bool fWrites = false;
  bool fEnded = false; // the system has nothing more to read
};
