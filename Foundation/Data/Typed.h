/// \file
/// What typed classes say of themselves at run time. Internal.

#pragma once

#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Debug/Texception.h"

#include <new>
#include <utility>

/// A new object. Throws TmemoryException when there is no memory for it.
template <class X, class... Arguments>
X* makeNew(Arguments&&... arguments)
{
  X* made = new (std::nothrow) X(std::forward<Arguments>(arguments)...);
  if (!made)
    throw TmemoryException();
  return made;
}

/// The creator of a class: an object as \p requested sees it, null when the class is none of \p requested.
template <class X>
void* createTyped(Tmetaclass* requested)
{
  return X::fTypeid->isa(requested) ? makeNew<X>()->cast(requested) : nullptr;
}

/// The base of the roots, for their cast.
struct Tuntyped
{
  static void* cast(Tmetaclass*) { return nullptr; }
};

// NOLINTBEGIN(bugprone-macro-parentheses): names of classes

/// The record of \p Class, with its \p name, its \p size on the home platform and, last, its parents; typeof() and
/// construct(). In every build the record has that size, whatever the objects have.
#define NAMED_RECORD(Class, name, size, ...)                                                                           \
  static Tmetaclass g##Class(&Class::fTypeid, name, size, __VA_ARGS__);                                                \
  Tmetaclass* Class::fTypeid = &g##Class;                                                                              \
  Tmetaclass* Class::typeof() const                                                                                    \
  {                                                                                                                    \
    return fTypeid;                                                                                                    \
  }                                                                                                                    \
  void* Class::construct(Tmetaclass* type)                                                                             \
  {                                                                                                                    \
    return type && type->isa(fTypeid) ? type->construct(fTypeid) : nullptr;                                            \
  }                                                                                                                    \
  static_assert(true, "takes the semicolon")

/// The same under the name of the class, whose objects do have that size on 32 bits.
#define TYPE_RECORD(Class, size, ...)                                                                                  \
  NAMED_RECORD(Class, #Class, size, __VA_ARGS__);                                                                      \
  static_assert(sizeof(void*) != 4 || sizeof(Class) == (size), "objects have the recorded size on 32 bits")

/// cast() of a class with one typed base, which Tuntyped stands for when there is none.
#define TYPE_CAST(Class, Base)                                                                                         \
  void* Class::cast(Tmetaclass* type)                                                                                  \
  {                                                                                                                    \
    return type == fTypeid ? this : Base::cast(type);                                                                  \
  }
// NOLINTEND(bugprone-macro-parentheses)
