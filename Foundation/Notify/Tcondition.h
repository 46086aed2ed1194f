/// \file
/// Tcondition: a state with a name, on or off, that tells when it changes. TclientCondition: one that follows others.

#pragma once

#include "Foundation/Notify/Ttrigger.h"

#include <type_traits>

/// A Ttrigger that holds a state. States are given as truth values and come back as 0 and 1.
///
/// \code
///   Tcondition playing("playing", 0);
///   playing.addClient(&button, TconditionOnMsg::fTypeid, nullptr, TconditionOffMsg::fTypeid);
///   playing = 1;  // button hears of it
///   if (playing)
///     playing = 1; // nothing new
/// \endcode
///
/// One that takes over the clients of a temporary one does not send its state: clients ask for it when they are told.
class FOUNDATION_API Tcondition : public Ttrigger
{
public:
  /// As for a Ttrigger. The first state is not sent.
  Tcondition(const Tstring& name, unsigned char state, unsigned char temp = 0);

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  ~Tcondition() override;

  /// Sends a TconditionOnMsg or a TconditionOffMsg, as the state is.
  void trigger() override;

  unsigned char state() const noexcept { return (fFlags & kOn) != 0; }
  operator unsigned char() const noexcept { return state(); }
  bool operator!() const noexcept { return !state(); }

  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  bool operator==(Number state) const noexcept
  {
    return ((fFlags & kOn) != 0) == (state != Number(0));
  }
  template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  bool operator!=(Number state) const noexcept
  {
    return !(*this == state);
  }

  /// Sets the state and calls trigger() if that is a change.
  void setState(unsigned char state);
  Tcondition& operator=(unsigned char state) { return setState(state), *this; }

  /// The trigger of that name, if it is a condition; null if it is none. Without one it is null or, if \p create is not
  /// 0, a temporary condition made for it, which is off.
  static Tcondition* find(const Tstring& name, unsigned char create);

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  /// Let a TclientCondition know.
  void addClientHook(Tclient* client, Tmetaclass* msg) override;
  void removeClientHook(Tclient* client, Tmetaclass* msg) override;

private:
  void tellFollowers(const Tclient* client);
};

/// A condition that is on while any condition is on that it is a client of.
///
/// Make it a client for TconditionOnMsg and TconditionOffMsg with the default callbacks. It looks at all conditions of
/// the process at each such message, and when it joins or leaves a condition that is on or that is destroyed. Until
/// then it keeps the state that it was given. Conditions that follow each other in a circle keep each other on. Its
/// destructor takes it out of all triggers and conditions; out of other servers you take it, as any client.
class FOUNDATION_API TclientCondition : public Tcondition, public Tclient
{
public:
  TclientCondition(const Tstring& name, unsigned char state);

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  ~TclientCondition() override;

  void serverDeleted(TclientServer* server, const TserverMsg& msg) override;
  void serverModified(TclientServer* server, const TserverMsg& msg) override;

  using Tcondition::operator=;

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  friend class Tcondition;

  void follow();
};
