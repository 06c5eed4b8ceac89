// SystemInit.Upload with UpToFile = 2 (nothing written) on two bodies, each beside memchr over the
// same bytes in the same run:
//   - LargeFile: one 64 MiB file (random bytes without 0x7F, so that memchr for 0x7F reads it all);
//   - SmallFields: 255 fields of a few dozen bytes, some of them Chinese (GBK).
// The "AndRead" cases also read every item back with Form, which makes the file's byte array.
// Each iteration needs a fresh page (the body can be read once); building it is not timed. memchr
// runs both over one body that stays in place and over each fresh page's body, which is the state
// Upload finds it in.
//
// ServerPeakRss: the memory a 64 MiB upload takes in corvane-server. The server of the same build
// folder (../server/corvane-server beside this program) is started on a scratch copy of the demo
// database with --max-body above the body; one person signs in and posts the body to the upload page
// (whose own limit, 16 MiB, turns the file down after reading the whole body: every copy of the body
// on its way is made, only the file is not written). Reported: the body's size, the server's peak
// RSS above its level before the upload (VmHWM after clear_refs), and the ratio of the two.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "corvane/corvane.h"
#include "upload/system_init.h"

namespace corvane {
namespace {

const std::string kBoundary = "----WebKitFormBoundary7MA4YWxkTrZu0gW";

std::string LargeFileBody() {
  std::string content(64u << 20, '\0');
  std::mt19937_64 rng(42);
  for (size_t i = 0; i < content.size(); i += 8) {
    uint64_t r = rng();
    std::memcpy(&content[i], &r, 8);
  }
  for (char& c : content)
    if (c == '\x7f') c = 'x';
  return "--" + kBoundary +
         "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"C:\\data\\big.bin\"\r\n" +
         "Content-Type: application/octet-stream\r\n\r\n" + content + "\r\n--" + kBoundary + "--\r\n";
}

std::string SmallFieldsBody() {
  const std::string gbk = EncodeCodePage("张三的报告", kCodePageGbk);
  std::string body;
  for (int i = 0; i < 255; ++i) {
    body += "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"field" + std::to_string(i) +
            "\"\r\n\r\n";
    body +=
        (i % 4 == 0) ? gbk + " " + std::to_string(i) : "value number " + std::to_string(i) + " of the form";
    body += "\r\n";
  }
  return body + "--" + kBoundary + "--\r\n";
}

const std::string& Body(int which) {
  static const std::string large = LargeFileBody();
  static const std::string small = SmallFieldsBody();
  return which == 0 ? large : small;
}

// What is timed, on a fresh page per iteration.
enum class Work { kUpload, kUploadAndRead, kMemchr };

void Run(benchmark::State& state, Work work, int which) {
  const std::string& body = Body(which);
  for (auto _ : state) {
    state.PauseTiming();
    host::Session session;
    auto page = std::make_unique<host::Page>(
        host::PageRequest{
            .url = "/upload.asp", .contentType = "multipart/form-data; boundary=" + kBoundary, .body = body},
        session, host::PageHost{.createObject = CreateObject});
    auto up = page->Server().CreateObject("corvane.SystemInit").As<SystemInit>();
    up->UpToFile(2);
    up->MaxSize(1 << 30);
    std::string result = "OK";
    state.ResumeTiming();

    if (work == Work::kMemchr) {
      // The same bytes in the same state: the page's own copy of the body, just made.
      const std::string& fresh = page->Request().Body();
      benchmark::DoNotOptimize(std::memchr(fresh.data(), 0x7f, fresh.size()));
    } else {
      result = up->Upload();
      if (work == Work::kUploadAndRead) {
        for (int i = 0, n = up->count().ToLong(); i < n; ++i) {
          Variant name(which == 0 ? std::string("file") : "field" + std::to_string(i));
          benchmark::DoNotOptimize(up->Form(name));
        }
      }
    }

    state.PauseTiming();
    if (result != "OK") state.SkipWithError(result.c_str());
    up.reset();
    page.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(body.size()));
}

void BM_Upload(benchmark::State& state, int which) { Run(state, Work::kUpload, which); }
void BM_UploadAndRead(benchmark::State& state, int which) { Run(state, Work::kUploadAndRead, which); }
void BM_MemchrFreshPage(benchmark::State& state, int which) { Run(state, Work::kMemchr, which); }

// memchr over one body that stays in place (warm in the caches after the first pass).
void BM_Memchr(benchmark::State& state, int which) {
  const std::string& body = Body(which);
  for (auto _ : state) benchmark::DoNotOptimize(std::memchr(body.data(), 0x7f, body.size()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(body.size()));
}

// ---- the server's memory for one upload

// A number (KiB) from /proc/PID/status; -1 when missing.
long ProcStatusKiB(pid_t pid, const std::string& key) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(in, line);)
    if (line.rfind(key + ":", 0) == 0) return std::stol(line.substr(key.size() + 1));
  return -1;
}

// One request on a connection of its own; the whole reply as it came (the server closes it).
std::string Exchange(int port, const std::string& request) {
  int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(static_cast<uint16_t>(port));
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string reply;
  if (::connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0) {
    for (size_t done = 0; done < request.size();) {
      ssize_t n = ::send(fd, request.data() + done, request.size() - done, MSG_NOSIGNAL);
      if (n <= 0) break;
      done += static_cast<size_t>(n);
    }
    char buf[65536];
    for (ssize_t n; (n = ::recv(fd, buf, sizeof buf, 0)) > 0;) reply.append(buf, static_cast<size_t>(n));
  }
  ::close(fd);
  return reply;
}

std::string Request(const std::string& head, const std::string& cookie, const std::string& type,
                    const std::string& body) {
  return head + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" +
         (cookie.empty() ? "" : "Cookie: " + cookie + "\r\n") +
         (type.empty() ? "" : "Content-Type: " + type + "\r\n") +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// corvane-server started on a scratch folder, stopped (SIGTERM) at the end.
class Server {
 public:
  explicit Server(const std::filesystem::path& binary) {
    char tmpl[] = "/tmp/corvane-upload-bench.XXXXXX";
    dir_ = ::mkdtemp(tmpl);
    const std::filesystem::path demo = CORVANE_SOURCE_DIR "/data/corvane-site.db";
    if (std::filesystem::exists(demo)) std::filesystem::copy_file(demo, dir_ / "site.db");
    std::vector<std::string> args = {binary.string(),
                                     "--port",
                                     "0",
                                     "--db",
                                     (dir_ / "site.db").string(),
                                     "--drives",
                                     (dir_ / "drives").string(),
                                     "--no-access-log",
                                     "--max-body",
                                     std::to_string(1 << 30)};
    const std::string log = (dir_ / "out").string();
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1), ::dup2(1, 2);
      std::vector<char*> argv;
      for (std::string& a : args) argv.push_back(a.data());
      argv.push_back(nullptr);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    for (int i = 0; i < 600 && port_ == 0; ++i) {
      std::ifstream in(log);
      std::string out((std::istreambuf_iterator<char>(in)), {});
      if (std::smatch m; std::regex_search(out, m, std::regex("http://127\\.0\\.0\\.1:(\\d+)/")))
        port_ = std::stoi(m[1]);
      else
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
  ~Server() {
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
    std::filesystem::remove_all(dir_);
  }
  int Port() const { return port_; }
  pid_t Pid() const { return pid_; }

 private:
  std::filesystem::path dir_;
  pid_t pid_ = -1;
  int port_ = 0;
};

void BM_ServerPeakRss(benchmark::State& state) {
  const std::filesystem::path binary =
      std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "server" /
      "corvane-server";
  if (!std::filesystem::exists(binary)) {
    state.SkipWithError(("no " + binary.string() + ": build the corvane-server target").c_str());
    return;
  }
  const std::string& body = Body(0);
  for (auto _ : state) {
    Server server(binary);
    if (server.Port() == 0) {
      state.SkipWithError("corvane-server did not start");
      return;
    }
    const std::string signIn =
        Exchange(server.Port(), Request("POST /login.asp", "", "application/x-www-form-urlencoded",
                                        "loginName=zhangwei&password=123456"));
    std::smatch m;
    if (!std::regex_search(signIn, m, std::regex("Set-Cookie: ([^;\r]*)"))) {
      state.SkipWithError("sign-in failed");
      return;
    }
    const std::string cookie = m[1];
    for (int i = 0; i < 3; ++i)
      Exchange(server.Port(),
               "GET /upload.asp HTTP/1.1\r\nHost: 127.0.0.1\r\n"
               "Connection: close\r\nCookie: " +
                   cookie + "\r\n\r\n");
    const long before = ProcStatusKiB(server.Pid(), "VmRSS");
    std::ofstream("/proc/" + std::to_string(server.Pid()) + "/clear_refs") << "5";
    const std::string reply =
        Exchange(server.Port(),
                 Request("POST /upload.asp", cookie, "multipart/form-data; boundary=" + kBoundary, body));
    const long peak = ProcStatusKiB(server.Pid(), "VmHWM");
    if (reply.rfind("HTTP/1.1 200", 0) != 0) {
      state.SkipWithError(("the upload got " + reply.substr(0, reply.find('\r'))).c_str());
      return;
    }
    const double bodyMiB = static_cast<double>(body.size()) / (1 << 20);
    const double peakMiB = static_cast<double>(peak - before) / 1024;
    state.counters["body_MiB"] = bodyMiB;
    state.counters["rss_before_MiB"] = static_cast<double>(before) / 1024;
    state.counters["peak_over_before_MiB"] = peakMiB;
    state.counters["peak_per_body"] = peakMiB / bodyMiB;
  }
}

// 0 = LargeFile, 1 = SmallFields.
BENCHMARK_CAPTURE(BM_Memchr, LargeFile, 0);
BENCHMARK_CAPTURE(BM_MemchrFreshPage, LargeFile, 0)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Upload, LargeFile, 0)->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UploadAndRead, LargeFile, 0)->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Memchr, SmallFields, 1);
BENCHMARK_CAPTURE(BM_MemchrFreshPage, SmallFields, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Upload, SmallFields, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_UploadAndRead, SmallFields, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ServerPeakRss)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
