// The type records of classes that stand below the metaclasses. Sizes are those of the home platform, in every build.

#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Debug/Texception.h"

#define EXCEPTION_RECORD(Class, size, parent)                                                                          \
  static Tmetaclass g##Class(&Class::fTypeid, #Class, size, nullptr, 0, 0, parent);                                    \
  Tmetaclass* Class::fTypeid = &g##Class;                                                                              \
  void* Class::construct(Tmetaclass* type)                                                                             \
  {                                                                                                                    \
    return type && type->isa(fTypeid) ? type->construct(fTypeid) : nullptr;                                            \
  }

EXCEPTION_RECORD(Texception, 4, nullptr)
EXCEPTION_RECORD(TmemoryException, 4, &Texception::fTypeid)
EXCEPTION_RECORD(TbadDataCast, 4, &Texception::fTypeid)
EXCEPTION_RECORD(TincompatibleData, 4, &Texception::fTypeid)
EXCEPTION_RECORD(ThandledException, 8, &Texception::fTypeid)
EXCEPTION_RECORD(TfailedException, 8, &Texception::fTypeid)
EXCEPTION_RECORD(TunimplementedException, 8, &Texception::fTypeid)
EXCEPTION_RECORD(TresourceException, 260, &Texception::fTypeid)

// Its class is not part of the library, and finds the record by name.
static Tmetaclass gTfileException(nullptr, "TfileException", 8, nullptr, 0, 0, &Texception::fTypeid);
