/// \file
/// TserverMsg and its family: what servers tell their clients.
///
/// A message is an object on the sender's stack, told apart by its class. Derive a class for each kind of news, with
/// what a receiver needs to know as its data; send it with TclientServer::notifyClients(). The trap: a message reaches
/// those who registered for exactly its class, not those who registered for a base class.

#pragma once

#include "Foundation/Platform/Export.h"

class Tmetaclass;

/// The base of the messages.
///
/// A class that derives from one of the family overrides typeof() and cast(), and has a record of its own. One with
/// data also overrides copy() and merge(), and its record a creator, so that a TdelayedClientServer can hold it back.
class FOUNDATION_API TserverMsg
{
public:
  /// The record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// This object when \p type is the record of its class or of a base class; otherwise null.
  virtual void* cast(Tmetaclass* type);

  virtual ~TserverMsg() = default;

  /// Takes in \p later, a message of the same class, so that this one stands for both, and returns 1; or returns 0, and
  /// both are to be delivered. Here, where there is no data, one message says it all.
  virtual unsigned char merge(const TserverMsg& later);

  /// Takes over the data of \p other, a message of the same class. Here there is none.
  virtual void copy(const TserverMsg& other);

  /// Whether \p type is the record of the object's class; base classes do not count.
  bool operator==(const Tmetaclass* type) const { return typeof() == type; }
  bool operator!=(const Tmetaclass* type) const { return typeof() != type; }

  /// What the creator of \p type makes, as a TserverMsg, when \p type is this class or derives from it; otherwise, and
  /// without a creator, null. The other classes do the same, each for itself. The caller deletes it.
  static void* construct(Tmetaclass* type);

  /// The record; parents of other records are given as the address of this pointer.
  static Tmetaclass* fTypeid;

  TserverMsg() = default;

protected:
  TserverMsg(const TserverMsg&) = default;
  TserverMsg& operator=(const TserverMsg&) = default;
};

/// The server has changed.
class FOUNDATION_API TserverModifiedMsg : public TserverMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// The server is being destroyed: it is no more than a TclientServer by now.
class FOUNDATION_API TserverDeletedMsg : public TserverMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// The contents of a view region have changed.
class FOUNDATION_API TviewRegionModifiedMsg : public TserverModifiedMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// The largest view region has changed.
class FOUNDATION_API TmaxViewRegionModifiedMsg : public TserverModifiedMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// A trigger was set off.
class FOUNDATION_API TtriggerMsg : public TserverMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// A condition has changed. What conditions send is one of the two that follow.
class FOUNDATION_API TconditionChangedMsg : public TserverMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API TconditionOnMsg : public TconditionChangedMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API TconditionOffMsg : public TconditionChangedMsg
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

static_assert(sizeof(TserverMsg) == sizeof(void*), "a message without data is its table of virtual operations");
