#include "Foundation/Data/Tmetaclass.h"

#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Container/ThashTable.h"
#include "Foundation/Data/TtypeDictionary.h"
#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Debug/Texception.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <string_view>

// All records in order of registration, and where to find them by name and tag.
class TmetaclassRegistry
{
public:
  struct Entry : ThashTableEntry
  {
    Tmetaclass* fRecord;
    TuInt32 fOrder; // of registration
  };
  struct Listing : Entry // by name
  {
    Entry fTag;
  };

  // Made by the first record that there is memory for, and never destroyed: modules come and go around it.
  static TmetaclassRegistry* sRegistry;

  static const TtypeidArray& records() noexcept
  {
    static const TtypeidArray none;
    return sRegistry ? sRegistry->fRecords : none;
  }

  void add(Tmetaclass* record)
  {
    std::unique_ptr<Listing> listing(new Listing{{{}, record, fCount}, {{}, record, fCount}});
    fRecords.addLast(record);
    ++fCount;
    list(listing.release());
  }

  void remove(Tmetaclass* record)
  {
    fRecords.remove(record);
    delete unlist(record);
  }

  // Around a change of a record's name or tag; null when the record is not in the registry.
  void list(Listing* listing) noexcept
  {
    fNames.insert(listing, hashOf(listing->fRecord->fName));
    if (listing->fRecord->fTag.value() != 0)
      fTags.insert(&listing->fTag, hashOf(listing->fRecord->fTag));
  }

  Listing* unlist(Tmetaclass* record) noexcept
  {
    Listing* listing = static_cast<Listing*>(fNames.remove(record, hashOf(record->fName)));
    if (listing && record->fTag.value() != 0)
      fTags.remove(record, hashOf(record->fTag));
    return listing;
  }

  template <class Condition>
  static Tmetaclass* findName(const char* name, Condition condition)
  {
    if (!sRegistry || !name)
      return nullptr;
    return sRegistry->fNames.find(hashOf(name),
                                  [=](Tmetaclass* record) { return record->isexactlya(name) && condition(record); });
  }

  static Tmetaclass* findTag(TiffTag tag)
  {
    if (!sRegistry)
      return nullptr;
    if (tag.value() != 0)
      return sRegistry->fTags.find(hashOf(tag), [](Tmetaclass*) { return true; });
    // Most classes have no tag: the first of them is never far, and they are in no table.
    const TtypeidArray& all = sRegistry->fRecords;
    const auto found =
      std::find_if(all.begin(), all.end(), [](Tmetaclass* record) { return record->fTag.value() == 0; });
    return found != all.end() ? *found : nullptr;
  }

private:
  class Table : public ThashTable
  {
  public:
    Table()
      : ThashTable(256, 0x80000000U)
    {
    }

    void insert(Entry* entry, TuInt32 hash) noexcept { insertWithHash(entry, hash); }

    Entry* remove(Tmetaclass* record, TuInt32 hash) noexcept
    {
      Entry* entry = findEntry<Entry>(hash, [record](const Entry& candidate) { return candidate.fRecord == record; });
      if (entry)
        unlinkEntry(entry);
      return entry;
    }

    // The matching record that was registered first.
    template <class Matches>
    Tmetaclass* find(TuInt32 hash, Matches matches) const
    {
      const Entry* first = nullptr;
      findEntry<Entry>(hash, [&](const Entry& entry) {
        if ((!first || entry.fOrder < first->fOrder) && matches(entry.fRecord))
          first = &entry;
        return false;
      });
      return first ? first->fRecord : nullptr;
    }
  };

  static TuInt32 hashOf(const char* name) { return TuInt32(std::hash<std::string_view>()(name)); }

  // Tags are letters, whose low bits are much alike. Each tag has a hash of its own.
  static TuInt32 hashOf(TiffTag tag)
  {
    const TuInt32 mixed = tag.value() * 0x9E3779B1U;
    return mixed ^ mixed >> 16;
  }

  TtypeidArray fRecords{64};
  TuInt32 fCount = 0; // of all records that ever were
  Table fNames;
  Table fTags;
};

TmetaclassRegistry* TmetaclassRegistry::sRegistry = nullptr;

namespace {

TuInt32 gNoAncestors; // the table of a record without parents

// All ancestors, each once, however many ways lead to it.
void addAncestors(const Tmetaclass& record, TtypeidArray& ancestors)
{
  const auto addParents = [&](const Tmetaclass& child) {
    for (unsigned int i = 0; i < child.superCount(); ++i)
    {
      if (ancestors.find(child.super(i)) != 0)
        ancestors.addLast(child.super(i));
    }
  };
  addParents(record);
  for (unsigned int i = 0; i < ancestors.length(); ++i)
    addParents(*ancestors[i]);
}

// Calls `call` with every record that names `parent` among its parents, in order of registration.
template <class Call>
void forChildren(const Tmetaclass* parent, Call call)
{
  const TtypeidArray& records = TmetaclassRegistry::records();
  for (unsigned int at = 0; at < records.length(); ++at)
  {
    for (unsigned int i = 0; i < records[at]->superCount(); ++i)
    {
      if (records[at]->super(i) == parent)
      {
        call(records[at]);
        break;
      }
    }
  }
}

} // namespace

TconstructorClass::~TconstructorClass() = default;

Tmetaclass::Tmetaclass(Tmetaclass**, const char* name, unsigned int size, Creator creator, unsigned int tag,
                       unsigned char, Tmetaclass** parent1, Tmetaclass** parent2, Tmetaclass** parent3,
                       Tmetaclass** parent4) noexcept
  : fParents{parent1, parent2, parent3, parent4}
  , fName(name ? name : "")
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
  : fName("")
{
  *this = other;
}

Tmetaclass& Tmetaclass::operator=(const Tmetaclass& other) noexcept
{
  if (this == &other)
    return *this;
  TmetaclassRegistry* const registry = TmetaclassRegistry::sRegistry;
  TmetaclassRegistry::Listing* listing = registry ? registry->unlist(this) : nullptr;
  freeTable();
  std::copy(other.fParents, other.fParents + 4, fParents);
  fName = other.fName;
  fTag = other.fTag;
  fCreator = other.fCreator;
  fCreatorObject = other.fCreatorObject;
  fSize = other.fSize;
  fTypeId = other.fTypeId;
  fParentCount = other.fParentCount;
  if (other.fTable && other.fParentCount > 0)
  {
    // Without memory it is built anew when it is needed.
    const std::size_t size = other.getTableSize() * sizeof(TuInt32);
    fTable = static_cast<TuInt32*>(std::malloc(size));
    if (fTable)
    {
      std::memcpy(fTable, other.fTable, size);
      setBounds(other.lower(), other.upper());
    }
  }
  if (listing)
    registry->list(listing);
  return *this;
}

Tmetaclass::~Tmetaclass()
{
  if (TmetaclassRegistry::sRegistry)
    TmetaclassRegistry::sRegistry->remove(this);
  freeTable();
}

void Tmetaclass::freeTable() const noexcept
{
  if (fTable != &gNoAncestors)
    std::free(fTable);
  fTable = nullptr;
  setNoBounds();
}

void Tmetaclass::registerClass() noexcept
{
  static TuInt32 nextId = 0;
  fTypeId = TuInt16(std::min<TuInt32>(nextId, kLastId));
  if (nextId > kLastId)
  {
    std::fprintf(stderr, "Foundation: no type id is left for class %s\n", fName);
    return;
  }
  ++nextId;
  try
  {
    if (!TmetaclassRegistry::sRegistry)
      TmetaclassRegistry::sRegistry = new TmetaclassRegistry;
    TmetaclassRegistry::sRegistry->add(this);
  }
  catch (const std::exception&) // there is no memory; who says so first depends on the order of initialisation
  {
  }
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

bool Tmetaclass::istypeWithoutTable(const Tmetaclass* type) const noexcept
{
  if (fParentCount == 0)
  {
    fTable = &gNoAncestors;
    setBounds(0, 0);
    return false;
  }
  try
  {
    buildTable();
    return istype(type);
  }
  catch (const TmemoryException&)
  {
    return derivesFrom(type);
  }
}

bool Tmetaclass::derivesFrom(const Tmetaclass* type) const noexcept
{
  return std::any_of(fParents, fParents + fParentCount,
                     [type](Tmetaclass** parent) { return *parent == type || (*parent)->derivesFrom(type); });
}

void Tmetaclass::buildTable() const
{
  TtypeidArray ancestors(16);
  addAncestors(*this, ancestors);
  const auto [lowest, highest] =
    std::minmax_element(ancestors.begin(), ancestors.end(),
                        [](const Tmetaclass* left, const Tmetaclass* right) { return left->fTypeId < right->fTypeId; });
  setBounds((*lowest)->fTypeId, (*highest)->fTypeId);
  fTable = static_cast<TuInt32*>(std::calloc(getTableSize(), sizeof(TuInt32)));
  if (!fTable)
  {
    setNoBounds();
    throw TmemoryException();
  }
  fillTable(ancestors);
}

void Tmetaclass::fillTable(const TtypeidArray& ancestors) const noexcept
{
  for (const Tmetaclass* ancestor : ancestors)
  {
    const unsigned int bit = unsigned(ancestor->fTypeId) - lower();
    fTable[bit / 32] |= TuInt32(1) << bit % 32;
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
  try
  {
    TtypeidArray ancestors(16);
    addAncestors(*this, ancestors);
    return std::any_of(ancestors.begin(), ancestors.end(),
                       [name](const Tmetaclass* ancestor) { return ancestor->isexactlya(name); });
  }
  catch (const TmemoryException&)
  {
    return std::any_of(fParents, fParents + fParentCount, [name](Tmetaclass** parent) { return (*parent)->isa(name); });
  }
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
  return TmetaclassRegistry::findName(name, [](const Tmetaclass*) { return true; });
}

Tmetaclass* Tmetaclass::findClass(const char* name, const Tmetaclass* base) noexcept
{
  return TmetaclassRegistry::findName(name, [base](const Tmetaclass* record) { return record->isa(base); });
}

Tmetaclass* Tmetaclass::findClass(TiffTag tag) noexcept
{
  return TmetaclassRegistry::findTag(tag);
}

void Tmetaclass::getDerivedClasses(Tmetaclass* base, TtypeidArray& out)
{
  if (!base)
    return;
  out.insert(base, 0);
  forChildren(base, [&out](Tmetaclass* child) { getDerivedClasses(child, out); });
}

TtypeDictionary* Tmetaclass::generateDictionaryFor(Tmetaclass* base)
{
  std::unique_ptr<TtypeDictionary> dictionary(new TtypeDictionary);
  if (base)
  {
    for (Tmetaclass* record : TmetaclassRegistry::records())
    {
      if (record->isa(base))
        dictionary->insert(record->fName, record);
    }
  }
  return dictionary.release();
}

void Tmetaclass::dumpAllClasses()
{
  for (Tmetaclass* record : TmetaclassRegistry::records())
  {
    if (record->fParentCount == 0)
      dumpAllClassesDerivedFrom(record, 0);
  }
}

void Tmetaclass::dumpAllClassesDerivedFrom(Tmetaclass* base, int depth)
{
  if (!base)
    return;
  for (int i = 0; i < depth; ++i)
    std::cout << ". ";
  std::cout << base->fName << ":  +" << base->extraSize() << " = " << base->fSize
            << (base->isAbstract() ? "    (abstract)\n" : "\n");
  forChildren(base, [depth](Tmetaclass* child) { dumpAllClassesDerivedFrom(child, depth + 1); });
}

void Tmetaclass::debug(TdebugOutput& out, unsigned int level) const
{
  out.print("Tmetaclass %s: id %u, tag %s, %u bytes, %s\n", fName, fTypeId, fTag.valueTchar().asC(), fSize,
            isAbstract() ? "abstract" : "can be made");
  if (level == 0 || fParentCount == 0)
    return;
  out.setIndent(1);
  for (unsigned int i = 0; i < fParentCount; ++i)
    super(i)->debug(out, level);
  out.setIndent(-1);
}

void Tmetaclass::debugMe(const Tmetaclass& record, unsigned int level)
{
  record.debug(TdebugOutput::sCerr(), level);
}
