#include "Foundation/String/Tname.h"

#include "Foundation/Container/ThashTable.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/String/TnameObject.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>

namespace {

// A node of the name table. In front of it, in the same block, is its entry in the index.
class IndexedNode final : public TnameDictionaryNode
{
public:
  explicit IndexedNode(const Tstring& key)
    : TnameDictionaryNode(TnameString(key), TnameInfo())
  {
  }
  TdictionaryNode* clone(long level) override
  {
    void* block =
      std::calloc(1, sizeof(ThashTableEntry) + sizeof *this + std::size_t(level) * sizeof(TdictionaryNode*));
    return block ? new (static_cast<ThashTableEntry*>(block) + 1) IndexedNode(*this) : nullptr;
  }
  void destroy() override;

  ThashTableEntry* entry() { return reinterpret_cast<ThashTableEntry*>(this) - 1; }
  static const IndexedNode& of(const ThashTableEntry& entry)
  {
    return *reinterpret_cast<const IndexedNode*>(&entry + 1);
  }
};

static_assert(sizeof(IndexedNode) == sizeof(TnameDictionaryNode), "the links follow both");

// Finds nodes by their very text, faster than the dictionary does.
class Index : public ThashTable
{
public:
  Index()
    : ThashTable(8, 0x80000000)
  {
  }

  IndexedNode* find(std::string_view text) const
  {
    ThashTableEntry* entry = findEntry<ThashTableEntry>(hash(text), [text](const ThashTableEntry& each) {
      return std::string_view(IndexedNode::of(each).key()) == text;
    });
    return entry ? const_cast<IndexedNode*>(&IndexedNode::of(*entry)) : nullptr;
  }
  void insert(IndexedNode& node) { insertWithHash(node.entry(), hash(node.key())); }
  void remove(IndexedNode& node)
  {
    unlinkEntry(node.entry());
    shrinkTable();
  }

private:
  // Eight bytes at a time, for speed. Under the hash of Tstring numbered names would collide.
  static TuInt32 hash(std::string_view text)
  {
    TuInt64 hash = text.size(), word = 0;
    if (text.size() < sizeof word)
    {
      for (const char c : text)
        word = word << 8 | static_cast<unsigned char>(c);
      return folded(hash ^ word);
    }
    const char* const last = text.data() + text.size() - sizeof word;
    for (const char* at = text.data(); at < last; at += sizeof word)
    {
      std::memcpy(&word, at, sizeof word);
      hash = mixed(hash ^ word);
    }
    std::memcpy(&word, last, sizeof word);
    return folded(hash ^ word);
  }
  static TuInt64 mixed(TuInt64 hash)
  {
    hash *= 0x9E3779B97F4A7C15;
    return hash ^ hash >> 32;
  }
  static TuInt32 folded(TuInt64 hash) { return TuInt32(mixed(mixed(hash)) >> 32); } // each bit reaches the low ones
};

// A copy, or an exception in the place of the empty string that comes of a lack of memory.
Tstring copied(std::string_view text)
{
  Tstring copy(text);
  if (copy.length() != text.size())
    throw TmemoryException();
  return copy;
}

// The dictionary has the last word on which names are the same; the index knows those that have the same text.
class NameTable final : public TnameDictionary
{
public:
  static NameTable& instance()
  {
    alignas(NameTable) static unsigned char place[sizeof(NameTable)];
    static NameTable* table = new (place) NameTable;
    return *table;
  }

  TnameDictionaryNode* find(std::string_view text)
  {
    TnameDictionaryNode* node = fIndex.find(text);
    return node ? node : findNode(TnameString(copied(text)));
  }
  TnameDictionaryNode& intern(std::string_view text)
  {
    if (TnameDictionaryNode* known = fIndex.find(text))
      return *known;
    IndexedNode key(copied(text));
    Tbookmark place;
    TdictionaryNode* node = searchNode(key, place);
    if (!node)
    {
      node = insertNode(key, place);
      if (!node)
        throw TmemoryException();
      fIndex.insert(static_cast<IndexedNode&>(*node));
    }
    return static_cast<TnameDictionaryNode&>(*node);
  }
  void release(TnameDictionaryNode& node) { removeNode(node); }

  Index fIndex;
};

void IndexedNode::destroy()
{
  NameTable::instance().fIndex.remove(*this);
  void* block = entry();
  this->~IndexedNode();
  std::free(block);
}

struct Canonical
{
  std::string_view text;
  bool isToBeUnique;
};

Canonical canonical(std::string_view text)
{
  text = text.substr(0, text.find('\0'));
  const std::size_t length = text.find_last_not_of(" \t\n\v\f\r#") + 1;
  return {text.substr(0, length), text.find('#', length) != std::string_view::npos};
}

Tstring numbered(std::string_view base, TuInt32 version)
{
  char digits[10];
  const std::string_view number(digits, std::size_t(std::to_chars(digits, std::end(digits), version).ptr - digits));
  Tstring text = copied(base);
  text += number;
  if (text.length() != base.size() + number.size())
    throw TmemoryException();
  return text;
}

TuInt32 nextVersion(std::string_view base)
{
  NameTable& table = NameTable::instance();
  Tstring behind = copied(base);
  behind += '@';
  if (behind.empty())
    throw TmemoryException();
  Tbookmark place;
  table.findNode(TnameString(behind), place);
  TuInt32 version = 1;
  const void* last = place[0]->cast(TnameDictionaryNode::fTypeid); // null at the head
  if (last)
  {
    const TnameString& name = static_cast<const TnameDictionaryNode*>(last)->key();
    if (name.baseView() == base)
      version = std::max<TuInt32>(name.versionNumber() + 1, 1);
  }
  const auto isTaken = [&](TuInt32 number) { return table.find(numbered(base, number)) != nullptr; };
  if (!isTaken(version))
    return version;
  // Ever further up to a free number, then half the way between a taken and a free one until nothing is between them.
  // The numbers go round at their end. No step becomes 0; if ever so many are taken, the last ones go down by 1.
  TuInt32 step = 1, free = version + 1;
  for (; isTaken(free); free += step)
  {
    version = free;
    step = 2 * step + 1;
  }
  while (free - version > 1)
  {
    const TuInt32 middle = version + (free - version) / 2;
    (isTaken(middle) ? version : free) = middle;
  }
  return free;
}

bool isDigit(char c)
{
  return c >= '0' && c <= '9';
}

bool isNameCharacter(char c)
{
  return isDigit(c) || c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

Tname::Tname(std::string_view text)
  : Tname()
{
  assign(text);
}

Tname Tname::holderOf(TnameDictionaryNode& node) noexcept
{
  Tname name;
  name.fNode = &node;
  ++node.data().fCount;
  return name;
}

void Tname::assign(std::string_view text)
{
  NameTable& table = NameTable::instance();
  if (TnameDictionaryNode* known = table.fIndex.find(text)) // what is there is canonical
  {
    *this = holderOf(*known);
    return;
  }
  const Canonical name = canonical(text);
  Tname made = name.text.empty() ? Tname() : holderOf(table.intern(name.text));
  if (made == *this) // one holder, not two
  {
    made.clear();
    if (name.isToBeUnique)
      makeUnique();
    return;
  }
  if (name.isToBeUnique)
    made.makeUnique();
  swap(made);
}

// The node of the canonical form of \p text; null when nothing is called that.
const TnameDictionaryNode* Tname::find(std::string_view text)
{
  const std::string_view name = canonical(text).text;
  return name.empty() ? nullptr : NameTable::instance().find(name);
}

void Tname::release(TnameDictionaryNode& node) noexcept
{
  NameTable::instance().release(node);
}

void Tname::makeUnique()
{
  if (empty() || isUnique())
    return;
  const std::string_view base = fNode->key().baseView();
  *this = holderOf(NameTable::instance().intern(numbered(base, nextVersion(base))));
}

void Tname::addObject(TnameObject* object)
{
  if (!fNode || !object)
    return;
  const bool isOwn = object->fName == *this;
  if (isOwn && object->fIsListed)
    return;
  fNode->data().addObject(object);
  object->fIsListed = object->fIsListed || isOwn;
}

void Tname::removeObject(TnameObject* object) noexcept
{
  if (!fNode || !object)
    return;
  TnameInfo& info = fNode->data();
  info.removeObject(object);
  if (object->fName == *this)
    object->fIsListed = *info.linkTo(object); // once more, if it was put in before it got the name
}

Tstring Tname::validateName(const Tstring& text)
{
  const bool isPrefixed = text.empty() || isDigit(text[0]);
  if (!isPrefixed && std::all_of(text.begin(), text.end(), isNameCharacter))
    return text;
  Tstring valid(std::size_t(text.length()) + 1);
  if (isPrefixed)
    valid += '_';
  for (const char c : text)
    valid += isNameCharacter(c) ? c : '_';
  if (valid.length() != text.length() + isPrefixed)
    throw TmemoryException();
  return valid;
}

const TnameDictionary& Tname::nameTable()
{
  return NameTable::instance();
}

TnameString Tname::convertName(const char* text)
{
  return TnameString(copied(canonical(view(text)).text));
}

TuInt32 Tname::getNextVersionNumber(const Tstring& base)
{
  return nextVersion(base.asC());
}

std::ostream& operator<<(std::ostream& out, const Tname& name)
{
  return out << std::string_view(name);
}
