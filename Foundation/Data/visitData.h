/// \file
/// visitData: calls what fits the kind of a value.

#pragma once

#include "Foundation/Data/TdataArrays.h"
#include "Foundation/Data/TdataColor.h"
#include "Foundation/Data/TdataMatrix.h"
#include "Foundation/Data/TdataTuple.h"
#include "Foundation/Data/TdataUnknown.h"

#include <cstddef>

template <class First, class... Others, class Visitor>
decltype(auto) visitLetter(Visitor&& visitor, const TdataLetter& letter)
{
  if (letter.typeof() == First::fTypeid)
    return visitor(static_cast<const First&>(letter));
  if constexpr (sizeof...(Others) != 0)
    return visitLetter<Others...>(visitor, letter);
  else
    return visitor(letter);
}

/// Calls \p visitor with what \p data holds: a double, a TanimTime, nullptr for NULL, or the letter: as its own kind if
/// that is the library's, otherwise as a TdataLetter. All must be accepted, and give the same type; a template or a
/// base class accepts several. Returns what the visitor returns. A letter costs up to 16 comparisons.
///
/// \code
///   struct Length
///   {
///     unsigned operator()(const TdataDoubleArray& letter) const { return letter.array().length(); }
///     unsigned operator()(const TdataTuple& letter) const { return letter.length(); }
///     unsigned operator()(const TdataLetter&) const { return 1; }
///     unsigned operator()(double) const { return 1; }
///     unsigned operator()(TanimTime) const { return 1; }
///     unsigned operator()(std::nullptr_t) const { return 0; }
///   };
///   unsigned length = visitData(Length(), data);
/// \endcode
template <class Visitor>
decltype(auto) visitData(Visitor&& visitor, const Tdata& data)
{
  if (data.isNumeric())
    return visitor(data.doubleValue());
  if (data.isAnimTime())
    return visitor(data.timeValue());
  if (data.isNULL())
    return visitor(nullptr);
  return visitLetter<Tdata2Double, Tdata3Double, Tdata2Float, Tdata3Float, Tdata2Int16, Tdata3Int16, Tdata2Int32,
                     Tdata3Int32, TdataCompound, TdataDoubleArray, TdataInt32Array, TdataVectorArray, TdataMatrix,
                     TdataReflectance, TdataSpectrum, TdataUnknown>(visitor, data.letter());
}
