// The type records of classes that stand below the metaclasses, and what these classes say of themselves. Sizes are
// those of the home platform, in every build.

#include "Foundation/Container/Tdictionary.h"
#include "Foundation/Data/TtypeDictionary.h"
#include "Foundation/Data/Typed.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/File/Tdirectory.h"
#include "Foundation/File/Tfile.h"
#include "Foundation/File/TfileStream.h"
#include "Foundation/String/TnameDictionary.h"
#include "Foundation/String/TnameObject.h"

#define ROOT(Class, name, size)                                                                                        \
  NAMED_RECORD(Class, name, size, nullptr, 0, 0);                                                                      \
  TYPE_CAST(Class, Tuntyped)

#define DERIVED(Class, size, Base)                                                                                     \
  NAMED_RECORD(Class, #Class, size, nullptr, 0, 0, &Base::fTypeid);                                                    \
  TYPE_CAST(Class, Base)

ROOT(Texception, "Texception", 4)
DERIVED(TmemoryException, 4, Texception)
DERIVED(TbadDataCast, 4, Texception)
DERIVED(TincompatibleData, 4, Texception)
DERIVED(ThandledException, 8, Texception)
DERIVED(TfailedException, 8, Texception)
DERIVED(TunimplementedException, 8, Texception)
DERIVED(TfileException, 8, Texception)
DERIVED(TresourceException, 260, Texception)
ROOT(TdictionaryNode, "TdictionaryNode", 4)
DERIVED(Tdictionary, 72, TdictionaryNode)
DERIVED(TtypeDictionaryNode, 16, TdictionaryNode)
DERIVED(TtypeDictionary, 72, Tdictionary)
DERIVED(TnameDictionaryNode, 20, TdictionaryNode)
DERIVED(TnameDictionary, 72, Tdictionary)
ROOT(TnameObject, "TnameObject", 16)
ROOT(Tfilesystem, "filesystem", 28)
DERIVED(Tdirectory, 28, Tfilesystem)
DERIVED(TappDirectory, 28, Tdirectory)
DERIVED(TtemporaryDirectory, 28, Tdirectory)
DERIVED(TpreferencesDirectory, 28, Tdirectory)
DERIVED(TuserBitmapsDirectory, 28, Tdirectory)
DERIVED(TuserScriptDirectory, 28, Tdirectory)
DERIVED(TuserShelfDirectory, 28, Tdirectory)
DERIVED(TfileStream, 1256, Tfilesystem)
ROOT(Tfile, "file", 44)
