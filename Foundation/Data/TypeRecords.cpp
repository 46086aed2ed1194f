// The type records of classes that stand below the metaclasses, and what these classes say of themselves. Sizes are
// those of the home platform, in every build.

#include "Foundation/Container/Tdictionary.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Data/TtypeDictionary.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/String/TnameDictionary.h"
#include "Foundation/String/TnameObject.h"

namespace {

// The base of a class that has none.
struct Nothing
{
  static void* cast(Tmetaclass*) { return nullptr; }
};

template <class Base>
constexpr Tmetaclass** kParent = &Base::fTypeid;
template <>
constexpr Tmetaclass** kParent<Nothing> = nullptr;

} // namespace

#define TYPE_RECORD(Class, size, Base)                                                                                 \
  static Tmetaclass g##Class(&Class::fTypeid, #Class, size, nullptr, 0, 0, kParent<Base>);                             \
  Tmetaclass* Class::fTypeid = &g##Class;                                                                              \
  Tmetaclass* Class::typeof() const                                                                                    \
  {                                                                                                                    \
    return fTypeid;                                                                                                    \
  }                                                                                                                    \
  void* Class::cast(Tmetaclass* type)                                                                                  \
  {                                                                                                                    \
    return type == fTypeid ? this : Base::cast(type);                                                                  \
  }                                                                                                                    \
  void* Class::construct(Tmetaclass* type)                                                                             \
  {                                                                                                                    \
    return type && type->isa(fTypeid) ? type->construct(fTypeid) : nullptr;                                            \
  }

TYPE_RECORD(Texception, 4, Nothing)
TYPE_RECORD(TmemoryException, 4, Texception)
TYPE_RECORD(TbadDataCast, 4, Texception)
TYPE_RECORD(TincompatibleData, 4, Texception)
TYPE_RECORD(ThandledException, 8, Texception)
TYPE_RECORD(TfailedException, 8, Texception)
TYPE_RECORD(TunimplementedException, 8, Texception)
TYPE_RECORD(TresourceException, 260, Texception)
TYPE_RECORD(TdictionaryNode, 4, Nothing)
TYPE_RECORD(Tdictionary, 72, TdictionaryNode)
TYPE_RECORD(TtypeDictionaryNode, 16, TdictionaryNode)
TYPE_RECORD(TtypeDictionary, 72, Tdictionary)
TYPE_RECORD(TnameDictionaryNode, 20, TdictionaryNode)
TYPE_RECORD(TnameDictionary, 72, Tdictionary)
TYPE_RECORD(TnameObject, 16, Nothing)

// Its class is not part of the library, and finds the record by name.
static Tmetaclass gTfileException(nullptr, "TfileException", 8, nullptr, 0, 0, &Texception::fTypeid);
