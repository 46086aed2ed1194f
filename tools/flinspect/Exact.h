/// \file
/// Exact: a file as the format wants it, with every size known and all padding in place; what `flinspect copy` writes.

#pragma once

#include "Inspection.h"

#include <vector>

/// The first pass over a file finds the sizes that it should have, the second one writes it. A file whose sizes are
/// right costs nothing per chunk.
class Exact : private Inspection
{
public:
  /// Walks \p source, which must be at its start and able to go back there, and reports its departures.
  Exact(Console& console, Source& source);

  /// Only a valid file can be written.
  using Inspection::status;

  /// Whether the file is already as it would be written.
  bool isAsItIs() const { return fCorrections.empty() && oddities() == 0; }

  /// Walks \p source once more and writes to \p file, which messages call \p target. Throws Failure.
  void write(Source& source, const std::string& target, _FLfile* file) const;

private:
  // The size that a chunk should have, where its header has another. Chunks are numbered as they begin.
  struct Correction
  {
    Tint64 fNumber;
    Tint64 fSize;
  };

  class Writer;

  bool begin(const Chunk& chunk) override;
  bool end(const Chunk& chunk) override;

  std::vector<Correction> fGroups; // that are open, with the size so far
  std::vector<Correction> fCorrections;
  Tint64 fCount = 0;
};
