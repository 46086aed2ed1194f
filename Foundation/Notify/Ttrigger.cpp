#include "Foundation/Notify/Ttrigger.h"

#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Data/Typed.h"

#include <algorithm>
#include <utility>

TYPE_RECORD(Ttrigger, 20, nullptr, 0, 0, &TclientServer::fTypeid);
TYPE_CAST(Ttrigger, TclientServer)

Ttrigger::Ttrigger(Tstring name, Flags flags) noexcept
  : fName(std::move(name))
  , fFlags(flags)
{
}

Ttrigger::Ttrigger(const Tstring& name, unsigned char temp)
  : Ttrigger(name, temp ? kTemporary : Flags())
{
  addTrigger();
}

Ttrigger::~Ttrigger()
{
  removeTrigger();
}

TtriggerPtrArray& Ttrigger::triggerArray() noexcept
{
  // Never destroyed: triggers may be static.
  static union Holder
  {
    Holder()
      : fTriggers()
    {
    }
    ~Holder() {} // NOLINT(modernize-use-equals-default)
    TtriggerPtrArray fTriggers;
  } holder;
  return holder.fTriggers;
}

void Ttrigger::addTrigger()
{
  TtriggerPtrArray& triggers = triggerArray();
  triggers.addLast(this);
  Ttrigger** const temporary = std::find_if(
    triggers.begin(), triggers.end(), [this](const Ttrigger* each) { return each->isTemp() && each->fName == fName; });
  if (isTemp() || temporary == triggers.end())
    return;
  std::swap(*temporary, triggers.last());
  triggers.last()->transferClients(this);
}

void Ttrigger::removeTrigger() noexcept
{
  triggerArray().remove(this);
}

void Ttrigger::trigger()
{
  notifyClients(TtriggerMsg());
}

Ttrigger* Ttrigger::find(const Tstring& name, unsigned char create)
{
  for (Ttrigger* each : triggerArray())
  {
    if (each->fName == name)
      return each;
  }
  return create ? makeNew<Ttrigger>(name, static_cast<unsigned char>(1)) : nullptr;
}

unsigned int Ttrigger::numTriggers() noexcept
{
  return triggerArray().length();
}

Ttrigger* Ttrigger::triggerAtIndex(unsigned int i) noexcept
{
  return triggerArray()[i];
}
