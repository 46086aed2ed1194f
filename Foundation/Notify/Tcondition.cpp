#include "Foundation/Notify/Tcondition.h"

#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Data/Typed.h"

#include <algorithm>

TYPE_RECORD(Tcondition, 20, nullptr, 0, 0, &Ttrigger::fTypeid);
TYPE_CAST(Tcondition, Ttrigger)
TYPE_RECORD(TclientCondition, 24, nullptr, 0, 0, &Tcondition::fTypeid, &Tclient::fTypeid);

void* TclientCondition::cast(Tmetaclass* type)
{
  if (type == fTypeid)
    return this;
  void* const condition = Tcondition::cast(type);
  return condition ? condition : Tclient::cast(type);
}

namespace {

template <class Condition>
Condition* as(Ttrigger* trigger)
{
  return static_cast<Condition*>(trigger->cast(Condition::fTypeid));
}

} // namespace

Tcondition::Tcondition(const Tstring& name, unsigned char state, unsigned char temp)
  : Ttrigger(name, Flags((state ? kOn : 0) | (temp ? kTemporary : 0)))
{
  addTrigger();
}

Tcondition::~Tcondition()
{
  removeTrigger();
  if (state())
    tellFollowers(nullptr);
}

void Tcondition::trigger()
{
  if (state())
    notifyClients(TconditionOnMsg());
  else
    notifyClients(TconditionOffMsg());
}

void Tcondition::setState(unsigned char state)
{
  if (*this == state)
    return;
  fFlags ^= kOn;
  trigger();
}

Tcondition* Tcondition::find(const Tstring& name, unsigned char create)
{
  if (Ttrigger* found = Ttrigger::find(name, 0))
    return as<Tcondition>(found);
  return create ? makeNew<Tcondition>(name, static_cast<unsigned char>(0), static_cast<unsigned char>(1)) : nullptr;
}

void Tcondition::addClientHook(Tclient* client, Tmetaclass*)
{
  if (state())
    tellFollowers(client);
}

void Tcondition::removeClientHook(Tclient* client, Tmetaclass*)
{
  if (state())
    tellFollowers(client);
}

// Lets look again who follows this condition, or the one of that address: a client that was removed may be gone.
void Tcondition::tellFollowers(const Tclient* client)
{
  const TtriggerPtrArray& triggers = triggerArray();
  for (unsigned int i = triggers.length(); i-- > 0;)
  {
    if (i >= triggers.length()) // the last one destroyed some
      continue;
    TclientCondition* const follower = as<TclientCondition>(triggers[i]);
    if (follower && client == static_cast<Tclient*>(follower))
      return follower->follow();
    if (follower && !client && hasClient(follower))
      follower->follow();
  }
}

TclientCondition::TclientCondition(const Tstring& name, unsigned char state)
  : Tcondition(name, state)
{
}

TclientCondition::~TclientCondition()
{
  removeTrigger(); // nobody is to find it from now on
  const TtriggerPtrArray& triggers = triggerArray();
  for (unsigned int i = triggers.length(); i-- > 0;)
  {
    if (i < triggers.length()) // the last one may have destroyed some
      triggers[i]->removeClient(this);
  }
}

void TclientCondition::serverDeleted(TclientServer*, const TserverMsg&)
{
  follow();
}

void TclientCondition::serverModified(TclientServer*, const TserverMsg&)
{
  follow();
}

void TclientCondition::follow()
{
  const TtriggerPtrArray& triggers = triggerArray();
  setState(std::any_of(triggers.begin(), triggers.end(), [this](Ttrigger* each) {
    const Tcondition* const condition = as<Tcondition>(each);
    return condition && condition != this && condition->state() && condition->hasClient(this);
  }));
}
