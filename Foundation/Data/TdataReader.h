/// \file
/// TdataReader: makes values of the chunks of a file.

#pragma once

#include "Foundation/Data/Tdata.h"
#include "Foundation/Iff/TiffParserCallback.h"

class TdataCompound;

/// A receiver for one TiffFile::parse(). Each chunk becomes the value that Tdata::readBinary() makes of it, each group
/// a compound with the group's id and type, whose children are what stands in it: one of the kind that has the type for
/// its tag, or else a TdataCompound. What is written again by Tdata::writeBinary() is the same file, but for its marks
/// and what its padding holds.
///
/// \code
///   TiffFile file("scene.for4", "r");
///   TdataReader reader;
///   file.setCallbackObject(&reader);
///   if (!file.isActive() || file.parse() != 0)
///     file.perror("scene.for4");
///   for (const Tdata& each : reader.values())
///     std::cout << each << "\n";
/// \endcode
///
/// Stops the parse with kFLbadBlock at more than TdataCompound::kMostLevels groups in each other, with kFLbadId at a
/// type that cannot be written, and with the code of TiffFile::readChunk() at a chunk that it cannot read whole: one
/// that was streamed through a pipe without a size, for one. Throws TmemoryException through parse().
class FOUNDATION_API TdataReader : public TiffParserCallback
{
public:
  TdataReader() { setMethodsToUse(1); }

  /// What has been read at the outermost level: as a rule one group, of an empty file none. A group that the parse
  /// stopped in has the children up to there.
  const TDarray& values() const noexcept { return fValues; }
  TDarray& values() noexcept { return fValues; }

  int iffVListMethod1(TiffFile& file, TiffTag group, TiffTag type) override;
  int iffVFormMethod1(TiffFile& file, TiffTag group, TiffTag type) override;
  int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override;

private:
  void add(const Tdata& value);

  TDarray fValues;
  TtypedArray<TdataCompound*> fOpen; // groups, each in the one before
};
