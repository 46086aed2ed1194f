/// \file
/// Tname: the name of something that users see, kept once in the process however many things are called that.
///
/// Hold names as Tname where they are compared, copied or numbered often: a copy is a pointer and an increment, equal
/// names have one address, and makeUnique() numbers copies of a name. To intern a name that is there costs a look-up in
/// a hash table, a new one or the end of the last holder an insertion into or removal from an ordered dictionary. The
/// trap: what is read back is the canonical form (see convertName), and of two names that differ only above the last
/// eight digits of a longer number the one that came first serves for both (see TnameString::strnumcmp).

#pragma once

#include "Foundation/String/TnameDictionary.h"

/// A name, or none; it holds the node of the name in the process's dictionary.
///
/// \code
///   Tname lamp("lamp"), copy = lamp;
///   copy.makeUnique();                 // "lamp1"
///   Tname next("lamp#");               // a name of its own: "lamp2"
///   for (const TnameDictionaryNode& each : Tname::nameTable())
///     std::cout << each.key() << '\n'; // lamp, lamp1, lamp2
/// \endcode
///
/// A name is in the dictionary as long as a Tname holds it. The dictionary and its order are there to be looked at; it
/// is made at the first name and never destroyed.
///
/// What takes a text throws TmemoryException when there is no memory for it and leaves the Tname and the dictionary as
/// they were. Everything else succeeds. Nothing is locked: names belong to one thread.
class FOUNDATION_API Tname
{
public:
  Tname() noexcept = default;

  /// Holds the canonical form of \p text, up to a zero in it; none when that is empty. Null is no name.
  Tname(const char* text)
    : Tname(view(text))
  {
  }
  Tname(const Tstring& text)
    : Tname(std::string_view(text))
  {
  }
  explicit Tname(std::string_view text);

  Tname(const Tname& other) noexcept
    : fNode(other.fNode)
  {
    if (fNode)
      ++fNode->data().fCount;
  }
  Tname(Tname&& other) noexcept
    : fNode(std::exchange(other.fNode, nullptr))
  {
  }
  ~Tname() { clear(); }

  /// The new name is held before the old one is let go: the text may be that of the old one, and a name that stays the
  /// same keeps its node.
  Tname& operator=(const char* text) { return assign(view(text)), *this; }
  Tname& operator=(const Tstring& text) { return assign(text), *this; }
  Tname& operator=(const Tname& other) noexcept
  {
    Tname(other).swap(*this);
    return *this;
  }
  Tname& operator=(Tname&& other) noexcept
  {
    Tname(std::move(other)).swap(*this);
    return *this;
  }

  void swap(Tname& other) noexcept { std::swap(fNode, other.fNode); }
  friend void swap(Tname& left, Tname& right) noexcept { left.swap(right); }

  /// Lets the name go. The last holder takes it out of the dictionary, with its list of objects.
  void clear() noexcept
  {
    TnameDictionaryNode* node = std::exchange(fNode, nullptr);
    if (node && --node->data().fCount < 1)
      release(*node);
  }

  /// The text; "" without a name. The characters of asC() and the view stay as long as the name is held by anyone.
  Tstring asString() const noexcept { return fNode ? Tstring(fNode->key()) : Tstring(); }
  const char* asC() const noexcept { return fNode ? fNode->key().asC() : ""; }
  operator std::string_view() const noexcept { return fNode ? std::string_view(fNode->key()) : std::string_view(); }
  bool empty() const noexcept { return !fNode; }

  /// Whether this is the only holder of the name; false without one.
  bool isUnique() const noexcept { return fNode && fNode->data().fCount == 1; }

  /// Gives a name that has other holders a number of its own, as a rule one above the highest that its base has (see
  /// getNextVersionNumber). Throws TmemoryException, with nothing changed, when there is no memory.
  void makeUnique();

  /// Puts \p object at the head of the list of those that bear the name. It must be taken out, as often as it was put
  /// in, before it goes; only a TnameObject whose own name this is enters and leaves by itself, and while it is in is
  /// not put in again. Throws TmemoryException, with nothing changed, when there is no memory. Nothing happens without
  /// a name or an object.
  void addObject(TnameObject* object);

  /// Takes \p object, as it was added last, out of the list. Linear in the list.
  void removeObject(TnameObject* object) noexcept;

  /// \p text with a '_' for each byte that is no letter of ASCII, digit or '_', and one more in front of a digit at the
  /// start; "_" for an empty text. Throws TmemoryException when there is no memory.
  static Tstring validateName(const Tstring& text);

  /// All names in their order. Not to be copied: a copy shares the nodes, and destroys them. Throws TmemoryException
  /// when it is not made yet and there is no memory for it.
  static const TnameDictionary& nameTable();

  /// By address
  friend bool operator==(const Tname& left, const Tname& right) noexcept { return left.fNode == right.fNode; }
  friend bool operator!=(const Tname& left, const Tname& right) noexcept { return left.fNode != right.fNode; }

  /// In the order of the dictionary; no name comes first. A `const char*` is made a Tname for that, while beside a
  /// Tstring the name counts as a text, byte by byte.
  friend bool operator<(const Tname& left, const Tname& right) noexcept { return order(left, right) < 0; }
  friend bool operator<=(const Tname& left, const Tname& right) noexcept { return order(left, right) <= 0; }
  friend bool operator>(const Tname& left, const Tname& right) noexcept { return order(left, right) > 0; }
  friend bool operator>=(const Tname& left, const Tname& right) noexcept { return order(left, right) >= 0; }

  /// By the characters, which are taken as they are
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator==(const Tname& left, const Text& right) noexcept
  {
    return left.asString() == right;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator!=(const Tname& left, const Text& right) noexcept
  {
    return left.asString() != right;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator==(const Text& left, const Tname& right) noexcept
  {
    return left == right.asString();
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator!=(const Text& left, const Tname& right) noexcept
  {
    return left != right.asString();
  }

protected:
  /// The canonical form of \p text: without white space of ASCII and '#' at its end. A '#' there asks for a name of its
  /// own: a Tname made from the text is made unique. Null stands for "". Throws TmemoryException when there is no
  /// memory.
  static TnameString convertName(const char* text);

  /// A number that nothing called \p base has. It is one above that of the name which comes last before \p base and a
  /// '@', behind all digits, if that is \p base with a number or without; else, and above 4294967295, it is 1. Where
  /// that is taken, a higher number is found, the first one behind others that are, at the cost of a logarithm of
  /// look-ups. Throws TmemoryException when there is no memory.
  static TuInt32 getNextVersionNumber(const Tstring& base);

private:
  friend class TnameObject;
  friend class TnameObjectIterator;
  friend struct std::hash<Tname>;

  static int order(const Tname& left, const Tname& right) noexcept
  {
    if (left.empty() || right.empty())
      return int(right.empty()) - int(left.empty());
    return TnameString::strnumcmp(left.asC(), right.asC());
  }
  static std::string_view view(const char* text) noexcept { return text ? std::string_view(text) : std::string_view(); }
  static Tname holderOf(TnameDictionaryNode& node) noexcept;
  static const TnameDictionaryNode* find(std::string_view text);
  void assign(std::string_view text);
  static void release(TnameDictionaryNode& node) noexcept;

  TnameDictionaryNode* fNode = nullptr; // null without a name
};

FOUNDATION_API std::ostream& operator<<(std::ostream& out, const Tname& name);

namespace std {

template <>
struct hash<Tname>
{
  size_t operator()(const Tname& name) const noexcept { return hash<const void*>()(name.fNode); }
};

} // namespace std

static_assert(sizeof(Tname) == sizeof(void*), "a Tname is exactly one pointer");
