/// \file
/// TmessageCenter: a bulletin board for news that no object of its own stands for.
///
/// Register with TmessageCenter::messageBoard() and TmessageCenter::post() what concerns everybody. Where the news is
/// of one object, make that a TclientServer.

#pragma once

#include "Foundation/Notify/TclientServer.h"

/// The one server of the process that everybody knows. It is made when it is first asked for and never destroyed.
class FOUNDATION_API TmessageCenter : public TclientServer
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;

  /// The board; never null. Throws TmemoryException.
  static TmessageCenter* messageBoard();

  /// Sends \p msg to the clients of the board.
  static void post(const TserverMsg& msg);

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  static void messageBoardInit();

  static TmessageCenter* fsMessageBoard;
};
