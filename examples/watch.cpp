// A view that watches a lamp.
#include <Foundation/Data/Tmetaclass.h>
#include <Foundation/Notify/TdelayedClientServer.h>

#include <iostream>

namespace {

//! [watch]
class Tlamp : public TdelayedClientServer
{
public:
  void dim(double brightness)
  {
    fBrightness = brightness;
    notifyClients(TserverModifiedMsg());
  }
  double fBrightness = 1;
};

class Tview : public Tclient
{
public:
  explicit Tview(Tlamp& lamp)
    : fLamp(&lamp)
  {
    lamp.addClient(this); // for TserverModifiedMsg
    lamp.addClient(this, TserverDeletedMsg::fTypeid);
  }
  ~Tview() override
  {
    if (fLamp)
      fLamp->removeClient(this);
  }

  void serverModified(TclientServer*, const TserverMsg&) override
  {
    ++fRedraws;
    std::cout << "the lamp is at " << fLamp->fBrightness << '\n';
  }
  void serverDeleted(TclientServer*, const TserverMsg&) override
  {
    fLamp = nullptr;
    std::cout << "the lamp is gone\n";
  }

  int fRedraws = 0;

private:
  Tlamp* fLamp;
};
//! [watch]

} // namespace

int main()
{
  auto* lamp = new Tlamp;
  Tview view(*lamp);
  lamp->dim(0.5);

  //! [delay]
  lamp->delayNotification(TserverModifiedMsg::fTypeid, 1);
  for (int i = 0; i < 10; ++i)
    lamp->dim(0.04 * i);
  lamp->delayNotification(TserverModifiedMsg::fTypeid, 0); // the view hears of it once
  //! [delay]

  delete lamp;
  return view.fRedraws == 2 && TclientServer::totalClients() == 0 ? 0 : 1;
}
