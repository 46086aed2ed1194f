/// \file
/// TtypeDictionary: type records in the order of their class names.

#pragma once

#include "Foundation/Container/TtypedDictionary.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/String/TcharString.h"

class Tmetaclass;

/// A class name, which is borrowed, and the record of the class.
class FOUNDATION_API TtypeDictionaryNode : public TtypedNode<TtypeDictionaryNode, TcharString, Tmetaclass*>
{
public:
  using TtypedNode::TtypedNode;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

  static int order(const TcharString& left, const TcharString& right) noexcept
  {
    return left < right ? -1 : !(left == right);
  }
};

/// Type records by class name, in the locale's collation: what Tmetaclass::generateDictionaryFor() makes. Names are not
/// copied and must outlive the dictionary.
class FOUNDATION_API TtypeDictionary : public TtypedDictionary<TtypeDictionaryNode>
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};
