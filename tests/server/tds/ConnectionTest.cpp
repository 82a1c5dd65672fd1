// A client that speaks the protocol by hand: logins, batches, calls and cancels that drivers send, and
// messages that no driver sends, which end the connection and nothing else.
#include "tests/server/tds/Connection.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <random>
#include <sys/socket.h>
#include <system_error>
#include <thread>

#include "tests/server/tds/WireValue.h"

namespace tds {
namespace {

// The tokens that a reply begins with, and what ends it.
enum Token : uint8_t { kError = 0xAA, kReturnValue = 0xAC, kLoginAccepted = 0xAD, kDone = 0xFD };

std::string Unicode(std::string_view text) {
  return tsql::BytesOfText(text, true);
}

std::string FromHex(std::string_view digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  return bytes;
}

class ConnectionTest : public testing::Test {
 protected:
  ConnectionTest() {
    static int last = 0;
    settings_.database = tsql::Database::Open(":memory:tds" + std::to_string(++last), tsql::OpenMode::Create);
    settings_.databaseName = "scratch";
    settings_.user = "tester";
    settings_.password = "open sesame";
    Connect();
  }
  ~ConnectionTest() override { Disconnect(); }

  void Connect() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
      throw std::system_error(errno, std::generic_category(), "socketpair");
    client_ = ends[0];
    server_ = std::thread([this, socket = ends[1]] {
      try {
        Connection(socket, settings_).Serve();
      } catch (const Malformed& failure) {
        refusal_ = failure.what();
      } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): the test has gone
      }
    });
  }
  void Disconnect() {
    if (!server_.joinable()) return;
    close(client_);
    server_.join();
  }
  void Reconnect() {
    Disconnect();
    Connect();
  }

  void Send(uint8_t type, std::string_view payload, bool isLast = true) const {
    const size_t length = payload.size() + 8;
    std::string packet{static_cast<char>(type),
                       static_cast<char>(isLast ? 1 : 0),
                       static_cast<char>(length >> 8),
                       static_cast<char>(length),
                       0,
                       0,
                       0,
                       0};
    packet += payload;
    SendBytes(packet);
  }
  void SendBytes(std::string_view bytes) const {
    // The server may have had enough.
    if (send(client_, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0) return;
  }

  // The reply, without the headers of its packets; empty when the server has closed the connection.
  std::string Receive() const {
    std::string reply;
    for (;;) {
      const std::string header = ReceiveBytes(8);
      if (header.empty()) return {};
      reply += ReceiveBytes(
          static_cast<size_t>(static_cast<uint8_t>(header[2]) << 8 | static_cast<uint8_t>(header[3])) - 8);
      if (header[1] == 1) return reply;
    }
  }
  std::string ReceiveBytes(size_t count) const {
    std::string bytes(count, '\0');
    const ssize_t got = recv(client_, bytes.data(), count, MSG_WAITALL);
    return got == static_cast<ssize_t>(count) ? bytes : std::string();
  }

  static std::string LoginMessage(std::string_view user, std::string_view password,
                                  std::string_view database) {
    ByteWriter out;
    out.Put(uint32_t{0});
    out.Put(uint32_t{0x74000004});
    out.Put(uint32_t{4096});
    out.PutBytes(std::string(24, '\0'));
    constexpr uint16_t kTexts = 36 + 9 * 4; // they stand behind their places and lengths
    std::string texts;
    const auto place = [&](const std::string& bytes) {
      out.Put(static_cast<uint16_t>(kTexts + texts.size()));
      out.Put(static_cast<uint16_t>(bytes.size() / 2));
      texts += bytes;
    };
    std::string hidden = Unicode(password);
    for (char& byte : hidden) {
      const auto bits = static_cast<uint8_t>(byte);
      byte = static_cast<char>((bits << 4 | bits >> 4) ^ 0xA5);
    }
    for (const std::string& text :
         {Unicode("here"), Unicode(user), hidden, Unicode("test"), Unicode("server"), std::string(),
          std::string(), std::string(), Unicode(database)})
      place(text);
    out.PutBytes(texts);
    return out.data();
  }
  std::string LogIn() const {
    Send(16, LoginMessage("tester", "open sesame", "scratch"));
    return Receive();
  }

  static std::string Headers() {
    ByteWriter out;
    out.Put(uint32_t{4});
    return out.data();
  }
  std::string Run(std::string_view batch) const {
    Send(1, Headers() + Unicode(batch));
    return Receive();
  }

  static bool Has(const std::string& reply, std::string_view text) {
    return reply.find(Unicode(text)) != std::string::npos;
  }

  Settings settings_;
  int client_ = -1;
  std::thread server_;
  std::string refusal_;
};

TEST_F(ConnectionTest, LetsInWhoKnowsThePassword) {
  EXPECT_NE(LogIn().find(static_cast<char>(kLoginAccepted)), std::string::npos);
  struct Case {
    const char* user;
    const char* password;
    const char* database;
    const char* answer;
  };
  for (const Case& refused : {Case{"nobody", "open sesame", "scratch", "Login failed for user 'nobody'."},
                              Case{"tester", "open barley", "scratch", "Login failed for user 'tester'."},
                              Case{"tester", "open sesame", "nowhere", "Cannot open database \"nowhere\""}}) {
    Reconnect();
    Send(16, LoginMessage(refused.user, refused.password, refused.database));
    const std::string reply = Receive();
    EXPECT_EQ(static_cast<uint8_t>(reply.front()), kError);
    EXPECT_TRUE(Has(reply, refused.answer)) << refused.answer;
    EXPECT_EQ(Receive(), "") << "the connection is closed";
  }
}

TEST_F(ConnectionTest, AnswersABatchWithRowsAndACount) {
  LogIn();
  const std::string reply = Run("SELECT 7 AS seven");
  ByteWriter expected;
  expected.PutBytes(FromHex("8101000000000000002604")); // one column, an int
  expected.PutShortText("seven");
  expected.PutBytes(FromHex("D10407000000"));
  expected.PutBytes(FromHex("FD100000000100000000000000")); // done: one row was counted
  ByteWriter nullable;
  nullable.PutBytes(expected.data());
  std::string mayBeNull = nullable.data();
  mayBeNull[7] = 1;
  EXPECT_TRUE(reply == expected.data() || reply == mayBeNull);
}

TEST_F(ConnectionTest, EndsTheStatementsOfAProcedureAsSuch) {
  LogIn();
  Run("CREATE TABLE t (n int)");
  Run("CREATE PROCEDURE p AS INSERT INTO t VALUES (1)");
  const std::string reply = Run("EXEC p INSERT INTO t VALUES (2)");
  EXPECT_EQ(reply, FromHex("FF110000000100000000000000") + FromHex("FE010000000000000000000000") +
                       FromHex("FD100000000100000000000000"));
}

TEST_F(ConnectionTest, CallsAProcedureAndHandsBackItsOutput) {
  LogIn();
  Run("CREATE PROCEDURE p @a int, @b int OUTPUT AS SET @b = @a * 2 RETURN 5");
  ByteWriter call;
  call.PutBytes(Headers());
  call.Put(uint16_t{1});
  call.PutBytes(Unicode("p"));
  call.Put(uint16_t{0});
  for (const bool output : {false, true}) {
    call.PutShortText("");
    call.Put(static_cast<uint8_t>(output ? 1 : 0));
    call.PutBytes(FromHex("26040415000000")); // int 21
  }
  Send(3, call.data());
  const std::string reply = Receive();
  EXPECT_EQ(reply.substr(0, 5), FromHex("7905000000")) << "the status";
  EXPECT_NE(reply.find(FromHex("2604042A000000")), std::string::npos) << "42";
  EXPECT_EQ(static_cast<uint8_t>(reply[5]), kReturnValue);
}

TEST_F(ConnectionTest, StopsABatchThatIsCanceled) {
  LogIn();
  Send(1, Headers() + Unicode("WHILE 1 = 1 SET NOCOUNT ON"));
  Send(6, "");
  EXPECT_EQ(static_cast<uint8_t>(Receive().front()), kDone);
  const std::string answer = Receive();
  EXPECT_EQ(answer.substr(0, 3), FromHex("FD2000")) << "the cancel is answered";
  EXPECT_NE(Run("SELECT 1 AS one"), "");
}

TEST_F(ConnectionTest, RollsBackWhenTheClientGoes) {
  LogIn();
  Run("CREATE TABLE t (n int)");
  Run("BEGIN TRAN INSERT INTO t VALUES (1)");
  Reconnect();
  LogIn();
  EXPECT_NE(Run("IF EXISTS (SELECT * FROM t) RAISERROR('left', 16, 1) ELSE RAISERROR('gone', 16, 1)")
                .find(Unicode("gone")),
            std::string::npos);
}

TEST_F(ConnectionTest, MalformedMessagesEndTheConnection) {
  const std::string login = LoginMessage("tester", "open sesame", "scratch");
  const auto refusedAfterLogin = [&](uint8_t type, const std::string& payload) {
    Reconnect();
    refusal_.clear();
    LogIn();
    Send(type, payload);
    const std::string reply = Receive();
    Disconnect();
    return reply.empty() && !refusal_.empty();
  };
  EXPECT_TRUE(refusedAfterLogin(1, "")) << "no headers";
  EXPECT_TRUE(refusedAfterLogin(1, FromHex("FFFFFFFF"))) << "headers without an end";
  EXPECT_TRUE(refusedAfterLogin(3, Headers())) << "no call";
  EXPECT_TRUE(refusedAfterLogin(3, Headers() + FromHex("FFFF63000000"))) << "no such number";
  EXPECT_TRUE(refusedAfterLogin(3, Headers() + FromHex("40007000"))) << "a name without its end";
  EXPECT_TRUE(refusedAfterLogin(3, Headers() + FromHex("010070000000000099"))) << "no such type";
  EXPECT_TRUE(refusedAfterLogin(14, Headers() + FromHex("6300"))) << "no such request";
  EXPECT_TRUE(refusedAfterLogin(16, login)) << "a second login";
  EXPECT_TRUE(refusedAfterLogin(99, "")) << "no such message";
  for (const std::string& bytes : {FromHex("1001000400000000"), std::string(8, '\0')}) {
    Reconnect();
    refusal_.clear();
    SendBytes(bytes);
    EXPECT_EQ(Receive(), "");
    Disconnect();
    EXPECT_NE(refusal_, "");
  }
}

// Bytes of good messages are changed, left out and put in, from fixed seeds. Whatever the server makes of
// them, it lives, and the next client is served.
TEST_F(ConnectionTest, LivesThroughMessagesThatAreMutated) {
  ByteWriter call;
  call.PutBytes(Headers());
  call.Put(uint16_t{0xFFFF});
  call.Put(uint16_t{10}); // sp_executesql
  call.Put(uint16_t{0});
  for (const char* text : {"SELECT @a, @b", "@a nvarchar(20), @b decimal(20, 4)"}) {
    call.PutShortText("");
    call.Put(uint8_t{0});
    tsql::Value value;
    value.kind = tsql::Value::Kind::Text;
    value.text = text;
    const tsql::Type type{.id = tsql::TypeId::NVarChar, .length = 4000};
    PutType(call, type);
    PutValue(call, type, value);
  }
  call.PutBytes(FromHex("0000E728000408D00000040061006200"));
  call.PutBytes(FromHex("00006A0D1404050115160000"));
  LogIn();
  Send(3, call.data());
  EXPECT_TRUE(Has(Receive(), "ab")) << "unchanged it is a good call";
  struct Good {
    uint8_t type;
    std::string payload;
    bool isLogin;
  };
  const std::array good{Good{16, LoginMessage("tester", "open sesame", "scratch"), true},
                        Good{1, Headers() + Unicode("SELECT 1 AS one"), false}, Good{3, call.data(), false},
                        Good{14, Headers() + FromHex("05000000"), false}};
  constexpr int kRounds = 2000;
  for (unsigned seed = 0; seed < kRounds; ++seed) {
    std::minstd_rand random(seed);
    const auto below = [&](size_t limit) { return static_cast<size_t>(random()) % limit; };
    const Good& original = good[seed % good.size()];
    std::string payload = original.payload;
    for (size_t changes = 1 + below(3); changes > 0 && !payload.empty(); --changes) {
      const size_t at = below(payload.size());
      switch (below(3)) {
      case 0: payload[at] = static_cast<char>(below(256)); break;
      case 1: payload.erase(at, 1 + below(4)); break;
      default: payload.insert(at, 1 + below(4), static_cast<char>(below(256)));
      }
    }
    Reconnect();
    if (!original.isLogin) LogIn();
    Send(original.type, payload);
    shutdown(client_, SHUT_WR);
    Receive();
  }
  Reconnect();
  LogIn();
  EXPECT_TRUE(Has(Run("SELECT 1 AS one"), "one"));
}

} // namespace
} // namespace tds
