#include "Foundation/Notify/Tcondition.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Notify/TdelayedClientServer.h"
#include "Foundation/Notify/TmessageCenter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

// Counts with a limit: a message takes in others up to 9.
class CountMsg : public TserverModifiedMsg
{
public:
  explicit CountMsg(int count = 1)
    : fCount(count)
  {
  }
  Tmetaclass* typeof() const override { return fTypeid; }
  unsigned char merge(const TserverMsg& later) override
  {
    const int sum = fCount + static_cast<const CountMsg&>(later).fCount;
    return sum <= 9 && (fCount = sum, true);
  }
  void copy(const TserverMsg& other) override
  {
    fCount = static_cast<const CountMsg&>(other).fCount;
    if (fCount == 8)
      throw fCount;
  }
  static Tmetaclass* fTypeid;
  int fCount;
};
void* createCount(Tmetaclass*)
{
  return new CountMsg;
}
Tmetaclass gCount(&CountMsg::fTypeid, "CountMsg", 8, createCount, 0, 0, &TserverModifiedMsg::fTypeid);
Tmetaclass* CountMsg::fTypeid = &gCount;

struct Client : Tclient
{
  std::string fHeard; // a digit for a CountMsg, else a letter of the class's name

  void serverModified(TclientServer*, const TserverMsg& msg) override
  {
    const std::string name = msg.typeof()->name();
    fHeard += name == "CountMsg" ? char('0' + static_cast<const CountMsg&>(msg).fCount) : name[name.length() - 4];
  }
  std::string heard() { return std::exchange(fHeard, ""); }
  void replaceServer(TclientServer*, TclientServer*) override { fHeard += 'R'; }
};

TEST(TserverMsg, isMadeByItsRecord)
{
  for (Tmetaclass* record : {TserverModifiedMsg::fTypeid, TserverDeletedMsg::fTypeid, TtriggerMsg::fTypeid,
                             TconditionChangedMsg::fTypeid, TconditionOnMsg::fTypeid, TconditionOffMsg::fTypeid,
                             TviewRegionModifiedMsg::fTypeid, TmaxViewRegionModifiedMsg::fTypeid})
  {
    const std::unique_ptr<TserverMsg> msg(static_cast<TserverMsg*>(TserverMsg::construct(record)));
    EXPECT_TRUE(*msg == record && msg->cast(record) == msg.get() && msg->cast(TserverMsg::fTypeid) == msg.get() &&
                !msg->cast(Tclient::fTypeid));
  }
  EXPECT_FALSE(TserverMsg::construct(TserverMsg::fTypeid) || TserverMsg::construct(Tclient::fTypeid) ||
               TserverMsg::construct(nullptr) || TconditionOnMsg::construct(TserverModifiedMsg::fTypeid));
}

TEST(TdelayedClientServer, holdsMessagesBack)
{
  TdelayedClientServer server;
  Client client;
  const auto delay = [&](Tmetaclass* type, unsigned char on) {
    server.delayNotification(type, on);
    return client.heard();
  };
  server.addClient(&client, CountMsg::fTypeid, nullptr, TserverModifiedMsg::fTypeid, nullptr, TtriggerMsg::fTypeid);
  delay(TserverModifiedMsg::fTypeid, 0); // nothing to take back
  delay(TserverModifiedMsg::fTypeid, 1);
  delay(TserverModifiedMsg::fTypeid, 1);
  EXPECT_TRUE(server.delayed(CountMsg::fTypeid) && !server.delayed(TserverMsg::fTypeid)); // with its base
  delay(CountMsg::fTypeid, 1);
  server.notifyClients(CountMsg(6));
  server.notifyClients(CountMsg(5)); // too many for one
  server.notifyClients(TserverModifiedMsg());
  server.notifyClients(CountMsg(3)); // the 6 takes it and goes to the end
  server.notifyClients(TserverModifiedMsg());
  server.notifyClients(CountMsg(8)); // cannot be copied
  server.notifyClients(TtriggerMsg());
  EXPECT_EQ(client.heard(), "8r");
  EXPECT_EQ(delay(TserverModifiedMsg::fTypeid, 0), "");
  EXPECT_EQ(delay(TserverModifiedMsg::fTypeid, 0), "d");
  server.forceNotification(TserverModifiedMsg::fTypeid); // there is none left
  server.forceNotification(CountMsg::fTypeid);
  EXPECT_EQ(client.heard(), "5");
  server.removeClient(&client);
  EXPECT_EQ(delay(CountMsg::fTypeid, 0), "");
  server.addClient(&client, CountMsg::fTypeid);
  server.forceNotification(CountMsg::fTypeid); // waited on, since nobody was there
  EXPECT_EQ(client.heard(), "9");

  static TdelayedClientServer* doomed;
  doomed = new TdelayedClientServer;
  doomed->addClient(&client, CountMsg::fTypeid, [](Tclient*, TclientServer*, const TserverMsg&) { delete doomed; });
  doomed->delayNotification(CountMsg::fTypeid, 1);
  doomed->notifyClients(CountMsg(6));
  doomed->notifyClients(CountMsg(7));
  doomed->delayNotification(CountMsg::fTypeid, 0); // the second one goes with the server
}

TEST(Ttrigger, takesOverFromATemporaryOne)
{
  Client client;
  const unsigned int before = Ttrigger::numTriggers();
  EXPECT_FALSE(Ttrigger::find("bell", 0));
  Ttrigger* const temporary = Ttrigger::find("bell", 1);
  EXPECT_TRUE(temporary->isTemp() && Ttrigger::triggerAtIndex(before) == temporary);
  EXPECT_FALSE(Tcondition::find("bell", 1)); // there is one that is no condition
  temporary->addClient(&client, TtriggerMsg::fTypeid);
  {
    Ttrigger bell("bell");
    EXPECT_TRUE(Ttrigger::find("bell", 0) == &bell && bell.hasClient(&client) && !temporary->hasClients());
    bell.trigger();
    EXPECT_EQ(client.heard(), "Rr");
  }
  EXPECT_EQ(Ttrigger::find("bell", 0), temporary);
  EXPECT_EQ(Ttrigger::numTriggers(), before + 1);
}

TEST(Tcondition, tellsOfChangesAndIsFollowed)
{
  Client client;
  Tcondition lit("lit", 1);
  TclientCondition any("any", 0);
  Tclient* const follower = &any;
  EXPECT_TRUE(any.typeof()->isa(Ttrigger::fTypeid) && any.cast(Tclient::fTypeid) == follower);
  EXPECT_TRUE(any.cast(TclientServer::fTypeid) == static_cast<TclientServer*>(&any));
  const auto watch = [](TclientServer& server, Tclient* by) {
    server.addClient(by, TconditionOnMsg::fTypeid, nullptr, TconditionOffMsg::fTypeid);
  };
  watch(any, &client);
  watch(lit, follower);
  EXPECT_TRUE(any == 1 && client.heard() == "n");
  lit = 1;
  Tcondition* const temporary = Tcondition::find("late", 1);
  EXPECT_TRUE(!*temporary && temporary->isTemp());
  watch(*temporary, follower);
  *temporary = 2;
  lit = 0;
  EXPECT_TRUE(any != 0 && any.state() == 1 && client.heard().empty());
  {
    Tcondition late("late", 0); // off, unlike the one that it takes the clients from
    EXPECT_TRUE(!any && client.heard() == "f");
    late.setState(1);
    EXPECT_EQ(client.heard(), "n");
  }
  EXPECT_TRUE(!any && client.heard() == "f"); // gone, and on to the last
  lit = 1;
  lit.removeClient(follower, TconditionOffMsg::fTypeid);
  EXPECT_TRUE(any);
  lit.removeClient(follower);
  EXPECT_EQ(client.heard(), "nf");
  {
    TclientCondition brief("brief", 0);
    watch(lit, &brief);
    EXPECT_TRUE(brief);
  }
  EXPECT_FALSE(lit.hasClients());
  any = 1;
  EXPECT_EQ(client.heard(), "n");
}

TEST(TmessageCenter, isABoardForAll)
{
  Client client;
  TmessageCenter::post(TtriggerMsg());
  TmessageCenter::messageBoard()->addClient(&client, TtriggerMsg::fTypeid);
  TmessageCenter::post(TtriggerMsg());
  EXPECT_EQ(client.heard(), "r");
  TmessageCenter::messageBoard()->removeClient(&client);
}

} // namespace
