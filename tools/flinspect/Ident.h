/// \file
/// How chunk ids are written for people, what they mean, and paths that lead to a chunk.

#pragma once

#include "Foundation/Platform/Types.h"

#include <string>
#include <string_view>
#include <vector>

/// Whether all four characters of \p id are printable ASCII.
bool isPrintable(TuInt32 id);

/// The four characters of \p id. Those that are not printable, and '\', '/', '[' and ']', which mean something in a
/// path, appear as \xNN.
std::string idText(TuInt32 id);

/// What \p id means wherever it is used; empty for one that means something in its own kind of file only.
std::string_view meaningOf(TuInt32 id);

/// The way from the root of a file to one chunk, such as "FORM/LIST[2]/FORM/BODY": the second LIST in the first FORM,
/// and so on. Ids are written as idText() writes them; blanks at their end may be left out.
///
/// Follows a walk: each begin and end of a chunk is told to it.
class ChunkPath
{
public:
  /// Throws Failure that says what is wrong with \p text.
  explicit ChunkPath(std::string_view text);

  /// A chunk \p id begins at \p depth. True when it is the one that the path leads to.
  bool begin(TuInt32 id, TuInt32 depth);

  /// The chunk that was begun last at \p depth ends.
  void end(TuInt32 depth);

  /// Whether the walk is inside the chunk that the path leads to.
  bool isInside() const { return fFound && !fOver; }

  /// Whether the chunk was met, and whether it can't be met any more.
  bool wasFound() const { return fFound; }
  bool isOver() const { return fOver; }

  const std::string& text() const { return fText; }

private:
  struct Step
  {
    TuInt32 fId;
    TuInt32 fNumber; // from 1
  };

  std::string fText;
  std::vector<Step> fSteps;
  std::size_t fMatched = 0; // steps that lead to where the walk is
  TuInt32 fCount = 0;       // chunks met that fit the next step but for the number
  bool fFound = false;
  bool fOver = false;
};
