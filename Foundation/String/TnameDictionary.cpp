#include "Foundation/String/TnameDictionary.h"

#include "Foundation/Debug/Texception.h"
#include "Foundation/String/TnameObject.h"

#include <cstdlib>
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
  Tcell** link = &fObjects;
  while (*link && (*link)->fObject != object)
    link = &(*link)->fNext;
  if (*link)
    removeCell(link);
}

void TnameInfo::removeCell(Tcell** link) noexcept
{
  Tcell* cell = *link;
  *link = cell->fNext;
  TnameObjectIterator::leaveCell(cell);
  delete cell;
}

int TnameDictionaryNode::compare(TdictionaryNode& other)
{
  const int order = TnameString::strnumcmp(fKey.asC(), static_cast<TnameDictionaryNode&>(other).fKey.asC());
  return (order > 0) - (order < 0);
}

void TnameDictionaryNode::setValue(TdictionaryNode& other)
{
  fData = static_cast<TnameDictionaryNode&>(other).fData;
}

TdictionaryNode* TnameDictionaryNode::clone(long level)
{
  void* block = std::calloc(1, sizeof *this + std::size_t(level) * sizeof(TdictionaryNode*)); // the links are null
  if (!block)
    return nullptr;
  try
  {
    return new (block) TnameDictionaryNode(*this);
  }
  catch (const TmemoryException&)
  {
    std::free(block);
    return nullptr;
  }
}

void TnameDictionaryNode::destroy()
{
  this->~TnameDictionaryNode();
  std::free(this);
}

TdictionaryNode*& TnameDictionaryNode::forward(long i)
{
  return reinterpret_cast<TdictionaryNode**>(this + 1)[i];
}

TnameDictionaryNode* TnameDictionary::insert(const TnameString& key, const TnameInfo& data)
{
  Tbookmark none;
  return insert(key, data, none);
}

TnameDictionaryNode* TnameDictionary::insert(const TnameString& key, const TnameInfo& data, Tbookmark& bookmark)
{
  TnameDictionaryNode node(key, data);
  TdictionaryNode* inserted = insertNode(node, bookmark);
  if (!inserted)
    throw TmemoryException();
  return static_cast<TnameDictionaryNode*>(inserted);
}

bool TnameDictionary::remove(const TnameString& key)
{
  TnameDictionaryNode node(key, TnameInfo());
  return removeNode(node);
}

TnameDictionaryNode* TnameDictionary::findNode(const TnameString& key)
{
  TnameDictionaryNode node(key, TnameInfo());
  return static_cast<TnameDictionaryNode*>(searchNode(node));
}

TnameDictionaryNode* TnameDictionary::findNode(const TnameString& key, Tbookmark& bookmark)
{
  TnameDictionaryNode node(key, TnameInfo());
  return static_cast<TnameDictionaryNode*>(searchNode(node, bookmark));
}

const TnameDictionaryNode* TnameDictionary::findNode(const TnameString& key) const
{
  return const_cast<TnameDictionary*>(this)->findNode(key);
}

TnameInfo* TnameDictionary::search(const TnameString& key)
{
  TnameDictionaryNode* node = findNode(key);
  return node ? &node->data() : nullptr;
}

TnameInfo* TnameDictionary::search(const TnameString& key, Tbookmark& bookmark)
{
  TnameDictionaryNode* node = findNode(key, bookmark);
  return node ? &node->data() : nullptr;
}

const TnameInfo* TnameDictionary::search(const TnameString& key) const
{
  return const_cast<TnameDictionary*>(this)->search(key);
}
