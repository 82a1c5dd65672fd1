// Connection: one client of the server, from its login to its leaving, with a session of the engine.
//
// Batches, calls of procedures and of the server's own procedures for prepared statements, and requests of
// the transaction manager are answered. What breaks the protocol ends the connection. At the end of a batch
// the server itself understands, on a line of their own,
//   WAITFOR DELAY 'hh:mm:ss'   which the client may cancel
//   SHUTDOWN                   the process ends, whatever else runs in it
//   SHUTDOWN WITH NOWAIT       the process is killed
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/server/tds/RemoteCall.h"
#include "tests/server/tds/Reply.h"

namespace tds {

struct Settings {
  std::shared_ptr<tsql::Database> database;
  std::string databaseName;
  std::string user;
  std::string password;
};

class Connection {
 public:
  Connection(int socket, const Settings& settings) : settings_(settings), stream_(socket), reply_(stream_) {}

  // Serves the client until it goes. Throws Malformed, and std::system_error when it went in the middle of a
  // reply.
  void Serve();

 private:
  struct Prepared {
    std::string statement;
    std::vector<Declared> declared;
  };

  bool LogIn();
  void Refuse(int number, int severity, const std::string& text);

  void RunBatch(ByteReader in);
  void RunOwnStatement(std::string_view line);
  void RunCall(RemoteCall& call);
  // The rest of the call's parameters from `first` on serve the statement.
  bool RunStatement(const Prepared& prepared, std::vector<tsql::Parameter>& parameters, size_t first);
  bool Dispatch(RemoteCall& call, int32_t& status);
  void RunTransactionRequest(ByteReader in);
  // Tells the client of a transaction that has begun or ended.
  void TellOfTransaction(bool committed);

  const Settings& settings_;
  PacketStream stream_;
  Reply reply_;
  std::unique_ptr<tsql::Session> session_;
  std::map<int32_t, Prepared> prepared_;
  int32_t lastHandle_ = 0;
  uint64_t transaction_ = 0; // the number of the open one; 0 for none
};

} // namespace tds
