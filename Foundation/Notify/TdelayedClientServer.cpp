#include "Foundation/Notify/TdelayedClientServer.h"

#include "Foundation/Data/Typed.h"

#include <algorithm>
#include <memory>

TYPE_RECORD(TdelayedClientServer, 16, nullptr, 0, 0, &TclientServer::fTypeid);
TYPE_CAST(TdelayedClientServer, TclientServer)

namespace {

class TserverMsgPtrList : public TtypedArray<TserverMsg*>
{};

} // namespace

struct TdelayedClientServer::Queue
{
  TdelayedMsgTypeArray fTypes{1}; // a class stands before those that it derives from
  TserverMsgPtrList fMessages;    // owned

  ~Queue() { std::for_each(fMessages.begin(), fMessages.end(), std::default_delete<TserverMsg>()); }
};

TdelayedClientServer::~TdelayedClientServer()
{
  delete fQueue;
}

unsigned char TdelayedClientServer::delayed(Tmetaclass* type) const noexcept
{
  return fQueue && type &&
         std::any_of(fQueue->fTypes.begin(), fQueue->fTypes.end(),
                     [type](const TdelayedMsgType& each) { return type->isa(each.fType); });
}

void TdelayedClientServer::notifyClients(const TserverMsg& msg)
{
  Tmetaclass* const type = msg.typeof();
  if (delayed(type))
  {
    TserverMsgPtrList& messages = fQueue->fMessages;
    TserverMsg** const queued = std::find_if(messages.begin(), messages.end(),
                                             [&](TserverMsg* each) { return *each == type && each->merge(msg); });
    if (queued != messages.end())
    {
      std::rotate(queued, queued + 1, messages.end());
      return;
    }
    try
    {
      std::unique_ptr<TserverMsg> copy(static_cast<TserverMsg*>(TserverMsg::construct(type)));
      if (copy)
      {
        copy->copy(msg);
        messages.addLast(copy.get());
        copy.release(); // NOLINT(bugprone-unused-return-value)
        return;
      }
    }
    catch (...) // NOLINT(bugprone-empty-catch): then there is no copy
    {
    }
  }
  deliver(msg);
}

// Sends the first of the queued messages that are chosen. Whether there was one and the server is still there.
template <class Chosen>
bool TdelayedClientServer::release(Chosen chosen)
{
  if (!fQueue)
    return false;
  TserverMsgPtrList& messages = fQueue->fMessages;
  TserverMsg** const found = std::find_if(messages.begin(), messages.end(), chosen);
  if (found == messages.end())
    return false;
  const std::unique_ptr<TserverMsg> message(*found);
  messages.removeAt(unsigned(found - messages.begin()));
  return deliver(*message);
}

void TdelayedClientServer::delayNotification(Tmetaclass* type, unsigned char on)
{
  if (!type || (!on && !fQueue))
    return;
  if (!fQueue)
    fQueue = makeNew<Queue>();
  TdelayedMsgTypeArray& types = fQueue->fTypes;
  TdelayedMsgType* const first =
    std::find_if(types.begin(), types.end(), [type](const TdelayedMsgType& each) { return type->isa(each.fType); });
  TdelayedMsgType* const exact =
    std::find_if(first, types.end(), [type](const TdelayedMsgType& each) { return each.fType == type; });
  if (exact == types.end())
  {
    if (on)
      types.insert({type, 1}, unsigned(first - types.begin()));
  }
  else if (on)
    ++exact->fCount;
  else if (--exact->fCount == 0)
  {
    types.removeAt(unsigned(exact - types.begin()));
    if (hasClients())
    {
      while (release([this](const TserverMsg* message) { return !delayed(message->typeof()); }))
      {
      }
    }
  }
}

void TdelayedClientServer::forceNotification(Tmetaclass* type)
{
  release([type](const TserverMsg* message) { return *message == type; });
}
