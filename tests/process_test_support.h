// The corvane-server program for tests: started on a free loopback port with a database and drive
// folder of its own under the scratch folder, stopped with SIGTERM, killed when a test ends before.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "test_support.h"

namespace corvane::testing {

// The first group of `pattern` (or the whole match) in what a program has written to `log`; "" when
// it has not written it within 30 seconds (a fresh database is seeded first).
inline std::string AwaitOutput(const std::filesystem::path& log, const std::string& pattern) {
  using namespace std::chrono_literals;
  for (int i = 0; i < 300; ++i, std::this_thread::sleep_for(100ms)) {
    std::ifstream in(log);
    std::string out((std::istreambuf_iterator<char>(in)), {});
    if (std::smatch m; std::regex_search(out, m, std::regex(pattern))) return m[m.size() - 1];
  }
  return "";
}

class ServerProcess {
 public:
  // Starts the server (stdout and stderr go to Log()) and waits until it serves; Port() is 0 when it
  // did not come up. `extra` are more command-line options.
  explicit ServerProcess(const std::string& name, const std::vector<std::string>& extra = {})
      : dir_(ScratchPath(name)) {
    std::filesystem::create_directories(dir_);
    std::vector<std::string> args = {
        CORVANE_SERVER_BINARY, "--port",         "0", "--db", Database().string(), "--drives",
        Drives().string(),     "--no-access-log"};
    args.insert(args.end(), extra.begin(), extra.end());
    pid_ = fork();
    if (pid_ == 0) {
      dup2(open(Log().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1), dup2(1, 2);
      std::vector<char*> argv;
      for (std::string& a : args) argv.push_back(a.data());
      argv.push_back(nullptr);
      execv(argv[0], argv.data());
      _exit(127);
    }
    std::string port = AwaitOutput("serving .* on http://127\\.0\\.0\\.1:(\\d+)/");
    if (!port.empty()) port_ = std::stoi(port);
  }
  ~ServerProcess() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0) kill(pid_, SIGKILL), waitpid(pid_, nullptr, 0);
  }
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  int Port() const { return port_; }
  std::filesystem::path Log() const { return dir_ / "output.txt"; }
  std::filesystem::path Database() const { return dir_ / "site.db"; }
  std::filesystem::path Drives() const { return dir_ / "drives"; }
  std::string AwaitOutput(const std::string& pattern) const { return testing::AwaitOutput(Log(), pattern); }

  // Sends SIGTERM and waits up to 10 seconds: the wait status, or -1 when the server still runs.
  int Stop() {
    using namespace std::chrono_literals;
    if (kill(pid_, SIGTERM) != 0) return -1;
    int status = -1;
    for (int i = 0; i < 200 && waitpid(pid_, &status, WNOHANG) == 0; ++i) std::this_thread::sleep_for(50ms);
    return status;
  }

 private:
  std::filesystem::path dir_;
  pid_t pid_ = -1;
  int port_ = 0;
};

}  // namespace corvane::testing
