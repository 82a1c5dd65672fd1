#include "tests/tsql/Processes.h"

#ifdef _WIN32
#include "tests/support/StartedProcess.h"
#else
#include <unistd.h>

#include <sys/wait.h>
#endif

#include <cstdio>
#include <cstdlib>

namespace tsql::test {
namespace {

constexpr char kRole[] = "TSQL_TEST_ROLE";
constexpr int kNotStarted = -1;

#ifdef _WIN32

void SetRole(const std::string& role) {
  SetEnvironmentVariableA(kRole, role.empty() ? nullptr : role.c_str());
}

HANDLE Start(const std::string& test) {
  std::string program(MAX_PATH, '\0');
  program.resize(GetModuleFileNameA(nullptr, program.data(), MAX_PATH));
  std::string command = "\"" + program + "\" --gtest_brief=1 --gtest_filter=" + test;
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  const bool started = com::test::HasStarted([&] {
    return CreateProcessA(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                          &startup, &process);
  });
  if (!started) {
    std::fprintf(stderr, "%s was not started: error %lu\n", program.c_str(), GetLastError());
    return nullptr;
  }
  CloseHandle(process.hThread);
  return process.hProcess;
}

int WaitFor(HANDLE process) {
  DWORD code = static_cast<DWORD>(kNotStarted);
  if (process == nullptr) return kNotStarted;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return static_cast<int>(code);
}

#else

void SetRole(const std::string& role) {
  if (role.empty()) {
    unsetenv(kRole);
  } else {
    setenv(kRole, role.c_str(), 1);
  }
}

pid_t Start(const std::string& test) {
  const pid_t child = fork();
  if (child != 0) return child;
  const std::string filter = "--gtest_filter=" + test;
  execl("/proc/self/exe", "tsql_tests", "--gtest_brief=1", filter.c_str(), nullptr);
  _exit(kNotStarted);
}

int WaitFor(pid_t process) {
  int status = 0;
  if (process < 0 || waitpid(process, &status, 0) != process || !WIFEXITED(status)) return kNotStarted;
  return WEXITSTATUS(status);
}

#endif

} // namespace

std::string GivenRole() {
  const char* role = std::getenv(kRole);
  return role != nullptr ? role : "";
}

std::vector<int> RunAgain(const std::string& test, const std::vector<std::string>& roles) {
  std::vector<decltype(Start(test))> processes;
  processes.reserve(roles.size());
  for (const std::string& role : roles) {
    SetRole(role);
    processes.push_back(Start(test));
  }
  SetRole("");
  std::vector<int> codes;
  codes.reserve(processes.size());
  for (const auto process : processes) codes.push_back(WaitFor(process));
  return codes;
}

} // namespace tsql::test
