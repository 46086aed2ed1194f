/// \file
/// TclientServer: an object that others watch.
///
/// Derive what can be watched from it and call notifyClients() when something has happened; whoever wants to know
/// registers a Tclient for a class of message. A message goes to each client at once, on the caller's stack, and costs
/// little more than the calls. The traps: a message reaches those who registered for exactly its class; and a client is
/// to be taken out before it is destroyed.

#pragma once

#include "Foundation/Notify/Tclient.h"
#include "Foundation/Notify/TserverMsg.h"
#include "Foundation/Platform/Closing.h"
#include "Foundation/Platform/Types.h"

/// The sender of messages.
///
/// \snippet watch.cpp watch
///
/// A registration is a client, a class of message and a callback; a client has one at most for each class. Clients are
/// called in ascending order of their addresses.
///
/// A pass is one message on its way to the clients of its class, and so is, with no class, a transfer or a message to
/// one client. A callback may do anything to this server and others, in passes within passes as deep as the stack is:
///
/// - A pass calls each client once that was registered when it began and is registered and enabled when its turn comes,
///   and nobody else. Clients that join wait for the next pass, even one within.
/// - A client that leaves is out at once; only hasClients(), numClients() and hasMessage() count it in until the
///   server is idle. One that comes back before then has never been away: it keeps its callback, it stays disabled if
///   it was, and it is called if its turn is still to come.
/// - setClientNotify() for the whole server lets passes under way go on.
/// - When the server is destroyed, its passes end with the callback that did it.
/// - An exception from a callback ends the pass and comes out of notifyClients(). Nothing else is changed by it.
///
/// A server is told apart by its address, and not copied. One without clients is three words; a registration takes 24
/// bytes or, with 32-bit pointers, 12, and some room to grow. Registering, leaving and queries search in logarithmic
/// time, or its square while newcomers wait for the next pass, and what they move is logarithmic on average. Functions
/// that register throw TmemoryException without memory and have then changed nothing. So do passes, but only within
/// another pass, while clients come and go: they need a list of who is to be called, and without one they have called
/// nobody.
class FOUNDATION_API TclientServer
{
public:
  /// What is called with a message.
  using Callback = void (*)(Tclient* client, TclientServer* server, const TserverMsg& msg);

  TclientServer() noexcept = default;
  TclientServer(const TclientServer&) = delete;
  TclientServer& operator=(const TclientServer&) = delete;

  /// The record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// This object when \p type is the record of its class or of a base class; otherwise null.
  virtual void* cast(Tmetaclass* type);

  /// Sends a TserverDeletedMsg. By then the object is no more than a TclientServer. What a callback throws goes no
  /// further, and the others are called nevertheless.
  virtual ~TclientServer();

  /// Sends \p msg, unless the server is switched off or the process is closing.
  virtual void notifyClients(const TserverMsg& msg);

  /// Sends \p msg to one client, if it is registered for it and enabled.
  virtual void notifyClient(Tclient* client, const TserverMsg& msg);

protected:
  /// Called after a client was registered or has come back, and after it was removed, for \p msg or, by
  /// removeClient(Tclient*), for all classes, which null stands for. Nothing here.
  virtual void addClientHook(Tclient* client, Tmetaclass* msg);
  virtual void removeClientHook(Tclient* client, Tmetaclass* msg);

public:
  /// Registers \p client for messages of class \p msg. A null \p callback stands for Tclient::serverDeletedCB if that
  /// is TserverDeletedMsg and Tclient::serverModifiedCB otherwise. Who is registered already stays so, with the
  /// callback of then. Null for a client or class registers nothing.
  void addClient(Tclient* client, Tmetaclass* msg, Callback callback = nullptr);

  /// The same for several classes, up to the first that is null.
  void addClient(Tclient* client, Tmetaclass* msg1, Callback callback1, Tmetaclass* msg2, Callback callback2 = nullptr,
                 Tmetaclass* msg3 = nullptr, Callback callback3 = nullptr, Tmetaclass* msg4 = nullptr,
                 Callback callback4 = nullptr, Tmetaclass* msg5 = nullptr, Callback callback5 = nullptr);

  /// The same for TserverModifiedMsg.
  void addClient(Tclient* client);

  /// Remove the client for all classes, or for one. -1 if it was not registered, else 0. They look at the address only.
  long removeClient(Tclient* client);
  long removeClient(Tclient* client, Tmetaclass* msg);

  /// Moves all registrations to \p to, the last class and client first: tells the client by Tclient::replaceServer(),
  /// registers it there with its callback, and removes it here. Nothing happens if \p to is null or this server, and
  /// while the process is closing. Those who join this server meanwhile stay. Who is registered with \p to already
  /// keeps the callback it has there. When \p to has no memory for one, that and those still to come stay here. \p to
  /// must not be destroyed meanwhile.
  void transferClients(TclientServer* to);

  /// Whether there is any registration: 1 or 0, from both.
  unsigned char hasClients() const noexcept;
  long numClients() const noexcept { return hasClients(); }

  unsigned char hasClient(const Tclient* client) const noexcept;
  unsigned char hasClient(const Tclient* client, Tmetaclass* msg) const noexcept;
  unsigned char hasMessage(Tmetaclass* msg) const noexcept;

  /// Switches the server on, as it is at first, or with 0 off. Returns what it was.
  unsigned char setClientNotify(unsigned char on) noexcept;

  /// The same for all registrations that the client has now. Returns what the last of them was; 0 without one.
  unsigned char setClientNotify(Tclient* client, unsigned char on) noexcept;

  /// Registrations with all servers of the process.
  static Tint32 totalClients() noexcept { return fsTotalClients; }

  /// Calls \p visit for each registration, which may do what a callback may.
  void debugIterate(void (*visit)(Tclient* client, Tmetaclass* msg));

  /// What the creator of \p type makes, as a TclientServer, when \p type is this class or derives from it; otherwise,
  /// and without a creator, null.
  static void* construct(Tmetaclass* type);

  /// The record; parents of other records are given as the address of this pointer.
  static Tmetaclass* fTypeid;

protected:
  /// As hasClient().
  unsigned char hasClientMessage(Tclient* client, Tmetaclass* msg) const noexcept { return hasClient(client, msg); }

  /// Whether a message of class \p msg would get to the client now, if the process is not closing.
  unsigned char acceptsMessage(Tclient* client, Tmetaclass* msg) const noexcept;

  /// What notifyClients() does here. Returns false when the server was destroyed meanwhile.
  bool deliver(const TserverMsg& msg);

private:
  class Table;

  static Tint32 fsTotalClients;

  Table* fTable = nullptr;         // made by the first registration
  unsigned char fClientNotify = 1; // switched on
};
