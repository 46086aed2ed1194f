#include "Foundation/Notify/TmessageCenter.h"

#include "Foundation/Data/Typed.h"

TYPE_RECORD(TmessageCenter, 12, nullptr, 0, 0, &TclientServer::fTypeid);
TYPE_CAST(TmessageCenter, TclientServer)

TmessageCenter* TmessageCenter::fsMessageBoard = nullptr;

void TmessageCenter::messageBoardInit()
{
  fsMessageBoard = makeNew<TmessageCenter>();
}

TmessageCenter* TmessageCenter::messageBoard()
{
  if (!fsMessageBoard)
    messageBoardInit();
  return fsMessageBoard;
}

void TmessageCenter::post(const TserverMsg& msg)
{
  messageBoard()->notifyClients(msg);
}
