#include "Foundation/Notify/TserverMsg.h"

#include "Foundation/Data/Typed.h"

TYPE_RECORD(TserverMsg, 4, nullptr, 0, 0);
TYPE_CAST(TserverMsg, Tuntyped)

#define MESSAGE(Class, Base)                                                                                           \
  TYPE_RECORD(Class, 4, createTyped<Class>, 0, 0, &Base::fTypeid);                                                     \
  TYPE_CAST(Class, Base)

MESSAGE(TserverModifiedMsg, TserverMsg)
MESSAGE(TserverDeletedMsg, TserverMsg)
MESSAGE(TviewRegionModifiedMsg, TserverModifiedMsg)
MESSAGE(TmaxViewRegionModifiedMsg, TserverModifiedMsg)
MESSAGE(TtriggerMsg, TserverMsg)
MESSAGE(TconditionChangedMsg, TserverMsg)
MESSAGE(TconditionOnMsg, TconditionChangedMsg)
MESSAGE(TconditionOffMsg, TconditionChangedMsg)

unsigned char TserverMsg::merge(const TserverMsg&)
{
  return 1;
}

void TserverMsg::copy(const TserverMsg&) {}
