#include "LeafValue.h"

#include "Foundation/Data/Tdata.h"
#include "Foundation/Data/TdataUnknown.h"
#include "Foundation/Data/TmetaLetter.h"

#include <sstream>

bool LeafValue::begin(const Chunk& chunk)
{
  constexpr TuInt32 kMostBytes = 65536;
  const TiffTag id = chunk.fId;
  fId = chunk.fId;
  fBytes.clear();
  return !chunk.fIsGroup && chunk.fHasSize && chunk.fSizeField <= kMostBytes &&
         (id == Tdata::kNumberTag || id == Tdata::kTimeTag || id == Tdata::kNullTag || TmetaLetter::findTypeid(id));
}

std::string LeafValue::text()
{
  Tdata value;
  void* bytes = fBytes.data();
  auto size = static_cast<unsigned long>(fBytes.size());
  if (value.readBinary(fId, size, bytes) != 0 || value.letterAs<TdataUnknown>())
    return {};
  return (std::ostringstream() << value).str();
}
