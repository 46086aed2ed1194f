/// \file
/// LeafValue: the value in a chunk whose id names a kind of data, as text.

#pragma once

#include "Walker.h"

/// Follows a walk: asks for the data of a chunk that may have a value, and has its text when the chunk ends.
class LeafValue
{
public:
  /// A chunk begins. Whether its data are wanted: those of a plain chunk of at most 64 KiB whose id is one of a value.
  bool begin(const Chunk& chunk);

  void data(const unsigned char* bytes, std::size_t count) { fBytes.insert(fBytes.end(), bytes, bytes + count); }

  /// The chunk has ended: "1.5", "double2 1 2"; empty when its data are no such value.
  std::string text();

private:
  TuInt32 fId = 0;
  std::vector<unsigned char> fBytes;
};
