// tds_server [OPTION…] FILE: serves a database file of the engine over TDS, as SQL Server does over its own,
// so that drivers can be tried without one. Nothing is encrypted, and it listens on this machine alone.
//   --port NUMBER       0, the default, takes a free one
//   --port-file FILE    the port and the process's number are written there, as soon as clients can connect
//   --user, --password, --database NAME   what a login must say: tester, open sesame, scratch
//   --restart           a new process takes the place of one that was killed, on the same port
//   --leave SECONDS     ends when nobody has been connected for so long
// The same two are its first line of output, where no file is named.
#include <poll.h>
#include <unistd.h>

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>

#include "tests/server/tds/Connection.h"

namespace {

struct Options {
  tds::Settings settings;
  std::string file;
  std::string portFile;
  int port = 0;
  bool restarts = false;
  std::optional<std::chrono::seconds> leavesAfter;
};

int NumberOf(const std::string& text) {
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 0)
    throw std::invalid_argument(text + " is not a number");
  return number;
}

Options ReadOptions(int argc, char** argv) {
  Options options;
  tds::Settings& settings = options.settings;
  settings.databaseName = "scratch";
  settings.user = "tester";
  settings.password = "open sesame";
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    const auto value = [&]() -> std::string {
      if (++i >= argc) throw std::invalid_argument(name + " has no value");
      return argv[i];
    };
    if (name == "--port")
      options.port = NumberOf(value());
    else if (name == "--port-file")
      options.portFile = value();
    else if (name == "--user")
      settings.user = value();
    else if (name == "--password")
      settings.password = value();
    else if (name == "--database")
      settings.databaseName = value();
    else if (name == "--restart")
      options.restarts = true;
    else if (name == "--leave")
      options.leavesAfter = std::chrono::seconds(NumberOf(value()));
    else if (name.starts_with("-") || !options.file.empty())
      throw std::invalid_argument("what is " + name + "?");
    else
      options.file = name;
  }
  if (options.file.empty()) throw std::invalid_argument("no database file is named");
  return options;
}

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

int Listen(int port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0) ThrowErrno("socket");
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) ThrowErrno("bind");
  constexpr int kBacklog = 64;
  if (listen(listener, kBacklog) != 0) ThrowErrno("listen");
  return listener;
}

int PortOf(int listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) ThrowErrno("getsockname");
  return ntohs(address.sin_port);
}

// Whoever waits for the file finds it whole.
void Publish(int port, const std::string& file) {
  const std::string line = std::to_string(port) + ' ' + std::to_string(getpid()) + '\n';
  if (file.empty()) {
    std::cout << line << std::flush;
    return;
  }
  const std::string fresh = file + ".new";
  std::ofstream(fresh) << line;
  if (std::rename(fresh.c_str(), file.c_str()) != 0) ThrowErrno("rename");
}

void Serve(int client, const tds::Settings& settings) {
  try {
    tds::Connection(client, settings).Serve();
  } catch (const std::exception& failure) {
    std::cerr << "a connection ends: " + std::string(failure.what()) + "\n";
  }
}

// Takes clients, each into a thread of its own, until nobody is left for as long as the options say.
void Accept(int listener, const Options& options) {
  static std::atomic<int> connected{0};
  constexpr int kPause = 200; // milliseconds
  using Clock = std::chrono::steady_clock;
  Clock::time_point lastSeen = Clock::now();
  for (;;) {
    pollfd ready{listener, POLLIN, 0};
    if (poll(&ready, 1, kPause) <= 0) {
      if (connected > 0) lastSeen = Clock::now();
      if (options.leavesAfter && Clock::now() - lastSeen > *options.leavesAfter) return;
      continue;
    }
    const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) continue;
    const int on = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ++connected;
    std::thread([client, &settings = options.settings] {
      Serve(client, settings);
      --connected;
    }).detach();
  }
}

// Runs the work in a child, and again in another one when the child was killed.
template <typename Work>
int Supervise(Work work) {
  for (;;) {
    const pid_t child = fork();
    if (child < 0) ThrowErrno("fork");
    if (child == 0) return work();
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
  }
}

} // namespace

int main(int argc, char** argv) {
  try {
    Options options = ReadOptions(argc, argv);
    const int listener = Listen(options.port);
    const auto work = [&] {
      options.settings.database = tsql::Database::Open(options.file, tsql::OpenMode::Create);
      Publish(PortOf(listener), options.portFile);
      Accept(listener, options);
      // Threads that have just ended their client may still be on their way out.
      _exit(0);
      return 0;
    };
    return options.restarts ? Supervise(work) : work();
  } catch (const std::exception& failure) {
    std::cerr << "tds_server: " << failure.what() << '\n';
    return 2;
  }
}
