#include "Foundation/String/TnameObject.h"

namespace {

TnameObjectIterator* gFirstWalk = nullptr;

} // namespace

TnameObject::TnameObject(const Tname& name)
{
  setName(name);
}

TnameObject::TnameObject(const TnameObject& other)
  : TnameObject()
{
  *this = other;
}

TnameObject& TnameObject::operator=(const TnameObject& other)
{
  if (other.fIsInterned)
    setName(other.fName);
  else
    setPlainName(other.fString);
  return *this;
}

TnameObject::~TnameObject()
{
  leaveList();
}

void TnameObject::setName(const Tname& name)
{
  if (fIsInterned && name == fName)
    return;
  Tname taken(name);
  if (!taken.empty())
    taken.fNode->data().addObject(this); // what can fail comes first
  leaveList();
  fName.swap(taken);
  fString = Tstring();
  fIsInterned = true;
  fIsListed = !fName.empty();
}

void TnameObject::setPlainName(const Tstring& name) noexcept
{
  Tstring taken(name);
  leaveList();
  fName.clear();
  fString.swap(taken);
  fIsInterned = false;
}

void TnameObject::leaveList() noexcept
{
  if (fIsListed)
    fName.fNode->data().removeObject(this);
  fIsListed = false;
}

bool TnameObject::hasUniqueName() const
{
  return fIsInterned ? fName.isUnique() : Tname(fString).isUnique();
}

TnameObjectIterator::TnameObjectIterator(const Tstring& name, Tmetaclass* type)
  : fType(type)
{
  const TnameDictionaryNode* node = Tname::find(name);
  fNext = node ? node->data().objects() : nullptr;
  next();
  fNextWalk = gFirstWalk;
  gFirstWalk = this;
}

TnameObjectIterator::~TnameObjectIterator()
{
  TnameObjectIterator** link = &gFirstWalk;
  while (*link != this)
    link = &(*link)->fNextWalk;
  *link = fNextWalk;
}

TnameObject* TnameObjectIterator::next()
{
  do
  {
    fCell = fNext;
    fNext = fCell ? fCell->fNext : nullptr;
  }
  while (fCell && fType && !fCell->fObject->cast(fType));
  return item();
}

// Keeps the walks off a cell that is no longer in its list.
void TnameObjectIterator::leaveCell(const TnameInfo::Tcell* cell) noexcept
{
  for (TnameObjectIterator* walk = gFirstWalk; walk; walk = walk->fNextWalk)
  {
    if (walk->fCell == cell)
      walk->fCell = nullptr;
    if (walk->fNext == cell)
      walk->fNext = cell->fNext;
  }
}
