/// \file
/// TdelayedClientServer: a server that can hold messages back and send them later, many as one.
///
/// Use it where a change comes in many small steps that clients need to hear of only once. Between
/// delayNotification(type, 1) and delayNotification(type, 0) the messages of a class wait; repeats merge into one. The
/// trap: what is sent when nobody watches is dropped, but what waits when nobody watches goes on waiting.

#pragma once

#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Notify/TclientServer.h"

/// A class of messages that is delayed, and how many calls are still to be taken back.
struct TdelayedMsgType
{
  Tmetaclass* fType;
  unsigned int fCount;
};

class TdelayedMsgTypeArray : public TtypedArray<TdelayedMsgType>
{
public:
  using TtypedArray::TtypedArray;
};

/// A TclientServer with a queue.
///
/// \snippet watch.cpp delay
///
/// Classes are delayed with all that derive from them, and once for each call. Messages wait as copies, which need a
/// creator in the record of their class. One that cannot be copied, without a creator or memory, goes out at once, as
/// does one whose copy() throws. What notifyClient() sends to one client is not delayed, nor is the message for the
/// destruction of the server; what waits then is dropped.
///
/// Queued messages are sent by the rules for passes. If a callback throws, the message it was called with is gone, and
/// those behind it wait for the next release.
class FOUNDATION_API TdelayedClientServer : public TclientServer
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  ~TdelayedClientServer() override;

  /// Sends \p msg at once or, if its class is delayed, queues it: the first queued message of the same class that
  /// merges with it goes to the end of the queue, or else a copy does.
  void notifyClients(const TserverMsg& msg) override;

  /// Delays messages of class \p type and those that derive from it or, with 0, takes back one such call. What has been
  /// taken back as often as called lets go, if the server has clients: all queued messages that no class delays any
  /// more are sent, in order. Taking back more changes nothing. Throws TmemoryException.
  virtual void delayNotification(Tmetaclass* type, unsigned char on);

  /// Whether messages of class \p type are delayed.
  unsigned char delayed(Tmetaclass* type) const noexcept;

  /// Sends the first queued message of just that class, if there is one, delayed or not.
  void forceNotification(Tmetaclass* type);

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  struct Queue;

  template <class Chosen>
  bool release(Chosen chosen);

  Queue* fQueue = nullptr; // made by the first delay
};
