#include "Foundation/Notify/TclientServer.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Debug/Texception.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>

namespace {

// Servers and clients that do at random, at each call, what callbacks may do, beside a model that knows who is called
// next.
class World
{
public:
  World(unsigned int seed, std::size_t clients)
    : fRandom(seed)
    , fClients(clients)
  {
    gWorld = this;
  }

  ~World() // callbacks throw to a callback only
  {
    for (TclientServer*& server : fServers)
    {
      destroy(server);
      delete server;
    }
  }

  void run(int acts)
  {
    while (acts-- > 0 && !testing::Test::HasFailure())
    {
      fActsLeft = 50;
      act(fClients.size() < 10 ? 1 : draw(80));
    }
    fActsLeft = 0;
  }

private:
  using Key = std::tuple<TclientServer*, Tmetaclass*, Tclient*>;

  struct Registration
  {
    bool isOn; // otherwise it may come back
    int callback;
    unsigned char enabled = 1;
  };

  struct Pass
  {
    TclientServer* from; // null when it is gone
    TclientServer* to;   // of a transfer
    std::vector<Key> due;
  };

  struct Client : Tclient
  {
    void replaceServer(TclientServer* from, TclientServer* to) override { gWorld->replaced(this, from, to); }
  };

  template <int number>
  static void callback(Tclient* client, TclientServer* server, const TserverMsg& msg)
  {
    gWorld->called({server, msg.typeof(), client}, number);
  }

  void called(const Key& key, int number)
  {
    ASSERT_TRUE(!fPasses.empty() && next() == key);
    ASSERT_EQ(fRegistrations[key].callback, number);
    for (unsigned acts = draw(4); acts-- > 0 && fActsLeft > 0;)
      act(1);
    if (draw(20) == 0)
      throw 1;
  }

  void replaced(Tclient* client, TclientServer* from, TclientServer* to)
  {
    const Pass& pass = *fPasses.back();
    const Key key = next();
    ASSERT_TRUE(std::get<2>(key) == client && pass.from == from && pass.to == to);
    if (draw(3) == 0)
      act(1);
    if (pass.from && isOn(key))
    {
      add({to, std::get<1>(key), client}, fRegistrations[key].callback);
      remove(key);
    }
  }

  unsigned draw(std::size_t below) { return unsigned(fRandom() % below); }

  bool isOn(const Key& key) const
  {
    const auto found = fRegistrations.find(key);
    return found != fRegistrations.end() && found->second.isOn;
  }

  void add(const Key& key, int number)
  {
    fRegistrations.try_emplace(key, Registration{true, number}).first->second.isOn = true;
  }

  bool remove(const Key& key)
  {
    if (!isOn(key))
      return false;
    fRegistrations[key].isOn = false;
    settle(key);
    return true;
  }

  // Who is away from a server without a pass has lost everything.
  void settle(Key key)
  {
    const auto isOver = [&](const Pass* pass) { return pass->from != std::get<0>(key); };
    if (!isOn(key) && std::all_of(fPasses.begin(), fPasses.end(), isOver))
      fRegistrations.erase(key);
  }

  std::vector<Key> registered(TclientServer* server, Tmetaclass* type = nullptr) const
  {
    std::vector<Key> keys;
    for (const auto& [key, registration] : fRegistrations)
    {
      if (registration.isOn && std::get<0>(key) == server && (!type || std::get<1>(key) == type))
        keys.push_back(key);
    }
    return keys;
  }

  std::vector<Key> heardBy(TclientServer* server, Tmetaclass* type) const
  {
    return fOff.contains(server) ? std::vector<Key>() : registered(server, type);
  }

  // Whom the innermost pass calls next; it is then no longer due.
  Key next()
  {
    Pass& pass = *fPasses.back();
    while (pass.from && !pass.due.empty())
    {
      const Key key = pass.due.front();
      pass.due.erase(pass.due.begin());
      if (isOn(key) && (pass.to || fRegistrations[key].enabled))
        return key;
    }
    return {};
  }

  template <class Send>
  void run(Pass pass, Send send)
  {
    fPasses.push_back(&pass);
    bool threw = false;
    try
    {
      send();
    }
    catch (int)
    {
      threw = true;
    }
    EXPECT_TRUE(threw || next() == Key());
    fPasses.pop_back();
    for (auto each = fRegistrations.begin(); each != fRegistrations.end();)
      settle(each++->first);
    if (threw && !fPasses.empty() && draw(2))
      throw 1;
  }

  void destroy(TclientServer*& server)
  {
    TclientServer* const old = std::exchange(server, new TclientServer);
    for (Pass* pass : fPasses)
      pass->from = pass->from == old ? nullptr : pass->from;
    run({old, nullptr, heardBy(old, TserverDeletedMsg::fTypeid)}, [old] { delete old; });
    fOff.erase(old);
    std::erase_if(fRegistrations, [old](const auto& each) { return std::get<0>(each.first) == old; });
  }

  void act(unsigned times)
  {
    --fActsLeft;
    TclientServer*& server = fServers[draw(3)];
    TclientServer*& other = fServers[draw(3)];
    Tmetaclass* const type = fTypes[draw(3)];
    const unsigned index = draw(fClients.size());
    Tclient* const client = &fClients[index];
    const unsigned char on = draw(3) != 0;
    const std::unique_ptr<TserverMsg> message(static_cast<TserverMsg*>(TserverMsg::construct(type)));
    std::vector<Key> due = registered(server);
    switch (draw(fPasses.size() > 5 ? 12 : 17))
    {
    case 0:
      for (const Key& key : due)
      {
        if (std::get<2>(key) == client)
          fRegistrations[key].enabled = on;
      }
      server->setClientNotify(client, on);
      break;
    case 1: // the client goes for good
      for (TclientServer* each : fServers)
      {
        bool was = false;
        for (Tmetaclass* typeOfEach : fTypes)
          was |= remove({each, typeOfEach, client});
        EXPECT_EQ(each->removeClient(client), was ? 0 : -1);
      }
      std::construct_at((std::destroy_at(&fClients[index]), &fClients[index]));
      break;
    case 2:
      EXPECT_EQ(server->setClientNotify(on), !fOff.contains(server));
      on ? void(fOff.erase(server)) : void(fOff.insert(server));
      break;
    case 12:
    case 13: run({server, nullptr, heardBy(server, type)}, [&] { server->notifyClients(*message); }); break;
    case 14:
      due.assign(isOn({server, type, client}) && !fOff.contains(server), {server, type, client});
      run({server, nullptr, due}, [&] { server->notifyClient(client, *message); });
      break;
    case 15:
      std::reverse(due.begin(), due.end());
      if (server != other)
        run({server, other, due}, [&] { server->transferClients(other); });
      break;
    case 16:
      if (std::none_of(fPasses.begin(), fPasses.end(), [&](const Pass* pass) { return pass->to == server; }))
        destroy(server);
      break;
    default:
      for (unsigned i = 0; i < times; ++i)
      {
        const Key key(server, type, &fClients[(index + i * 37) % fClients.size()]);
        if (draw(2))
          EXPECT_EQ(server->removeClient(std::get<2>(key), type), remove(key) ? 0 : -1);
        else
        {
          server->addClient(std::get<2>(key), type, on ? callback<1> : callback<0>);
          add(key, on);
        }
      }
    }
    const auto isAnyOn = [](const auto& each) { return each.second.isOn; };
    ASSERT_EQ(TclientServer::totalClients(), std::count_if(fRegistrations.begin(), fRegistrations.end(), isAnyOn));
    const auto isKnown = [&](Tmetaclass* of) { // whoever left during a pass is, until its end
      return std::any_of(fRegistrations.begin(), fRegistrations.end(), [&](const auto& each) {
        return std::get<0>(each.first) == other && (!of || std::get<1>(each.first) == of);
      });
    };
    ASSERT_EQ(other->hasClients(), isKnown(nullptr));
    ASSERT_EQ(other->hasMessage(type), isKnown(type));
    ASSERT_EQ(other->hasClient(client, type), isOn({other, type, client}));
    ASSERT_LE(other->hasClient(client, type), other->hasClient(client));
  }

  static inline World* gWorld;

  std::mt19937 fRandom;
  std::vector<Client> fClients;
  TclientServer* fServers[3] = {new TclientServer, new TclientServer, new TclientServer};
  std::map<Key, Registration> fRegistrations;
  std::set<TclientServer*> fOff; // that are switched off
  std::vector<Pass*> fPasses;
  int fActsLeft = 0;
  Tmetaclass* const fTypes[3] = {TserverModifiedMsg::fTypeid, TtriggerMsg::fTypeid, TserverDeletedMsg::fTypeid};
};

TEST(TclientServer, callsWhomItsModelCalls)
{
  for (unsigned int seed = 0; seed < 60 && !HasFailure(); ++seed)
  {
    SCOPED_TRACE(seed);
    World(seed, std::initializer_list<std::size_t>{2, 5, 9, 200}.begin()[seed % 4]).run(400);
  }
}

// A client that does what it is told.
struct Client : Tclient
{
  std::function<void()> fAct = [] {};
  std::string fHeard; // m for serverModified, d for serverDeleted, r for replaceServer

  void serverModified(TclientServer*, const TserverMsg&) override
  {
    fHeard += 'm';
    fAct();
  }
  void serverDeleted(TclientServer*, const TserverMsg&) override { fHeard += 'd'; }
  void replaceServer(TclientServer*, TclientServer*) override { fHeard += 'r'; }
};

TEST(TclientServer, sendsToWhomItShould)
{
  Client client;
  {
    TclientServer server, other;
    server.addClient(&client);
    server.addClient(&client, TserverDeletedMsg::fTypeid, nullptr, TtriggerMsg::fTypeid, Tclient::serverDeletedCB,
                     nullptr, nullptr, TconditionOnMsg::fTypeid); // up to null
    server.addClient(nullptr);
    server.addClient(&client, nullptr);
    EXPECT_EQ(TclientServer::totalClients(), 3);
    server.transferClients(nullptr);
    server.transferClients(&server);
    for (const bool isClosing : {true, false})
    {
      g_bClosing = isClosing;
      server.transferClients(&other);
      EXPECT_EQ(server.hasClients(), isClosing);
      other.notifyClients(TtriggerMsg());
      other.notifyClient(&client, TserverModifiedMsg());
    }
    static int visits;
    visits = 0;
    other.debugIterate([](Tclient*, Tmetaclass*) { ++visits; });
    EXPECT_EQ(visits, 3);
    other.setClientNotify(&client, 7);
    EXPECT_EQ(other.setClientNotify(&client, 1), 7);
  }
  EXPECT_EQ(client.fHeard, "rrrdmd");
}

TEST(TclientServer, sweepsAtTheEnd)
{
  TclientServer server;
  Client clients[5]; // so many that one that is away is not worth dropping
  for (Client& client : clients)
    server.addClient(&client);
  clients[0].fAct = [&] { server.removeClient(&clients[2]); };
  server.notifyClients(TserverModifiedMsg());
  // However often others leave, one that is away is not taken for one that has just left.
  clients[0].fAct = [&] { server.removeClient(&clients[1]); };
  for (int i = 0; i < 0x10000 - 3; ++i) // until the mark of then comes up again
  {
    server.notifyClients(TserverModifiedMsg());
    server.addClient(&clients[1]);
  }
  clients[0].fAct = [&] { server.addClient(&clients[2]); };
  server.notifyClients(TserverModifiedMsg());
  EXPECT_EQ(clients[2].fHeard, "");
  EXPECT_TRUE(server.hasClient(&clients[2]));
}

#if FAILING_MEMORY
TEST(TclientServer, staysAsItWasWithoutMemory)
{
  const int runs = forEachFailingAllocation([] {
    Client clients[80];
    TclientServer server, other;
    const auto tried = [](auto act) {
      const Tint32 before = TclientServer::totalClients();
      try
      {
        act();
        return true;
      }
      catch (const TmemoryException&)
      {
        EXPECT_EQ(TclientServer::totalClients(), before);
        return false;
      }
    };
    // The pass within needs a list.
    const auto nest = [&] {
      server.removeClient(&clients[1]);
      clients[0].fAct = [] {};
      const std::size_t heard = clients[79].fHeard.length();
      const bool sent = tried([&] { server.notifyClients(TserverModifiedMsg()); });
      EXPECT_EQ(clients[79].fHeard.length(), heard + (sent && server.hasClient(&clients[79])));
    };
    clients[0].fAct = std::ref(nest); // needs no memory
    bool isRegistered[80];
    for (int i = 0; i < 80; ++i)
      isRegistered[i] = tried([&] { server.addClient(&clients[i]); });
    server.notifyClients(TserverModifiedMsg());
    tried([&] { server.transferClients(&other); });
    for (int i = 2; i < 80; ++i)
      EXPECT_EQ(server.hasClient(&clients[i]) + other.hasClient(&clients[i]), isRegistered[i]);
  });
  EXPECT_GT(runs, 20);
}
#endif

} // namespace
