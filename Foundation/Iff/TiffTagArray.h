/// \file
/// TiffTagArray: the member of the array family whose elements are tags. What it can do stands in TtypedArray.h and
/// Tarray.h, but for find().

#pragma once

#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Iff/TiffTag.h"

class TiffTagArray : public TtypedArray<TiffTag>
{
public:
  using TtypedArray::find;
  using TtypedArray::TtypedArray;

  /// The index of the first \p tag, or -1. Unlike in the rest of the family, it is not a status.
  long find(const TiffTag& tag) const
  {
    unsigned int index;
    return find(tag, index) == 0 ? long(index) : -1;
  }
};
