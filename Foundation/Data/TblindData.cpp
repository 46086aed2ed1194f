#include "Foundation/Data/TblindData.h"

#include "Foundation/Data/Typed.h"

#include <ostream>

TYPE_RECORD(TblindData, 8, nullptr, 0, 0);
TYPE_CAST(TblindData, Tuntyped)

#define KIND(Class, size)                                                                                              \
  TYPE_RECORD(Class, size, createTyped<Class>, 0, 0, &TblindData::fTypeid);                                            \
  TYPE_CAST(Class, TblindData)                                                                                         \
  TblindData* Class::copy() const                                                                                      \
  {                                                                                                                    \
    return makeNew<Class>(*this);                                                                                      \
  }                                                                                                                    \
  void Class::print(std::ostream& out) const                                                                           \
  {                                                                                                                    \
    out << value();                                                                                                    \
  }

KIND(TblindBooleanData, 12)
KIND(TblindInt32Data, 12)
KIND(TblindPointerData, 12)
KIND(TblindStringData, 12)
KIND(TblindDoubleData, 16)

std::ostream& operator<<(std::ostream& out, const TblindData& data)
{
  out << data.typeof()->name() << ' ' << data.fId << ": ";
  data.print(out);
  return out;
}
