// A throwaway redis-server for tests: on a free loopback port, no persistence, its folder under the
// scratch folder; stopped and started again on the same port when a test asks, killed when the
// test ends. Available() is false when redis-server is not installed (the test then skips).
#pragma once

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "test_support.h"

namespace corvane::testing {

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

class RedisProcess {
 public:
  RedisProcess() : program_(FindProgram("redis-server")), dir_(ScratchPath("redis")), port_(FreePort()) {
    std::filesystem::create_directories(dir_);
    if (Available()) Start();
  }
  ~RedisProcess() { Stop(); }
  RedisProcess(const RedisProcess&) = delete;
  RedisProcess& operator=(const RedisProcess&) = delete;

  bool Available() const { return !program_.empty(); }
  int Port() const { return port_; }
  std::string Url() const { return "redis://127.0.0.1:" + std::to_string(port_); }
  // Starts it (again, on the same port); true once it accepts connections.
  bool Start() {
    using namespace std::chrono_literals;
    pid_ = Spawn({program_, "--port", std::to_string(port_), "--bind", "127.0.0.1", "--save", "",
                  "--appendonly", "no", "--dir", dir_.string(), "--protected-mode", "no"},
                 dir_ / "redis.log");
    for (int i = 0; i < 100; ++i, std::this_thread::sleep_for(50ms))
      if (Listening(port_)) return true;
    return false;
  }
  // Stops it; its data goes with it.
  void Stop() { Reap(pid_); }

 private:
  std::string program_;
  std::filesystem::path dir_;
  int port_;
  pid_t pid_ = -1;
};

}  // namespace corvane::testing
