// The table of ids that have a meaning to the engine, and what may stand where.

#include "Foundation/Iff/FLfile.h"

#include <iterator>

namespace {

constexpr TuInt32 id4(const char (&text)[5])
{
  return TuInt32(static_cast<unsigned char>(text[0])) << 24 | TuInt32(static_cast<unsigned char>(text[1])) << 16 |
         TuInt32(static_cast<unsigned char>(text[2])) << 8 | TuInt32(static_cast<unsigned char>(text[3]));
}

constexpr unsigned kGroup = kFLidGroup | kFLidReserved | kFLidRoot;
constexpr unsigned kForm = kGroup | kFLidForm;
constexpr unsigned kCat = kGroup | kFLidCat;
constexpr unsigned kList = kGroup | kFLidList | kFLidHoldsProps;
constexpr unsigned kProp = kFLidGroup | kFLidReserved | kFLidProp;

constexpr struct
{
  TuInt32 id;
  unsigned flags;
} kTable[] = {
  {id4("FOR4"), kForm | 4},     {id4("FORM"), kForm | 2},     {id4("FOR8"), kForm | 8},
  {id4("CAT4"), kCat | 4},      {id4("CAT "), kCat | 2},      {id4("CAT8"), kCat | 8},
  {id4("LIS4"), kList | 4},     {id4("LIST"), kList | 2},     {id4("LIS8"), kList | 8},
  {id4("PRO4"), kProp | 4},     {id4("PROP"), kProp | 2},     {id4("PRO8"), kProp | 8},
  {kFLgend, kFLidReserved | 4}, {kFLpath, kFLidReserved | 4}, {kFLincl, 4},
};
static_assert(std::size(kTable) == 15);

} // namespace

unsigned FLidflags(TuInt32 id)
{
  if (FLplainAtSight(id)) [[likely]]
    return 0;
  for (const auto& entry : kTable)
  {
    if (entry.id == id)
      return entry.flags;
  }
  const TuInt32 family = id & 0xFFFFFF00U;
  const TuInt32 last = id & 0xFFU;
  const bool groupLike = family == (id4("FORM") & 0xFFFFFF00U) || family == (id4("CAT ") & 0xFFFFFF00U) ||
                         family == (id4("LIST") & 0xFFFFFF00U) || family == (id4("PROP") & 0xFFFFFF00U);
  return groupLike && last >= '0' && last <= '9' ? unsigned(kFLidIllegal) : 0U;
}

int FLclassify(const FLcontext* level, TuInt32 id, unsigned& flags)
{
  flags = FLidflags(id);
  if (flags & kFLidIllegal)
    return kFLreservedId;
  if (!level->fParent)
    return flags & kFLidRoot ? 0 : kFLbadRoot;
  if ((flags & kFLidProp) && !(level->fParent->fFlags & kFLidHoldsProps))
    return kFLunexpectedBlock;
  return id == kFLpath || id == kFLincl ? kFLnotImplemented : 0;
}

int FLpush(_FLfile* file)
{
  FLcontext* outer = file->fLevel;
  FLcontext* level = file->fSpare;
  if (level)
    file->fSpare = level->fParent;
  else
  {
    level = static_cast<FLcontext*>(FLmalloc(sizeof(FLcontext)));
    if (!level)
      return kFLnoMemory;
  }
  *level = FLcontext{};
  level->fParent = outer;
  FLenter(outer, level);
  file->fLevel = level;
  return 0;
}

void FLenter(const FLcontext* around, FLcontext* level)
{
  level->fStart = around->fChunkStart + 4;
  level->fLimit = around->fChunkEnd;
  level->fMask = around->fChunkMask;
}

void FLpop(_FLfile* file)
{
  FLcontext* level = file->fLevel;
  file->fLevel = level->fParent;
  level->fParent = file->fSpare;
  file->fSpare = level;
}
