#include "Foundation/Data/TdataReader.h"

#include "Foundation/Data/TdataCompound.h"
#include "Foundation/Data/Typed.h"
#include "Foundation/Iff/TiffFile.h"

int TdataReader::iffVListMethod1(TiffFile& file, TiffTag group, TiffTag type)
{
  return iffVFormMethod1(file, group, type);
}

int TdataReader::iffVFormMethod1(TiffFile&, TiffTag group, TiffTag type)
{
  if (fOpen.length() == TdataCompound::kMostLevels)
    return kFLbadBlock;
  auto* compound = makeNew<TdataCompound>();
  const Tdata value(compound);
  if (!compound->setGroup(group, type))
    return kFLbadId;
  fOpen.buffer(1); // which may fail, and must not between the two
  add(value);
  fOpen.addLast(compound);
  return 0;
}

int TdataReader::iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size)
{
  if (id == TiffTag::kGEND && size == 0)
  {
    fOpen.removeLast();
    return 0;
  }
  void* data = file.readChunk(&size);
  if (!data)
    return file.error();
  auto left = static_cast<unsigned long>(size);
  Tdata value;
  value.readBinary(id, left, data);
  add(value);
  return 0;
}

void TdataReader::add(const Tdata& value)
{
  if (fOpen.isEmpty())
    fValues.addLast(value);
  else
    fOpen.last()->addData(value);
}
