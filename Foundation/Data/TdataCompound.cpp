#include "Foundation/Data/TdataCompound.h"

#include "Foundation/Data/Components.h"
#include "Foundation/Data/Letters.h"
#include "Foundation/Data/TdataReader.h"
#include "Foundation/Iff/TiffFile.h"
#include "Foundation/Memory/TfootprintInfo.h"

#include <climits>
#include <cstdint>
#include <cstdio>

LETTER(TdataCompound, "TdataCompound", "CMPD", 56, TdataLetter);

TdataCompound::TdataCompound(unsigned int length)
{
  fChildren.changeLogicalSizeTo(length);
}

TdataCompound::TdataCompound(const TdataCompound& other)
  : TdataLetter(other)
  , fGroupId(other.fGroupId)
  , fGroupType(other.fGroupType)
{
  fChildren.changeLogicalSizeTo(other.length());
  for (unsigned int i = 0; i < other.length(); ++i)
    fChildren[i] = other[i].unshared();
}

TdataCompound& TdataCompound::operator=(const TdataCompound& other)
{
  fChildren = std::move(TdataCompound(other).fChildren);
  fGroupId = other.fGroupId;
  fGroupType = other.fGroupType;
  return *this;
}

bool TdataCompound::resize(unsigned int length)
{
  return !hasFixedLength() && fChildren.changeLogicalSizeTo(length) == 0;
}

TdataLetter* TdataCompound::operator()(unsigned int index, Tmetaclass* type)
{
  TdataLetter* letter = index < length() ? fChildren[index].privateDataStar() : nullptr;
  return letter && type && letter->typeof()->isa(type) && fChildren[index].makeWritable()
           ? fChildren[index].privateDataStar()
           : nullptr;
}

bool TdataCompound::addData(const Tdata& data)
{
  return !hasFixedLength() && fChildren.addLast(data) == 0;
}

bool TdataCompound::setData(unsigned int index, const Tdata& data)
{
  if (index >= length())
    return false;
  fChildren[index] = accepted(data);
  return true;
}

bool TdataCompound::copyData(unsigned int index, const Tdata& data)
{
  return setData(index, data.unshared());
}

bool TdataCompound::setGroup(TiffTag id, TiffTag type) noexcept
{
  if (!(FLidflags(id.value()) & kFLidGroup) || (type.value() & 0x80000000U))
    return false;
  fGroupId = id;
  fGroupType = type;
  return true;
}

void TdataCompound::reset()
{
  *this = TdataCompound();
}

void TdataCompound::_getFootprint(TfootprintInfo& info) const
{
  const std::size_t used = sizeof *this + length() * sizeof(Tdata);
  info.add(typeName(), used, used + (fChildren.physicalSize() - length()) * sizeof(Tdata));
  for (const Tdata& child : fChildren)
  {
    if (const TdataLetter* letter = child.privateDataStar())
      letter->_getFootprint(info);
  }
}

bool TdataCompound::hasFixedLength() const
{
  return false;
}

Tdata TdataCompound::accepted(const Tdata& data) const
{
  return data;
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison and arithmetic

TorderOfData TdataCompound::compare(const TdataLetter& other) const
{
  if (!other.typeof()->isa(fTypeid))
    return TorderOfData::kIncompatible;
  const auto& compound = static_cast<const TdataCompound&>(other);
  TorderOfData result = TorderOfData::kEqual;
  for (unsigned int i = 0; i < std::min(length(), compound.length()); ++i)
  {
    const TorderOfData order = (*this)[i].compare(compound[i]);
    if (order == TorderOfData::kSame)
      result = order;
    else if (order != TorderOfData::kEqual)
      return order == TorderOfData::kIncompatible ? TorderOfData::kDifferent : order;
  }
  if (length() != compound.length())
    return length() < compound.length() ? TorderOfData::kLess : TorderOfData::kGreater;
  const bool areGroups = !hasFixedLength() && !compound.hasFixedLength();
  return areGroups && (fGroupId != compound.fGroupId || groupType() != compound.groupType()) ? TorderOfData::kDifferent
                                                                                             : result;
}

// Makes each child what \p operation makes of its index, or none of them.
template <class Operation>
bool TdataCompound::replaceChildren(Operation operation)
{
  TDarray children;
  children.changeLogicalSizeTo(length());
  try
  {
    for (unsigned int i = 0; i < length(); ++i)
      children[i] = accepted(operation(i));
  }
  catch (const TbadDataCast&)
  {
    return false;
  }
  fChildren = std::move(children);
  return true;
}

bool TdataCompound::combine(ToperationOnData operation, const TdataLetter& other)
{
  if (!other.typeof()->isa(fTypeid))
    return false;
  const auto& compound = static_cast<const TdataCompound&>(other);
  return length() == compound.length() &&
         replaceChildren([&](unsigned int i) { return (*this)[i].combined(operation, compound[i]); });
}

bool TdataCompound::scale(ToperationOnData operation, double number)
{
  return (operation == ToperationOnData::kMultiply || operation == ToperationOnData::kDivide) &&
         replaceChildren([&](unsigned int i) { return (*this)[i].combined(operation, number); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Storage

void TdataCompound::appendText(Tstring& text, long perLine) const
{
  appendNumber(text, length());
  for (const Tdata& child : fChildren)
  {
    appendSeparator(text, perLine, 0);
    child.appendText(text, perLine, true);
  }
}

long TdataCompound::readASCII(TargList& arguments, unsigned int& next, long count)
{
  // Compounds in it are read here, so that the stack does not grow with their nesting.
  struct Level
  {
    TdataCompound* fCompound;
    unsigned int fMissing;
  };
  const unsigned int end = endOfArguments(arguments, next, count);
  unsigned int at = next;
  TdataCompound read;
  TtypedArray<Level> levels;
  const auto begin = [&](TdataCompound& compound) {
    Tint32 length;
    if (at == end || levels.length() == kMostLevels || !arguments.asInt32(at++, length) || length < 0 ||
        unsigned(length) > end - at) // each child is an argument at least
      return false;
    levels.addLast({&compound, unsigned(length)});
    return true;
  };
  if (!begin(read))
    return kFailed;
  while (!levels.isEmpty())
  {
    if (levels.last().fMissing-- == 0)
    {
      levels.removeLast();
      continue;
    }
    TdataCompound* const parent = levels.last().fCompound;
    Tdata child(namedLetter(arguments, at));
    TdataLetter* const letter = child.privateDataStar();
    if (child.letterAs<TdataCompound>() && !static_cast<TdataCompound*>(letter)->hasFixedLength())
    {
      if (!begin(static_cast<TdataCompound&>(*letter)))
        return kFailed;
    }
    else if (letter ? letter->readASCII(arguments, at, long(end - at)) : child.readASCII(arguments, at, long(end - at)))
      return kFailed;
    parent->addData(child);
  }
  next = at;
  fChildren = std::move(read.fChildren);
  return 0;
}

long TdataCompound::readBinary(TiffTag tag, unsigned long& size, void*& data)
{
  constexpr unsigned long kHeader = 12;
  if (hasFixedLength() || tag != iffTag() || size > INT_MAX - kHeader)
    return kFailed;

  // The engine reads it, as the file that a group of these contents would be.
  TcharArray group;
  group.changeLogicalSizeTo(unsigned(kHeader + size));
  char* at = putBigEndian(group.data(), TiffTag::kFOR4.value());
  at = putBigEndian(at, TuInt32(size + 4));
  at = putBigEndian(at, tag.value());
  std::copy_n(static_cast<const char*>(data), size, at);
  char name[64];
  std::snprintf(name, sizeof name, "mem:%llu,%lu",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(group.data())), kHeader + size);
  const int error = std::exchange(flerrno, 0);
  const unsigned forms = FLsetnameforms(kFLformMem); // which may be switched off for what others name
  TiffFile file(name, "r");
  FLsetnameforms(forms);
  TdataReader reader;
  file.setCallbackObject(&reader);
  const bool isRead = file.isActive() && file.parse() == 0 && reader.values().length() == 1;
  if (std::exchange(flerrno, error) == kFLnoMemory)
    throw TmemoryException();
  if (!isRead)
    return kFailed;
  fChildren = std::move(reader.values()[0].writableAs<TdataCompound>()->fChildren);
  data = static_cast<char*>(data) + size;
  size = 0;
  return 0;
}

namespace {

bool isDeeperThan(const TdataCompound& compound, unsigned int levels)
{
  return levels == 0 || std::any_of(compound.begin(), compound.end(), [levels](const Tdata& child) {
           const auto* below = child.letterAs<TdataCompound>();
           return below && !below->hasFixedLength() && isDeeperThan(*below, levels - 1);
         });
}

} // namespace

long TdataCompound::writeBinary(TiffFile& file)
{
  return isDeeperThan(*this, kMostLevels) ? flerrno = kFLbadBlock : writeGroup(file);
}

// Of which is known that it is not too deep, and so of all in it: none of its kind is asked again.
long TdataCompound::writeGroup(TiffFile& file)
{
  long status = file.beginWriteGroup(fGroupId, groupType());
  for (unsigned int i = 0; i < length() && status == 0; ++i)
  {
    TdataLetter* const letter = fChildren[i].privateDataStar();
    status = letter && letter->typeof() == fTypeid ? static_cast<TdataCompound*>(letter)->writeGroup(file)
                                                   : fChildren[i].writeBinary(file);
  }
  return status == 0 ? file.endWriteGroup() : status;
}
