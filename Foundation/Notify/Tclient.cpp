#include "Foundation/Notify/Tclient.h"

#include "Foundation/Data/Typed.h"

TYPE_RECORD(Tclient, 4, nullptr, 0, 0);
TYPE_CAST(Tclient, Tuntyped)

void Tclient::serverDeleted(TclientServer*, const TserverMsg&) {}

void Tclient::serverModified(TclientServer*, const TserverMsg&) {}

void Tclient::replaceServer(TclientServer*, TclientServer*) {}

void Tclient::serverDeletedCB(Tclient* client, TclientServer* server, const TserverMsg& msg)
{
  client->serverDeleted(server, msg);
}

void Tclient::serverModifiedCB(Tclient* client, TclientServer* server, const TserverMsg& msg)
{
  client->serverModified(server, msg);
}
