/// \file
/// Tclient: an object that hears of changes in others.
///
/// Derive from it and override what shall happen; register with a TclientServer. It has no data: who it is registered
/// with, only the servers know. The trap: whoever destroys a client takes it out of its servers first.

#pragma once

#include "Foundation/Platform/Export.h"

class TclientServer;
class Tmetaclass;
class TserverMsg;

/// The receiver of messages. See TclientServer for an example.
///
/// Servers hold the bare addresses of their clients, and a client does not know its servers: one that is destroyed
/// while it is registered leaves an address behind that the next message goes to. Call TclientServer::removeClient() of
/// each server before, at the latest in the destructor of the derived class; of a server that goes first it is enough
/// to hear, for which one registers for TserverDeletedMsg.
class FOUNDATION_API Tclient
{
public:
  /// The record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// This object when \p type is the record of its class or of a base class; otherwise null.
  virtual void* cast(Tmetaclass* type);

  virtual ~Tclient() = default;

  /// What the default callbacks call: \p server is being destroyed, and has sent any other message. Nothing here.
  virtual void serverDeleted(TclientServer* server, const TserverMsg& msg);
  virtual void serverModified(TclientServer* server, const TserverMsg& msg);

  /// \p to is about to take over this client's registration with \p from, where it still is. Called once for each
  /// message class. Nothing here.
  virtual void replaceServer(TclientServer* from, TclientServer* to);

  /// Callbacks that pass the message on to serverDeleted() and serverModified().
  static void serverDeletedCB(Tclient* client, TclientServer* server, const TserverMsg& msg);
  static void serverModifiedCB(Tclient* client, TclientServer* server, const TserverMsg& msg);

  /// What the creator of \p type makes, as a Tclient, when \p type is this class or derives from it; otherwise, and
  /// without a creator, null.
  static void* construct(Tmetaclass* type);

  /// The record; parents of other records are given as the address of this pointer.
  static Tmetaclass* fTypeid;
};

static_assert(sizeof(Tclient) == sizeof(void*), "a client is its table of virtual operations");
