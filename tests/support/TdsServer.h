// TdsServer: tds_server with a database file of its own, reached through FreeTDS. It serves the engine over
// the protocol of SQL Server, so what the stand-in does with such a server can be tried on any machine with
// Wine.
#pragma once

#include <string>

namespace com::test {

// Why there is none here; empty when there is one. The server is a program for Linux, and 32-bit processes
// may lack the driver.
std::wstring WhyNoTdsServer();

class TdsServer {
 public:
  // When its process is killed another one takes its place, on the same port.
  TdsServer();
  ~TdsServer();
  TdsServer(const TdsServer&) = delete;
  TdsServer& operator=(const TdsServer&) = delete;

  // Sends the process a signal by its name: STOP holds it, CONT lets it go on, KILL ends it. Returns when it
  // has been sent.
  void Signal(const std::wstring& name) const;

  // As an ODBC connection string and as a descriptor of the stand-in.
  std::wstring ConnectionText() const;
  std::wstring Dsn() const { return L"Provider=ODBC;Connection={" + ConnectionText() + L"}"; }

 private:
  std::wstring folder_;
  int port_ = 0;
};

} // namespace com::test

// For the first line of a test or of a SetUp.
#define SKIP_WITHOUT_TDS_SERVER()                                                                            \
  if (const std::wstring why = ::com::test::WhyNoTdsServer(); !why.empty()) GTEST_SKIP() << com::ToUtf8(why)
