/// \file
/// How the kinds of letters make themselves known. Internal.

#pragma once

#include "Foundation/Data/TmetaLetter.h"
#include "Foundation/Data/Typed.h"

/// The creator of a kind: null instead of an exception when there is no memory.
template <class Letter>
void* createLetter(Tmetaclass* requested)
{
  try
  {
    return createTyped<Letter>(requested);
  }
  catch (const std::exception&)
  {
    return nullptr;
  }
}

// NOLINTBEGIN(bugprone-macro-parentheses): names of classes

/// The record of the kind \p Class, its entry among the letters, the typing trio and copy().
#define LETTER(Class, name, tag, size, Base)                                                                           \
  NAMED_RECORD(Class, name, size, createLetter<Class>, TiffTag(tag).value(), 0, &Base::fTypeid);                       \
  TYPE_CAST(Class, Base)                                                                                               \
  static TmetaLetter gLetter##Class(&g##Class);                                                                        \
  TdataLetter* Class::copy() const                                                                                     \
  {                                                                                                                    \
    return makeNew<Class>(*this);                                                                                      \
  }                                                                                                                    \
  static_assert(true, "takes the semicolon")
// NOLINTEND(bugprone-macro-parentheses)
