#include "Foundation/Notify/TclientServer.h"

#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Data/Typed.h"

#include <algorithm>
#include <bit>
#include <functional>

TYPE_RECORD(TclientServer, 12, nullptr, 0, 0);
TYPE_CAST(TclientServer, Tuntyped)

Tint32 TclientServer::fsTotalClients = 0;

// The registrations of a server.
//
// The clients of a message class stand in one array. Its first fSorted entries are in order; behind them newcomers form
// runs in order, of kRun times a power of two each, the largest first, and of less than kRun at last. A newcomer goes
// into the last run, and a run that is as long as the one before it is merged into that, as ones are carried in a
// binary counter. That way registering takes logarithmic time on average and so many runs are all there is to search. A
// pass, which looks at all clients anyway, has it all merged first.
//
// Who leaves is marked. Marked entries are dropped when they are more than the others, but not during passes.
//
// During passes over an array nothing moves in its sorted part. A pass walks along it, and whoever joins is behind it.
// A pass within that would have to merge, or that meets entries that may come back to life, takes a list of those it
// has to call with it instead.
class TclientServer::Table
{
public:
  struct Entry
  {
    Tclient* fClient;
    Callback fCallback;
    TuInt16 fMark = kRegistered; // who left during the passes under way has fSerial, who left earlier any other
    unsigned char fEnabled = 1;

    const void* key() const { return fClient; }
    bool isRegistered() const { return fMark == kRegistered; }
    bool isCalled() const { return isRegistered() && fEnabled; }
  };
  static_assert(sizeof(Entry) <= 3 * sizeof(void*));

  struct Clients
  {
    TtypedArray<Entry> fEntries;
    unsigned int fSorted = 0;
    unsigned int fRegistered = 0; // entries that are not marked
    unsigned int fLeaving = 0;    // entries that left during the passes under way and may come back

    // Who left during the passes under way counts until they are over.
    bool hasAny() const { return fRegistered + fLeaving != 0; }
    const Entry* begin() const { return fEntries.begin(); }
    const Entry* end() const { return fEntries.end(); }
  };

  struct Message
  {
    Tmetaclass* fType;
    Clients* fClients;

    const void* key() const { return fType; }
  };

  struct Registration
  {
    Tclient* fClient;
    Tmetaclass* fType;
  };

  // A pass under way; on the stack.
  class Pass
  {
  public:
    explicit Pass(Table& table, const Clients* clients = nullptr)
      : fTable(&table)
      , fClients(clients)
      , fOuter(table.fPass)
    {
      table.fPass = this;
    }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass()
    {
      if (!fTable)
        return;
      fTable->fPass = fOuter;
      if (!fOuter && fTable->fAnyLeft)
        fTable->endPasses();
    }

    // Whether the server is still there.
    bool goesOn() const { return fTable != nullptr; }

    // Calls a client. Returns goesOn().
    bool call(const Entry& entry, TclientServer* server, const TserverMsg& msg) const
    {
      try
      {
        entry.fCallback(entry.fClient, server, msg);
      }
      catch (...)
      {
        if (!fTable || !fTable->fIsLast)
          throw;
      }
      return goesOn();
    }

  private:
    friend class Table;

    Table* fTable;           // null when the server is gone
    const Clients* fClients; // that it is over, or null
    Pass* fOuter;
  };

  Table() = default;
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table();

  // The clients of a message class, null if there is nothing of them.
  Clients* clients(const Tmetaclass* type) const;

  // The entry of a client: the one that is registered or may come back, else one that is gone and may be taken again;
  // else null.
  Entry* find(Clients& clients, const Tclient* client) const;

  // The entry of a registered client or null.
  Entry* registered(Clients& clients, const Tclient* client) const
  {
    Entry* entry = find(clients, client);
    return entry && entry->isRegistered() ? entry : nullptr;
  }

  // Whether it was not registered.
  bool add(Tmetaclass* type, Tclient* client, Callback callback);

  // Whether it was registered. Clients without registrations go with the last one.
  bool remove(Tmetaclass* type, const Tclient* client);

  // Whether the sorted entries are, and will be, those that a pass beginning now has to call.
  bool isInOrder(Clients& clients)
  {
    if (clients.fSorted != clients.fEntries.length() && !isPassedOver(clients))
      sort(clients);
    return clients.fSorted == clients.fEntries.length() && clients.fLeaving == 0;
  }

  bool isPassedOver(const Clients& clients) const;

  // Ends all passes and makes the next one the last.
  void close();

  bool deliverByList(Clients& clients, TclientServer* server, const TserverMsg& msg);

  // In order of message classes and clients.
  void listRegistrations(TtypedArray<Registration>& list) const;

  TtypedArray<Message>& messages() { return fMessages; }

private:
  static constexpr TuInt16 kRegistered = 0;
  static constexpr TuInt16 kGone = 1; // left while there was no pass
  static constexpr TuInt16 kFirstSerial = 2;
  static constexpr unsigned int kRun = 32;

  bool isGone(const Entry& entry) const { return !entry.isRegistered() && entry.fMark != fSerial; }

  Clients& makeClients(Tmetaclass* type);
  static unsigned int runEnd(const Clients& clients, unsigned int first);
  static void append(Clients& clients, const Entry& entry);
  static void list(const Clients& clients, TtypedArray<Tclient*>& list);
  void sort(Clients& clients) const;
  void tidy(const Message& message);
  void endPasses();

  TtypedArray<Message> fMessages{1}; // in order of the types' addresses
  Pass* fPass = nullptr;             // the innermost
  TuInt16 fSerial = kFirstSerial;    // advances with the end of the outermost pass during which somebody left
  bool fAnyLeft = false;             // during the passes under way
  bool fIsLast = false;              // the server is being destroyed
};

namespace {

bool comesFirst(const void* left, const void* right)
{
  return std::less<>()(left, right);
}

template <class Entry>
bool isBefore(const Entry& left, const Entry& right)
{
  return comesFirst(left.key(), right.key());
}

// The entry of a key in a sorted range, or null.
template <class Entry>
Entry* search(Entry* first, unsigned int count, const void* key)
{
  // Multiplied, since a jump would be guessed wrong half the time.
  while (count > 1)
  {
    const unsigned int half = count / 2;
    first += half * unsigned(comesFirst(first[half - 1].key(), key));
    count -= half;
  }
  return count != 0 && first->key() == key ? first : nullptr;
}

} // namespace

TclientServer::Table::~Table()
{
  for (const Message& message : fMessages)
  {
    fsTotalClients -= Tint32(message.fClients->fRegistered);
    delete message.fClients;
  }
}

inline TclientServer::Table::Clients* TclientServer::Table::clients(const Tmetaclass* type) const
{
  const Message* message = search(fMessages.data(), fMessages.length(), type);
  return message ? message->fClients : nullptr;
}

bool TclientServer::Table::isPassedOver(const Clients& clients) const
{
  const Pass* pass = fPass;
  while (pass && pass->fClients != &clients)
    pass = pass->fOuter;
  return pass;
}

TclientServer::Table::Clients& TclientServer::Table::makeClients(Tmetaclass* type)
{
  if (Clients* there = clients(type))
    return *there;
  fMessages.buffer(1);
  Clients* const made = makeNew<Clients>();
  const Message message{type, made};
  fMessages.insert(message, unsigned(std::lower_bound(fMessages.begin(), fMessages.end(), message, isBefore<Message>) -
                                     fMessages.begin()));
  return *made;
}

// Where the run ends that begins at an index. The sorted entries count as one.
unsigned int TclientServer::Table::runEnd(const Clients& clients, unsigned int first)
{
  const unsigned int rest = clients.fEntries.length() - first;
  if (first < clients.fSorted)
    return clients.fSorted;
  return first + (rest < kRun ? rest : kRun * std::bit_floor(rest / kRun));
}

TclientServer::Table::Entry* TclientServer::Table::find(Clients& clients, const Tclient* client) const
{
  Entry* gone = nullptr;
  for (unsigned int first = 0, last = 0; first != clients.fEntries.length(); first = last)
  {
    last = runEnd(clients, first);
    Entry* const found = search(clients.fEntries.data() + first, last - first, client);
    if (found && (first >= clients.fSorted || !isGone(*found)))
      return found;
    gone = found ? found : gone;
  }
  return gone && !isPassedOver(clients) ? gone : nullptr; // a pass would take it for one that was there at its start
}

void TclientServer::Table::append(Clients& clients, const Entry& entry)
{
  clients.fEntries.addLast(entry);
  const unsigned int count = clients.fEntries.length() - clients.fSorted;
  Entry* const end = clients.fEntries.end();
  Entry* const run = end - (count - 1) % kRun - 1;
  std::rotate(std::upper_bound(run, end - 1, entry, isBefore<Entry>), end - 1, end);
  if (count % kRun != 0)
    return;
  for (unsigned int length = kRun; count % (2 * length) == 0; length *= 2)
    std::inplace_merge(end - 2 * length, end - length, end, isBefore<Entry>);
}

// Drops who is gone and brings the others in order. There must be no pass over them.
void TclientServer::Table::sort(Clients& clients) const
{
  Entry* const entries = clients.fEntries.data();
  Entry* runs[32];
  unsigned int count = 0;
  Entry* end = entries;
  for (unsigned int first = 0, last = 0; first != clients.fEntries.length(); first = last)
  {
    last = runEnd(clients, first);
    runs[count++] = end;
    for (const Entry* entry = entries + first; entry != entries + last; ++entry)
    {
      if (!isGone(*entry))
        *end++ = *entry;
    }
  }
  while (count > 1) // the short ones first
  {
    --count;
    std::inplace_merge(runs[count - 1], runs[count], end, isBefore<Entry>);
  }
  clients.fEntries.removeLast(unsigned(clients.fEntries.end() - end));
  clients.fSorted = clients.fEntries.length();
}

bool TclientServer::Table::add(Tmetaclass* type, Tclient* client, Callback callback)
{
  Clients& clients = makeClients(type);
  Entry* const entry = find(clients, client);
  if (!entry)
    append(clients, {client, callback});
  else if (entry->isRegistered())
    return false;
  else if (isGone(*entry))
    *entry = {client, callback};
  else
  {
    entry->fMark = kRegistered;
    --clients.fLeaving;
  }
  ++clients.fRegistered;
  ++fsTotalClients;
  return true;
}

bool TclientServer::Table::remove(Tmetaclass* type, const Tclient* client)
{
  const Message* message = search(fMessages.data(), fMessages.length(), type);
  Entry* const entry = message ? registered(*message->fClients, client) : nullptr;
  if (!entry)
    return false;
  Clients& clients = *message->fClients;
  --clients.fRegistered;
  --fsTotalClients;
  if (fPass)
  {
    entry->fMark = fSerial;
    ++clients.fLeaving;
    fAnyLeft = true;
  }
  else
  {
    entry->fMark = kGone;
    tidy(*message);
  }
  return true;
}

// Drops what is not worth its place any more, when there is no pass.
void TclientServer::Table::tidy(const Message& message)
{
  Clients& clients = *message.fClients;
  if (clients.fRegistered == 0)
  {
    delete message.fClients;
    fMessages.removeAt(unsigned(&message - fMessages.begin()));
  }
  else if (clients.fEntries.length() - clients.fRegistered > clients.fRegistered)
    sort(clients);
}

void TclientServer::Table::endPasses()
{
  fAnyLeft = false;
  const bool wraps = ++fSerial == 0;
  for (unsigned int i = fMessages.length(); i-- > 0;)
  {
    Clients& clients = *fMessages[i].fClients;
    clients.fLeaving = 0;
    if (wraps) // no mark that is there may come up again
      sort(clients);
    tidy(fMessages[i]);
  }
  if (wraps)
    fSerial = kFirstSerial;
}

// A pass over who is registered now, whatever is moved meanwhile. Whether the server is still there.
bool TclientServer::Table::deliverByList(Clients& clients, TclientServer* server, const TserverMsg& msg)
{
  TtypedArray<Tclient*> due;
  list(clients, due);
  const Pass pass(*this, &clients);
  for (Tclient* client : due)
  {
    const Entry* const entry = find(clients, client);
    if (entry && entry->isCalled() && !pass.call(*entry, server, msg))
      return false;
  }
  return true;
}

void TclientServer::Table::close()
{
  for (; fPass; fPass = fPass->fOuter)
    fPass->fTable = nullptr;
  endPasses();
  fIsLast = true;
}

void TclientServer::Table::list(const Clients& clients, TtypedArray<Tclient*>& list)
{
  for (const Entry& entry : clients)
  {
    if (entry.isRegistered())
      list.addLast(entry.fClient);
  }
  std::sort(list.begin(), list.end(), comesFirst);
}

void TclientServer::Table::listRegistrations(TtypedArray<Registration>& registrations) const
{
  for (const Message& message : fMessages)
  {
    TtypedArray<Tclient*> clients;
    list(*message.fClients, clients);
    for (Tclient* client : clients)
      registrations.addLast({client, message.fType});
  }
}

TclientServer::~TclientServer()
{
  if (!fTable)
    return;
  fTable->close();
  deliver(TserverDeletedMsg());
  delete fTable;
}

void TclientServer::notifyClients(const TserverMsg& msg)
{
  deliver(msg);
}

bool TclientServer::deliver(const TserverMsg& msg)
{
  if (g_bClosing || !fTable || !fClientNotify)
    return true;
  Table::Clients* const clients = fTable->clients(msg.typeof());
  if (!clients)
    return true;
  if (!fTable->isInOrder(*clients))
    return fTable->deliverByList(*clients, this, msg);
  const Table::Pass pass(*fTable, clients);
  for (unsigned int i = 0; i < clients->fSorted; ++i)
  {
    const Table::Entry& entry = clients->fEntries[i]; // they move when a callback makes one more
    if (entry.isCalled() && !pass.call(entry, this, msg))
      return false;
  }
  return true;
}

void TclientServer::notifyClient(Tclient* client, const TserverMsg& msg)
{
  if (g_bClosing || !acceptsMessage(client, msg.typeof()))
    return;
  const Table::Pass pass(*fTable);
  pass.call(*fTable->find(*fTable->clients(msg.typeof()), client), this, msg);
}

void TclientServer::addClientHook(Tclient*, Tmetaclass*) {}

void TclientServer::removeClientHook(Tclient*, Tmetaclass*) {}

void TclientServer::addClient(Tclient* client, Tmetaclass* msg, Callback callback)
{
  if (!client || !msg)
    return;
  if (!callback)
    callback = msg == TserverDeletedMsg::fTypeid ? Tclient::serverDeletedCB : Tclient::serverModifiedCB;
  if (!fTable)
    fTable = makeNew<Table>();
  if (fTable->add(msg, client, callback))
    addClientHook(client, msg);
}

void TclientServer::addClient(Tclient* client, Tmetaclass* msg1, Callback callback1, Tmetaclass* msg2,
                              Callback callback2, Tmetaclass* msg3, Callback callback3, Tmetaclass* msg4,
                              Callback callback4, Tmetaclass* msg5, Callback callback5)
{
  const std::pair<Tmetaclass*, Callback> pairs[] = {
    {msg1, callback1}, {msg2, callback2}, {msg3, callback3}, {msg4, callback4}, {msg5, callback5}};
  for (const auto& [msg, callback] : pairs)
  {
    if (!msg)
      return;
    addClient(client, msg, callback);
  }
}

void TclientServer::addClient(Tclient* client)
{
  addClient(client, TserverModifiedMsg::fTypeid);
}

long TclientServer::removeClient(Tclient* client)
{
  bool removed = false;
  if (fTable)
  {
    for (unsigned int i = fTable->messages().length(); i-- > 0;)
      removed |= fTable->remove(fTable->messages()[i].fType, client);
  }
  if (!removed)
    return -1;
  removeClientHook(client, nullptr);
  return 0;
}

long TclientServer::removeClient(Tclient* client, Tmetaclass* msg)
{
  if (!fTable || !fTable->remove(msg, client))
    return -1;
  removeClientHook(client, msg);
  return 0;
}

void TclientServer::transferClients(TclientServer* to)
{
  if (g_bClosing || !to || to == this || !fTable)
    return;
  TtypedArray<Table::Registration> list;
  fTable->listRegistrations(list);
  const Table::Pass pass(*fTable);
  for (unsigned int i = list.length(); i-- > 0;)
  {
    const auto [client, msg] = list[i];
    if (!hasClient(client, msg))
      continue;
    client->replaceServer(this, to);
    if (!pass.goesOn())
      return;
    if (!hasClient(client, msg))
      continue;
    to->addClient(client, msg, fTable->registered(*fTable->clients(msg), client)->fCallback);
    if (!pass.goesOn())
      return;
    removeClient(client, msg);
    if (!pass.goesOn())
      return;
  }
}

void TclientServer::debugIterate(void (*visit)(Tclient* client, Tmetaclass* msg))
{
  if (!fTable)
    return;
  TtypedArray<Table::Registration> list;
  fTable->listRegistrations(list);
  const Table::Pass pass(*fTable);
  for (const auto& [client, msg] : list)
  {
    if (hasClient(client, msg))
      visit(client, msg);
    if (!pass.goesOn())
      return;
  }
}

unsigned char TclientServer::hasClients() const noexcept
{
  return fTable && std::any_of(fTable->messages().begin(), fTable->messages().end(),
                               [](const Table::Message& message) { return message.fClients->hasAny(); });
}

unsigned char TclientServer::hasMessage(Tmetaclass* msg) const noexcept
{
  const Table::Clients* clients = fTable ? fTable->clients(msg) : nullptr;
  return clients && clients->hasAny();
}

unsigned char TclientServer::hasClient(const Tclient* client) const noexcept
{
  return fTable &&
         std::any_of(fTable->messages().begin(), fTable->messages().end(), [&](const Table::Message& message) {
           return fTable->registered(*message.fClients, client) != nullptr;
         });
}

unsigned char TclientServer::hasClient(const Tclient* client, Tmetaclass* msg) const noexcept
{
  Table::Clients* const clients = fTable ? fTable->clients(msg) : nullptr;
  return clients && fTable->registered(*clients, client);
}

unsigned char TclientServer::acceptsMessage(Tclient* client, Tmetaclass* msg) const noexcept
{
  Table::Clients* const clients = fTable && fClientNotify && client ? fTable->clients(msg) : nullptr;
  const Table::Entry* entry = clients ? fTable->find(*clients, client) : nullptr;
  return entry && entry->isCalled();
}

unsigned char TclientServer::setClientNotify(unsigned char on) noexcept
{
  return std::exchange(fClientNotify, on);
}

unsigned char TclientServer::setClientNotify(Tclient* client, unsigned char on) noexcept
{
  unsigned char previous = 0;
  if (fTable)
  {
    for (const Table::Message& message : fTable->messages())
    {
      if (Table::Entry* entry = fTable->registered(*message.fClients, client))
        previous = std::exchange(entry->fEnabled, on);
    }
  }
  return previous;
}
