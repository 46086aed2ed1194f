/// \file
/// Walker: one pass over a chunk file, from its first byte to its last, whatever is wrong with it.
///
/// The engine stops where a file departs from the format. This walk says what it met and reads on wherever the meaning
/// is plain. It needs 32 bytes for each level of nesting, and no other memory that grows with the file; it never
/// recurses. Departures are of two kinds:
///
///     oddity   the meaning is plain and nothing is lost: `flinspect copy` can write the file as it should be
///     error    data are missing, or the file holds what no file may hold
///
/// flinspect(1) lists them all.

#pragma once

#include "Source.h"

#include <string>
#include <vector>

enum class Severity
{
  kOddity,
  kError
};

/// One chunk, as far as it is known when it is reported.
struct Chunk
{
  Tint64 fOffset; // of the header
  TuInt32 fId;
  TuInt32 fType;      // of a group
  TuInt32 fSizeField; // as the header has it
  Tint64 fLength;     // bytes of data that are really there; known at the chunk's end only
  TuInt32 fDepth;     // 0 for a root group
  unsigned fMask;     // alignment - 1
  bool fIsGroup;
  bool fHasSize; // the size field is a length, not a mark

  /// Padding bytes that belong behind \p length bytes of data.
  unsigned padding(Tint64 length) const { return static_cast<unsigned>(-length) & fMask; }
};

/// Is told what the walk meets.
class Receiver
{
public:
  virtual ~Receiver() = default;

  /// A chunk begins; what is in a group follows. True asks for the data of a plain chunk.
  virtual bool begin(const Chunk& chunk) = 0;

  /// The next bytes of the plain chunk that was begun.
  virtual void data(const unsigned char* bytes, std::size_t count) = 0;

  /// The chunk ends, padding not yet read. False ends the walk.
  virtual bool end(const Chunk& chunk) = 0;

  virtual void departure(Severity severity, Tint64 offset, const std::string& message) = 0;
};

class Walker
{
public:
  /// Both must outlive the walk.
  Walker(Source& source, Receiver& receiver);

  /// Walks once. Throws Failure when the source does, and what the receiver throws.
  void walk();

private:
  struct Level
  {
    Tint64 fStart; // of the data, type id included
    Tint64 fEnd;   // of the data; that of the enclosing level while unknown
    TuInt32 fId;
    TuInt32 fType;
    TuInt32 fSizeField;
    unsigned char fMask;
    unsigned char fFlags;
  };

  void oddity(Tint64 offset, const std::string& message);
  void error(Tint64 offset, const std::string& message);
  Tint64 pass(Tint64 count);
  bool passStreamed(Tint64 end, Tint64& length);
  void skipPadding(const Chunk& chunk);
  bool leave(bool atMark);
  void endOfFile();

  Source& fSource;
  Receiver& fReceiver;
  std::vector<Level> fLevels; // the root of the file first
  std::vector<unsigned char> fBlock;
  bool fWantsData = false;
  bool fMayBePadded4 = false; // the chunk that just ended may have two bytes of padding more than it needs
  bool fSaidTruncated = false;
};
