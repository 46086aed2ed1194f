#include "Foundation/Data/Tmetaclass.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// All records in order of registration. Zero before any code runs, never destroyed: modules come and go around it.
struct Registry
{
  Tmetaclass** records;
  std::size_t count;
  std::size_t capacity;
  TuInt32 nextId;
} gRegistry;

template <class Condition>
Tmetaclass* findRecord(Condition condition)
{
  Tmetaclass** end = gRegistry.records + gRegistry.count;
  Tmetaclass** found = std::find_if(gRegistry.records, end, condition);
  return found != end ? *found : nullptr;
}

} // namespace

TconstructorClass::~TconstructorClass() = default;

Tmetaclass::Tmetaclass(Tmetaclass**, const char* name, unsigned int size, Creator creator, unsigned int tag,
                       unsigned char, Tmetaclass** parent1, Tmetaclass** parent2, Tmetaclass** parent3,
                       Tmetaclass** parent4) noexcept
  : fParents{parent1, parent2, parent3, parent4}
  , fName(name)
  , fTag(tag)
  , fCreator(creator)
  , fSize(TuInt16(size))
{
  while (fParentCount < 4 && fParents[fParentCount])
    ++fParentCount;
  registerClass();
}

Tmetaclass::Tmetaclass(Tmetaclass** own, const char* name, unsigned int size, TconstructorClass* creator,
                       unsigned int tag, unsigned char fresh, Tmetaclass** parent1, Tmetaclass** parent2,
                       Tmetaclass** parent3, Tmetaclass** parent4) noexcept
  : Tmetaclass(own, name, size, Creator(nullptr), tag, fresh, parent1, parent2, parent3, parent4)
{
  fCreatorObject = creator;
}

Tmetaclass::Tmetaclass(const Tmetaclass& other) noexcept
{
  *this = other;
}

Tmetaclass& Tmetaclass::operator=(const Tmetaclass& other) noexcept
{
  if (this != &other)
  {
    std::free(fTable);
    fTable = nullptr; // built anew when it is needed
    std::copy(other.fParents, other.fParents + 4, fParents);
    fName = other.fName;
    fTag = other.fTag;
    fCreator = other.fCreator;
    fCreatorObject = other.fCreatorObject;
    fSize = other.fSize;
    fTypeId = other.fTypeId;
    fParentCount = other.fParentCount;
  }
  return *this;
}

Tmetaclass::~Tmetaclass()
{
  Tmetaclass** end = gRegistry.records + gRegistry.count;
  Tmetaclass** found = std::find(gRegistry.records, end, this);
  if (found != end)
  {
    std::copy(found + 1, end, found);
    --gRegistry.count;
  }
  std::free(fTable);
}

void Tmetaclass::registerClass() noexcept
{
  fTypeId = TuInt16(gRegistry.nextId++);
  if (gRegistry.count == gRegistry.capacity)
  {
    const std::size_t capacity = gRegistry.capacity ? 2 * gRegistry.capacity : 128;
    void* grown = std::realloc(static_cast<void*>(gRegistry.records), capacity * sizeof(void*));
    if (!grown)
      return;
    gRegistry.records = static_cast<Tmetaclass**>(grown);
    gRegistry.capacity = capacity;
  }
  gRegistry.records[gRegistry.count++] = this;
}

unsigned int Tmetaclass::extraSize() const noexcept
{
  unsigned int size = fSize;
  for (unsigned int i = 0; i < fParentCount; ++i)
    size -= super(i)->fSize;
  return size;
}

Tmetaclass* Tmetaclass::super(unsigned int i) const noexcept
{
  return i < fParentCount ? *fParents[i] : nullptr;
}

bool Tmetaclass::istype(const Tmetaclass* type) const noexcept
{
  if (fParentCount == 0)
    return false;
  if (!fTable)
    buildTable();
  if (!fTable) // no memory: ask the parents
    return std::any_of(fParents, fParents + fParentCount, [type](Tmetaclass** parent) { return (*parent)->isa(type); });
  const TuInt16 id = type->fTypeId;
  if (id < lower() || id > upper())
    return false;
  const unsigned int bit = unsigned(id) - lower();
  return fTable[1 + bit / 32] >> bit % 32 & 1;
}

void Tmetaclass::buildTable() const noexcept
{
  TuInt16 lowest = super(0)->fTypeId;
  TuInt16 highest = lowest;
  getTableSize(lowest, highest);
  const unsigned int words = (unsigned(highest) - lowest + 32) / 32 + 1;
  TuInt32* table = static_cast<TuInt32*>(std::calloc(words, sizeof(TuInt32)));
  if (!table)
    return;
  setBounds(table, lowest, highest);
  fillTable(table);
  fTable = table;
}

// Widens the bounds to the ids of all ancestors.
void Tmetaclass::getTableSize(TuInt16& lowest, TuInt16& highest) const noexcept
{
  for (unsigned int i = 0; i < fParentCount; ++i)
  {
    lowest = std::min(lowest, super(i)->fTypeId);
    highest = std::max(highest, super(i)->fTypeId);
    super(i)->getTableSize(lowest, highest);
  }
}

void Tmetaclass::fillTable(TuInt32* table) const noexcept
{
  for (unsigned int i = 0; i < fParentCount; ++i)
  {
    const unsigned int bit = unsigned(super(i)->fTypeId) - (table[0] & 0xFFFF);
    table[1 + bit / 32] |= TuInt32(1) << bit % 32;
    super(i)->fillTable(table);
  }
}

bool Tmetaclass::isexactlya(const char* name) const noexcept
{
  return name && std::strcmp(fName, name) == 0;
}

bool Tmetaclass::isa(const char* name) const noexcept
{
  if (isexactlya(name))
    return true;
  return std::any_of(fParents, fParents + fParentCount, [name](Tmetaclass** parent) { return (*parent)->isa(name); });
}

void Tmetaclass::setCreator(TconstructorClass* creator) noexcept
{
  fCreatorObject = creator;
  fCreator = nullptr;
}

void* Tmetaclass::construct(Tmetaclass* requested) const
{
  if (fCreator)
    return fCreator(requested);
  return fCreatorObject ? fCreatorObject->create(requested) : nullptr;
}

Tmetaclass* Tmetaclass::findClass(const char* name) noexcept
{
  return findRecord([name](const Tmetaclass* record) { return record->isexactlya(name); });
}

Tmetaclass* Tmetaclass::findClass(const char* name, const Tmetaclass* base) noexcept
{
  return findRecord([name, base](const Tmetaclass* record) { return record->isexactlya(name) && record->isa(base); });
}
