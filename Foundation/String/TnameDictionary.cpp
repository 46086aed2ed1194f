#include "Foundation/String/TnameDictionary.h"

#include "Foundation/Debug/Texception.h"
#include "Foundation/String/TnameObject.h"

#include <new>
#include <utility>

TnameInfo::TnameInfo(const TnameInfo& other)
  : TnameInfo() // whose destructor then runs when the rest throws
{
  Tcell** end = &fObjects;
  for (const Tcell* cell = other.fObjects; cell; cell = cell->fNext)
  {
    *end = newCell(cell->fObject);
    end = &(*end)->fNext;
  }
  fCount = other.fCount;
}

TnameInfo& TnameInfo::operator=(const TnameInfo& other)
{
  TnameInfo copy(other);
  std::swap(fObjects, copy.fObjects);
  fCount = copy.fCount;
  return *this;
}

TnameInfo::~TnameInfo()
{
  while (fObjects)
    removeCell(&fObjects);
}

TnameInfo::Tcell* TnameInfo::newCell(TnameObject* object)
{
  Tcell* cell = new (std::nothrow) Tcell{object, nullptr};
  if (!cell)
    throw TmemoryException();
  return cell;
}

void TnameInfo::addObject(TnameObject* object)
{
  Tcell* cell = newCell(object);
  cell->fNext = fObjects;
  fObjects = cell;
}

void TnameInfo::removeObject(TnameObject* object) noexcept
{
  Tcell** link = linkTo(object);
  if (*link)
    removeCell(link);
}

// The link to the cell of \p object that was added last; the one at the end of the list, null, when there is none.
TnameInfo::Tcell** TnameInfo::linkTo(const TnameObject* object) noexcept
{
  Tcell** link = &fObjects;
  while (*link && (*link)->fObject != object)
    link = &(*link)->fNext;
  return link;
}

void TnameInfo::removeCell(Tcell** link) noexcept
{
  Tcell* cell = *link;
  *link = cell->fNext;
  TnameObjectIterator::leaveCell(cell);
  delete cell;
}
