// Programs for tests: corvane-server started on a free loopback port with a database and drive
// folder of its own under the scratch folder, stopped with SIGTERM, killed when a test ends before;
// and what tests need to run other servers (ports, programs on PATH, start and reap).
#pragma once

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "test_support.h"

namespace corvane::testing {

inline std::string ReadAll(const std::filesystem::path& file) {
  std::ifstream in(file);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The first group of `pattern` (or the whole match) in what a program has written to `log`; "" when
// it has not written it within 30 seconds (a fresh database is seeded first).
inline std::string AwaitOutput(const std::filesystem::path& log, const std::string& pattern) {
  using namespace std::chrono_literals;
  for (int i = 0; i < 300; ++i, std::this_thread::sleep_for(100ms)) {
    const std::string out = ReadAll(log);
    if (std::smatch m; std::regex_search(out, m, std::regex(pattern))) return m[m.size() - 1];
  }
  return "";
}

// A port nobody listens on now (the system's pick for a socket bound and closed at once).
inline int FreePort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
  socklen_t n = sizeof a;
  getsockname(fd, reinterpret_cast<sockaddr*>(&a), &n);
  close(fd);
  return ntohs(a.sin_port);
}

// Whether something accepts connections on the loopback port.
inline bool Listening(int port) {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(static_cast<uint16_t>(port));
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bool ok = connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0;
  close(fd);
  return ok;
}

// The path of a program on PATH, "" when missing.
inline std::string FindProgram(const std::string& name) {
  std::string path(512, '\0');
  FILE* p = popen(("PATH=$PATH:/usr/sbin command -v " + name).c_str(), "r");
  path.resize(p && fgets(path.data(), static_cast<int>(path.size()), p) ? std::strlen(path.c_str()) : 0);
  if (p) pclose(p);
  while (!path.empty() && path.back() == '\n') path.pop_back();
  return path;
}

// Starts `args` with stdout and stderr to `log`; the child's pid.
inline pid_t Spawn(const std::vector<std::string>& args, const std::filesystem::path& log) {
  pid_t pid = fork();
  if (pid == 0) {
    int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    dup2(fd, 1), dup2(fd, 2);
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  return pid;
}

// Sends `sig` and reaps the child (SIGKILL after 10 s).
inline void Reap(pid_t& pid, int sig = SIGTERM) {
  using namespace std::chrono_literals;
  if (pid <= 0) return;
  kill(pid, sig);
  for (int i = 0; i < 200; ++i, std::this_thread::sleep_for(50ms))
    if (waitpid(pid, nullptr, WNOHANG) == pid) return void(pid = -1);
  kill(pid, SIGKILL);
  waitpid(pid, nullptr, 0);
  pid = -1;
}

// A number from /proc/PID/status, such as VmRSS or VmHWM (in KiB); -1 when the process is gone.
inline long ProcStatus(pid_t pid, const std::string& key) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(in, line);)
    if (line.compare(0, key.size() + 1, key + ":") == 0) return std::stol(line.substr(key.size() + 1));
  return -1;
}

// What the server's process gets besides its options.
struct ProcessSetup {
  // The server's RLIMIT_FSIZE: a write past it fails (EFBIG), as on a full disk.
  rlim_t fileSizeLimit = RLIM_INFINITY;
  // "NAME=VALUE" entries added to the server's environment.
  std::vector<std::string> environment;
  // A database copied to Database() before the start (a seeded one starts quicker); "" seeds anew.
  std::filesystem::path database;
};

class ServerProcess {
 public:
  // Starts the server (stdout and stderr go to Log()) and waits until it serves; Port() is 0 when it
  // did not come up. `extra` are more command-line options.
  explicit ServerProcess(const std::string& name, const std::vector<std::string>& extra = {},
                         const ProcessSetup& setup = {})
      : dir_(ScratchPath(name)) {
    std::filesystem::create_directories(dir_);
    if (!setup.database.empty()) std::filesystem::copy_file(setup.database, Database());
    std::vector<std::string> args = {
        CORVANE_SERVER_BINARY, "--port",         "0", "--db", Database().string(), "--drives",
        Drives().string(),     "--no-access-log"};
    args.insert(args.end(), extra.begin(), extra.end());
    pid_ = fork();
    if (pid_ == 0) {
      dup2(open(Log().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1), dup2(1, 2);
      for (const std::string& entry : setup.environment) {
        const size_t eq = entry.find('=');
        setenv(entry.substr(0, eq).c_str(), entry.substr(eq + 1).c_str(), 1);
      }
      if (setup.fileSizeLimit != RLIM_INFINITY) {
        const rlimit limit{setup.fileSizeLimit, setup.fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
      }
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
    if (Running()) kill(pid_, SIGKILL), waitpid(pid_, nullptr, 0);
  }
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  int Port() const { return port_; }
  pid_t Pid() const { return pid_; }
  // Whether the process still runs; once it has ended, ExitStatus() is its wait status.
  bool Running() {
    if (pid_ <= 0 || exitStatus_ != -1) return false;
    if (waitpid(pid_, &exitStatus_, WNOHANG) == 0) return true;
    if (exitStatus_ == -1) exitStatus_ = 0x7f00;  // reaped elsewhere: "stopped", never a clean exit
    return false;
  }
  int ExitStatus() const { return exitStatus_; }
  // The server's resident memory now and its peak since the start or the last ResetPeak(), in KiB.
  long RssKiB() const { return ProcStatus(pid_, "VmRSS"); }
  long PeakRssKiB() const { return ProcStatus(pid_, "VmHWM"); }
  void ResetPeak() const { std::ofstream("/proc/" + std::to_string(pid_) + "/clear_refs") << "5"; }
  std::filesystem::path Log() const { return dir_ / "output.txt"; }
  std::filesystem::path Database() const { return dir_ / "site.db"; }
  std::filesystem::path Drives() const { return dir_ / "drives"; }
  std::string AwaitOutput(const std::string& pattern) const { return testing::AwaitOutput(Log(), pattern); }

  // Sends SIGTERM and waits up to 10 seconds: the wait status, or -1 when the server still runs (the
  // status it ended with when it had ended before).
  int Stop() {
    using namespace std::chrono_literals;
    if (!Running()) return exitStatus_;
    if (kill(pid_, SIGTERM) != 0) return -1;
    for (int i = 0; i < 200 && Running(); ++i) std::this_thread::sleep_for(50ms);
    return exitStatus_;
  }

 private:
  std::filesystem::path dir_;
  pid_t pid_ = -1;
  int port_ = 0;
  int exitStatus_ = -1;
};

}  // namespace corvane::testing
