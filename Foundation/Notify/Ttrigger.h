/// \file
/// Ttrigger: an event with a name.
///
/// Use it where those who set an event off and those who wait for it know only its name. Who comes first does not
/// matter: find() makes a temporary trigger for clients that come before the real one, which takes them over. Finding a
/// trigger by name is linear in their number: keep what find() returned.

#pragma once

#include "Foundation/Notify/TclientServer.h"
#include "Foundation/String/Tstring.h"

class TtriggerPtrArray;

/// A server that all can find by its name.
///
/// \code
///   Ttrigger::find("redraw", 1)->addClient(&window, TtriggerMsg::fTypeid); // nobody has made it yet
///   Ttrigger redraw("redraw");                                             // now window is its client
///   redraw.trigger();
/// \endcode
///
/// All triggers of the process, conditions among them, stand in one array, in the order of their making. Of several
/// with one name the first is found. A trigger that is not temporary and meets a temporary one of its name changes
/// places with it and takes over its clients, who are told by Tclient::replaceServer(): of a derived class they meet no
/// more than the Ttrigger or Tcondition in it. A temporary one that find() made is never destroyed, so that its address
/// stays good, and it is found again when the other is gone.
class FOUNDATION_API Ttrigger : public TclientServer
{
public:
  /// \p temp: whether one that is not may take over its clients. Throws TmemoryException, also in taking over; clients
  /// that have come so far lose their registration.
  explicit Ttrigger(const Tstring& name, unsigned char temp = 0);

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  ~Ttrigger() override;

  /// Sends a TtriggerMsg.
  virtual void trigger();

  const Tstring& name() const noexcept { return fName; }
  unsigned char isTemp() const noexcept { return (fFlags & kTemporary) != 0; }

  /// The trigger of that name. Without one it is null or, if \p create is not 0, a temporary one made for it, for which
  /// it throws TmemoryException.
  static Ttrigger* find(const Tstring& name, unsigned char create);

  /// The triggers of the process. \p i is not checked.
  static unsigned int numTriggers() noexcept;
  static Ttrigger* triggerAtIndex(unsigned int i) noexcept;

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  enum Flags : unsigned char
  {
    kTemporary = 1,
    kOn = 2
  };

  /// For derived classes, whose constructor calls addTrigger() when it is done with what clients may ask for.
  Ttrigger(Tstring name, Flags flags) noexcept;

  /// Enters the trigger in the array, and takes over the clients of a temporary one, or leaves it.
  void addTrigger();
  void removeTrigger() noexcept;

  static TtriggerPtrArray& triggerArray() noexcept;

  Tstring fName;
  unsigned char fFlags; // of Flags
};
