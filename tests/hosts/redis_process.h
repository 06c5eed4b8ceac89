// A throwaway redis-server for tests: on a free loopback port and a Unix socket, no persistence, its
// folder under the scratch folder; stopped and started again on the same port when a test asks, killed when
// the test ends. Available() is false when redis-server is not installed (the test then skips).
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "process_test_support.h"

namespace corvane::testing {

class RedisProcess {
 public:
  RedisProcess()
      : program_(FindProgram("redis-server")),
        dir_(ScratchPath("redis")),
        port_(FreePort()),
        // In the system's temporary folder: a socket's path must be short (108 bytes at most).
        socket_(std::filesystem::temp_directory_path() /
                ("corvane-redis-" + std::to_string(port_) + ".sock")) {
    std::filesystem::create_directories(dir_);
    if (Available()) Start();
  }
  ~RedisProcess() { Stop(); }
  RedisProcess(const RedisProcess&) = delete;
  RedisProcess& operator=(const RedisProcess&) = delete;

  bool Available() const { return !program_.empty(); }
  int Port() const { return port_; }
  std::string Url() const { return "redis://127.0.0.1:" + std::to_string(port_); }
  std::string SocketUrl() const { return "unix://" + socket_.string(); }
  // Starts it (again, on the same port); true once it accepts connections.
  bool Start() {
    using namespace std::chrono_literals;
    pid_ =
        Spawn({program_, "--port", std::to_string(port_), "--bind", "127.0.0.1", "--save", "", "--appendonly",
               "no", "--dir", dir_.string(), "--protected-mode", "no", "--unixsocket", socket_.string()},
              dir_ / "redis.log");
    for (int i = 0; i < 100; ++i, std::this_thread::sleep_for(50ms))
      if (Listening(port_)) return true;
    return false;
  }
  // Stops it; its data goes with it.
  void Stop() {
    Reap(pid_);
    std::filesystem::remove(socket_);
  }

 private:
  std::string program_;
  std::filesystem::path dir_;
  int port_;
  std::filesystem::path socket_;
  pid_t pid_ = -1;
};

}  // namespace corvane::testing
