#include "Foundation/Data/TdataReader.h"

#include "Foundation/Data/TdataCompound.h"
#include "Foundation/Data/TdataUnknown.h"
#include "Foundation/Data/TmetaLetter.h"
#include "Foundation/Data/Typed.h"
#include "Foundation/Iff/TiffFile.h"

namespace {

// A new letter of the kind whose tag it is, if that is one of compounds; else NULL.
Tdata compoundFor(TiffTag tag)
{
  Tmetaclass* const kind = TmetaLetter::findTypeid(tag);
  Tdata value(static_cast<TdataLetter*>(nullptr));
  if (!kind || !kind->isa(TdataCompound::fTypeid))
    return value;
  value = TdataLetter::construct(kind);
  if (value.isNULL())
    throw TmemoryException();
  return value;
}

bool isGroup(const Tdata& value)
{
  const auto* compound = value.letterAs<TdataCompound>();
  return compound && !compound->hasFixedLength();
}

} // namespace

int TdataReader::iffVListMethod1(TiffFile& file, TiffTag group, TiffTag type)
{
  return iffVFormMethod1(file, group, type);
}

int TdataReader::iffVFormMethod1(TiffFile&, TiffTag group, TiffTag type)
{
  if (fOpen.length() == TdataCompound::kMostLevels)
    return kFLbadBlock;
  Tdata value = compoundFor(type);
  if (!isGroup(value))
    value = makeNew<TdataCompound>();
  auto* compound = static_cast<TdataCompound*>(value.privateDataStar());
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
  Tdata value = compoundFor(id);
  if (isGroup(value)) // but the chunk is none, and chunks in chunks could go on as deep as the file likes
    value = makeNew<TdataUnknown>(id);
  if (value.readBinary(id, left, data) != 0) // a tuple, of another size
  {
    value = makeNew<TdataUnknown>(id);
    value.readBinary(id, left, data);
  }
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
