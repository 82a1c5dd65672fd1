#include "tests/server/tds/Connection.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>
#include <utility>

#include "tests/server/tds/Login.h"
#include "tests/server/tds/ReplySink.h"

namespace tds {
namespace {

constexpr uint32_t kOldestVersion = 0x730A0003;
constexpr uint32_t kNewestVersion = 0x74000004;
constexpr int kUserError = 16;

bool SameText(const std::string& a, const char* b) {
  return strcasecmp(a.c_str(), b) == 0;
}

// What stands in front of a batch or call: the transaction, and what else the server has no use for.
void SkipHeaders(ByteReader& in) {
  const auto size = in.Take<uint32_t>();
  if (size < sizeof size) throw Malformed("headers are shorter than their length");
  in.Bytes(size - sizeof size);
}

// The last line, and the text in front of it.
std::pair<std::string_view, std::string_view> CutLastLine(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n;";
  const size_t end = text.find_last_not_of(kBlanks) + 1;
  const size_t before = text.substr(0, end).find_last_of('\n');
  const size_t start = before == std::string_view::npos ? 0 : before + 1;
  std::string_view line = text.substr(start, end - start);
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  return {text.substr(0, start), line};
}

constexpr char kShutDown[] = "SHUTDOWN";
constexpr char kShutDownAtOnce[] = "SHUTDOWN WITH NOWAIT";
constexpr char kWait[] = "WAITFOR DELAY '%2u:%2u:%2u'";

bool IsOwnStatement(std::string_view line) {
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  return line == kShutDown || line == kShutDownAtOnce ||
         std::sscanf(std::string(line).c_str(), kWait, &hours, &minutes, &seconds) == 3;
}

std::string_view TextOf(const RemoteCall& call, size_t index) {
  return index < call.parameters.size() ? call.parameters[index].value.text : std::string_view();
}

int32_t HandleOf(const RemoteCall& call) {
  const auto& parameters = call.parameters;
  return parameters.empty() ? 0 : static_cast<int32_t>(parameters.front().value.integer);
}

} // namespace

void Connection::Serve() {
  if (!LogIn()) return;
  session_->SetStopRequest([this] { return stream_.IsInterrupted(); });
  while (std::optional<Message> message = stream_.Read()) {
    ByteReader in(message->payload);
    switch (message->type) {
    case MessageType::Attention: reply_.FinishAttention(); continue;
    case MessageType::Batch: RunBatch(in); continue;
    case MessageType::TransactionRequest: RunTransactionRequest(in); continue;
    case MessageType::RemoteCall: {
      SkipHeaders(in);
      std::vector<RemoteCall> calls = ReadCalls(in);
      if (calls.empty()) throw Malformed("a call has no procedure");
      for (RemoteCall& call : calls) RunCall(call);
      reply_.Flush();
      continue;
    }
    default: throw Malformed("a client sends what it may not send");
    }
  }
}

void Connection::Refuse(int number, int severity, const std::string& text) {
  reply_.Say(tsql::Error(number, severity, 1, 1, text));
}

bool Connection::LogIn() {
  std::optional<Message> message = stream_.Read();
  if (message && message->type == MessageType::PreLogin) {
    stream_.Write(AnswerToPreLogin());
    stream_.EndReply();
    message = stream_.Read();
  }
  if (!message) return false;
  if (message->type != MessageType::Login) throw Malformed("a client does not log in");
  const Login login = ReadLogin(message->payload);
  const auto refused = [&] {
    reply_.Finish(Ended::Batch, true);
    return false;
  };
  if (login.version < kOldestVersion) {
    Refuse(17803, 20, "The server wants version 7.3 of the protocol or a newer one.");
    return refused();
  }
  constexpr int kLoginSeverity = 14;
  const std::string failed = "Login failed for user '" + login.user + "'.";
  if (!SameText(login.user, settings_.user.c_str()) || login.password != settings_.password) {
    Refuse(18456, kLoginSeverity, failed);
    return refused();
  }
  if (!login.database.empty() && !SameText(login.database, settings_.databaseName.c_str())) {
    Refuse(4060, 11,
           "Cannot open database \"" + login.database + "\" requested by the login. The login failed.");
    Refuse(18456, kLoginSeverity, failed);
    return refused();
  }
  try {
    session_ = tsql::Session::Open(settings_.database);
  } catch (const tsql::Error& error) {
    reply_.Say(error);
    return refused();
  }
  constexpr uint32_t kDefaultSize = 4096;
  constexpr uint32_t kSmallest = 512;
  constexpr uint32_t kLargest = 32767;
  const uint32_t size =
      login.packetSize == 0 ? kDefaultSize : std::clamp(login.packetSize, kSmallest, kLargest);
  reply_.DatabaseChanged(settings_.databaseName);
  reply_.Say(tsql::Error(5701, 10, 1, 1, "Changed database context to '" + settings_.databaseName + "'."));
  reply_.CollationChanged();
  reply_.LoginAccepted(std::min(login.version, kNewestVersion));
  reply_.PacketSizeChanged(size, kDefaultSize);
  reply_.Finish(Ended::Batch, false);
  stream_.SetPacketSize(size);
  return true;
}

void Connection::RunBatch(ByteReader in) {
  SkipHeaders(in);
  const std::string batch = tsql::TextOfBytes(in.Rest(), true);
  std::string_view rest = batch;
  const auto [before, line] = CutLastLine(batch);
  const bool hasOwn = IsOwnStatement(line);
  if (hasOwn) rest = before;
  ReplySink sink(reply_, *session_, false);
  session_->Execute(rest, {}, sink);
  sink.Leave();
  TellOfTransaction(!sink.HasFailed());
  if (hasOwn) RunOwnStatement(line);
  reply_.Finish(Ended::Batch, sink.HasFailed());
}

void Connection::RunOwnStatement(std::string_view line) {
  if (line == kShutDownAtOnce) kill(getpid(), SIGKILL);
  if (line == kShutDown) {
    reply_.Finish(Ended::Batch, false);
    _exit(0);
  }
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  std::sscanf(std::string(line).c_str(), kWait, &hours, &minutes, &seconds);
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::seconds((hours * 60 + minutes) * 60 + seconds);
  constexpr std::chrono::milliseconds kPause{10};
  while (Clock::now() < end && !stream_.IsInterrupted()) std::this_thread::sleep_for(kPause);
}

void Connection::RunCall(RemoteCall& call) {
  int32_t status = 0;
  const bool succeeded = Dispatch(call, status);
  TellOfTransaction(succeeded);
  reply_.ReturnStatus(status);
  for (size_t i = 0; i < call.parameters.size(); ++i)
    if (call.parameters[i].output && succeeded) reply_.ReturnValue(i, call.parameters[i]);
  reply_.End(Ended::Procedure, std::nullopt, !succeeded);
}

bool Connection::Dispatch(RemoteCall& call, int32_t& status) {
  auto& parameters = call.parameters;
  const auto is = [&](const char* name) { return SameText(call.procedure, name); };
  // A prepared statement gets a handle, which is the first parameter.
  const auto prepare = [&] {
    parameters.front().value.kind = tsql::Value::Kind::Integer;
    parameters.front().value.integer = ++lastHandle_;
    return &(prepared_[lastHandle_] = {std::string(TextOf(call, 2)), ReadDeclarations(TextOf(call, 1))});
  };
  const auto known = [&] {
    const auto found = prepared_.find(HandleOf(call));
    if (found != prepared_.end()) return &found->second;
    Refuse(8179, kUserError,
           "Could not find prepared statement with handle " + std::to_string(HandleOf(call)) + ".");
    return static_cast<Prepared*>(nullptr);
  };
  if (is("sp_executesql") && !parameters.empty()) {
    const Prepared statement{std::string(TextOf(call, 0)), ReadDeclarations(TextOf(call, 1))};
    return RunStatement(statement, parameters, 2);
  }
  if (is("sp_prepare") && parameters.size() >= 3) return prepare() != nullptr;
  if (is("sp_prepexec") && parameters.size() >= 3) return RunStatement(*prepare(), parameters, 3);
  if (is("sp_execute") && !parameters.empty()) {
    const Prepared* const statement = known();
    return statement && RunStatement(*statement, parameters, 1);
  }
  if (is("sp_unprepare") && !parameters.empty()) return known() && prepared_.erase(HandleOf(call)) > 0;
  ReplySink sink(reply_, *session_, true);
  const std::optional<int32_t> returned = session_->Call(call.procedure, parameters, sink);
  Settle(parameters);
  status = returned.value_or(0);
  return returned.has_value();
}

bool Connection::RunStatement(const Prepared& prepared, std::vector<tsql::Parameter>& parameters,
                              size_t first) {
  first = std::min(first, parameters.size());
  const std::span own = std::span(parameters).subspan(first);
  // Drivers send values without names; they are those of the declaration, in its order.
  for (size_t i = 0; i < own.size(); ++i)
    if (own[i].name.empty() && i < prepared.declared.size()) own[i].name = prepared.declared[i].name;
  ReplySink sink(reply_, *session_, true);
  const bool succeeded = session_->Execute(prepared.statement, own, sink);
  Settle(parameters);
  return succeeded;
}

void Connection::RunTransactionRequest(ByteReader in) {
  enum Request : uint16_t { kBegin = 5, kCommit = 7, kRollback = 8, kSave = 9 };
  constexpr uint8_t kAndBegin = 1;
  SkipHeaders(in);
  const auto request = in.Take<uint16_t>();
  bool failed = false;
  bool committed = false;
  try {
    switch (request) {
    case kBegin: session_->Begin(); break;
    case kCommit:
    case kRollback: {
      in.ShortBytes();
      const bool andBegin = !in.IsAtEnd() && (in.Take<uint8_t>() & kAndBegin) != 0;
      committed = request == kCommit;
      if (committed)
        session_->Commit();
      else
        session_->Rollback();
      TellOfTransaction(committed);
      if (andBegin) session_->Begin();
      break;
    }
    case kSave: {
      ReplySink sink(reply_, *session_, false);
      failed = !session_->Execute("SAVE TRANSACTION [" + in.ShortBytes() + "]", {}, sink);
      break;
    }
    default: throw Malformed("a request of the transaction manager is none");
    }
  } catch (const tsql::Error& error) {
    failed = true;
    reply_.Say(error);
  }
  TellOfTransaction(committed);
  reply_.Finish(Ended::Batch, failed);
}

void Connection::TellOfTransaction(bool committed) {
  static std::atomic<uint64_t> last{0};
  const bool isOpen = session_->TransactionCount() > 0;
  if (isOpen == (transaction_ != 0)) return;
  if (isOpen) {
    transaction_ = ++last;
    reply_.TransactionBegan(transaction_);
  } else {
    reply_.TransactionEnded(std::exchange(transaction_, 0), committed);
  }
}

} // namespace tds
