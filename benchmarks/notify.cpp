// What notification costs beside Boost.Signals2 (with its default and its dummy mutex), libsigc++, Qt's direct
// connections and a plain vector of std::function.
//
// Each receiver is an object of its own and adds what it hears to its sum. "emit" makes 100,000 calls, 1, 10 or 1,000
// with one message. "connect" registers 10,000 receivers in random order and "disconnect" removes them in another, by
// what each peer wants kept for that; a vector is searched. "leave" sends to 1,000 receivers of whom every other leaves
// while it is called; the vector cannot do that. "growth" is our own connect and disconnect alone, at sizes that grow
// tenfold: n log n is 10 to 13 times as long for each step, n squared 100 times. The sums are checked.
//
// One table alone: --benchmark_filter=emit.10/

#include "Foundation/Notify/TclientServer.h"
#include "benchmarks/Ratios.h"

#include <QObject>
#include <boost/signals2.hpp>
#include <sigc++/sigc++.h>

#include <cstdlib>
#include <memory>
#include <numeric>
#include <random>

namespace {

struct Receiver : Tclient
{
  long sum = 0;
  std::function<void()> leave;
};

// What every receiver does, however it is called.
void hear(Receiver& receiver, long value)
{
  receiver.sum += value;
}
void hearAndLeave(Receiver& receiver, long value)
{
  hear(receiver, value);
  if (receiver.leave)
    receiver.leave();
}

struct ValueMsg : TserverModifiedMsg
{
  long value;
  explicit ValueMsg(long sent)
    : value(sent)
  {
  }
};

template <void (*hears)(Receiver&, long)>
struct Ours
{
  TclientServer server;
  void connect(std::size_t, Receiver& receiver)
  {
    server.addClient(&receiver, TserverModifiedMsg::fTypeid,
                     [](Tclient* client, TclientServer*, const TserverMsg& msg) {
                       hears(static_cast<Receiver&>(*client), static_cast<const ValueMsg&>(msg).value);
                     });
  }
  void disconnect(std::size_t, Receiver& receiver) { server.removeClient(&receiver, TserverModifiedMsg::fTypeid); }
  void emit(long value) { server.notifyClients(ValueMsg(value)); }
};

template <void (*hears)(Receiver&, long), class Signal, class Connection>
struct Signals
{
  Signal signal;
  std::vector<Connection> connections;
  void connect(std::size_t i, Receiver& receiver)
  {
    if (connections.size() <= i)
      connections.resize(i + 1);
    connections[i] = signal.connect([&receiver](long value) { hears(receiver, value); });
  }
  void disconnect(std::size_t i, Receiver&) { connections[i].disconnect(); }
  void emit(long value) { signal(value); }
};
template <void (*hears)(Receiver&, long)>
using Boost = Signals<hears, boost::signals2::signal<void(long)>, boost::signals2::connection>;
template <void (*hears)(Receiver&, long)>
using BoostDummy = Signals<
  hears,
  boost::signals2::signal_type<void(long), boost::signals2::keywords::mutex_type<boost::signals2::dummy_mutex>>::type,
  boost::signals2::connection>;
template <void (*hears)(Receiver&, long)>
using Sigc = Signals<hears, sigc::signal<void, long>, sigc::connection>;

class Sender : public QObject
{
  Q_OBJECT
public:
  Q_SIGNAL void sent(long value);
};

template <void (*hears)(Receiver&, long)>
struct QtSender
{
  Sender sender;
  std::vector<QMetaObject::Connection> connections;
  void connect(std::size_t i, Receiver& receiver)
  {
    if (connections.size() <= i)
      connections.resize(i + 1);
    connections[i] = QObject::connect(&sender, &Sender::sent, [&receiver](long value) { hears(receiver, value); });
  }
  void disconnect(std::size_t i, Receiver&) { QObject::disconnect(connections[i]); }
  void emit(long value) { Q_EMIT sender.sent(value); }
};

template <void (*hears)(Receiver&, long)>
struct Vector
{
  std::vector<std::pair<std::size_t, std::function<void(long)>>> functions;
  void connect(std::size_t i, Receiver& receiver)
  {
    functions.emplace_back(i, [&receiver](long value) { hears(receiver, value); });
  }
  void disconnect(std::size_t i, Receiver&)
  {
    functions.erase(
      std::find_if(functions.begin(), functions.end(), [i](const auto& each) { return each.first == i; }));
  }
  [[gnu::noinline]] void emit(long value)
  {
    for (const auto& each : functions)
      each.second(value);
  }
};

// The compiler takes it that others know the sender, as they know a member of an object.
template <class Sender>
void makeKnown(Sender& sender)
{
  asm volatile("" : : "r"(&sender) : "memory");
}

void require(bool good, const char* name)
{
  if (!good)
  {
    std::fprintf(stderr, "notify: %s went wrong\n", name);
    std::_Exit(1);
  }
}

std::vector<std::size_t> shuffled(std::size_t count, unsigned seed)
{
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t(0));
  std::shuffle(order.begin(), order.end(), std::mt19937(seed));
  return order;
}

std::vector<Case> gCases;
std::vector<Aim> gAims;

template <template <void (*)(Receiver&, long)> class Peer>
void addEmit(const char* name, bool ours)
{
  for (const std::size_t count : {1, 10, 1000})
  {
    const std::string table = "emit." + std::to_string(count);
    gCases.push_back({table, name, ours, 20, [=] {
                        const auto peer = std::make_unique<Peer<hear>>();
                        std::vector<Receiver> receivers(count);
                        for (const std::size_t i : shuffled(count, 1))
                          peer->connect(i, receivers[i]);
                        const std::size_t times = 100000 / count;
                        peer->emit(1);
                        const double time = seconds([&] {
                          for (std::size_t i = 0; i < times; ++i)
                          {
                            makeKnown(*peer);
                            peer->emit(long(i & 1));
                          }
                        });
                        for (const Receiver& receiver : receivers)
                          require(receiver.sum == long(times / 2 + 1), name);
                        return time;
                      }});
    if (count < 1000 && !ours)
    {
      if (const std::string peer = name; peer == "vector" || peer.find("boost") == 0)
        gAims.push_back({table, "ours", name, peer == "vector" ? 1.0 : 0.2});
    }
  }
}

// Seconds for connecting and disconnecting.
template <template <void (*)(Receiver&, long)> class Peer>
std::pair<double, double> churn(const char* name, std::size_t count)
{
  const auto peer = std::make_unique<Peer<hear>>();
  std::vector<Receiver> receivers(count);
  const auto in = shuffled(count, 2), out = shuffled(count, 3);
  const double connects = seconds([&] {
    for (const std::size_t i : in)
      peer->connect(i, receivers[i]);
    peer->emit(1); // with what is put off until then
  });
  const double disconnects = seconds([&] {
    for (const std::size_t i : out)
      peer->disconnect(i, receivers[i]);
  });
  peer->emit(1);
  for (const Receiver& receiver : receivers)
    require(receiver.sum == 1, name);
  return {connects, disconnects};
}

template <template <void (*)(Receiver&, long)> class Peer>
void addChurn(const char* name, bool ours)
{
  gCases.push_back({"connect.10000", name, ours, 1, [=] { return churn<Peer>(name, 10000).first; }});
  gCases.push_back({"disconnect.10000", name, ours, 1, [=] { return churn<Peer>(name, 10000).second; }});
}

template <template <void (*)(Receiver&, long)> class Peer>
void addLeave(const char* name, bool ours)
{
  gCases.push_back({"leave.1000", name, ours, 1, [=] {
                      double time = 0;
                      for (int round = 0; round < 100; ++round)
                      {
                        const auto peer = std::make_unique<Peer<hearAndLeave>>();
                        std::vector<Receiver> receivers(1000);
                        for (const std::size_t i : shuffled(1000, 4))
                          peer->connect(i, receivers[i]);
                        peer->emit(0);
                        for (std::size_t i = 1; i < 1000; i += 2)
                        {
                          receivers[i].leave = [&receivers, i, from = peer.get()] {
                            from->disconnect(i, receivers[i]);
                          };
                        }
                        time += seconds([&] { peer->emit(1); });
                        peer->emit(1);
                        for (std::size_t i = 0; i < 1000; ++i)
                          require(receivers[i].sum == 2 - long(i % 2), name);
                      }
                      return time;
                    }});
}

template <template <void (*)(Receiver&, long)> class Peer>
void addAll(const char* name, bool ours)
{
  addEmit<Peer>(name, ours);
  addChurn<Peer>(name, ours);
  addLeave<Peer>(name, ours);
}

void addGrowth()
{
  for (const std::size_t count : {1000, 10000, 100000, 1000000})
  {
    const std::string name = std::to_string(count);
    gCases.push_back({"growth", "connect." + name, true, 1, [=] { return churn<Ours>("ours", count).first; }});
    gCases.push_back({"growth", "disconnect." + name, true, 1, [=] { return churn<Ours>("ours", count).second; }});
  }
}

} // namespace

int main(int argc, char** argv)
{
  addAll<Ours>("ours", true);
  addAll<Boost>("boost", false);
  addAll<BoostDummy>("boost, no mutex", false);
  addAll<Sigc>("libsigc++", false);
  addAll<QtSender>("Qt", false);
  addEmit<Vector>("vector", false);
  addChurn<Vector>("vector", false);
  addGrowth();
  return runRatios(argc, argv, gCases, gAims);
}

#include "notify.moc"
