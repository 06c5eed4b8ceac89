// corvane-server's options, each with its default, in one place.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace corvane::server {

struct ServerOptions {
  // TCP port to listen on. 0 lets the system pick a free port; the chosen one is printed.
  int port = 8080;
  // Address to listen on. Loopback by default: the demo site has no TLS and its sign-in is a demo.
  std::string bind = "127.0.0.1";
  // Folder of the site's static files (style sheet, scripts, images). Empty means the site/www folder
  // of the source tree the binary was built from, so a fresh build runs without arguments, or
  // share/corvane/www beside an installed binary.
  std::string site;
  // The database: an ADO-style connection string ("Provider=SQLite;Data Source=x.db", "DSN=...",
  // "Driver=...;...") or the path of a SQLite file. Default: a SQLite file under ./data, created and
  // seeded with the demo office's data on first start.
  std::string db = "data/corvane-site.db";
  // Code page of the web boundary: 936 (Simplified Chinese, GBK; pages served as charset=gbk) or
  // 65001 (UTF-8). Query strings and urlencoded forms are decoded from it.
  int codePage = 936;
  // Drive root of the upload's drive paths ("d:\up\" is <drives>/d/up/); sets CORVANE_DRIVE_ROOT.
  // Empty leaves the environment as it is (the platform's default is ./drives).
  std::string drives;
  // Worker threads that run pages. Connections cost no worker: one or two I/O threads read every
  // request and write every reply, answer static files themselves and hand pages to the workers, so
  // a worker is busy only while a page runs. Pages wait on the database at times, hence twice the
  // cores (at least 2); with --sessions four times the cores, which measured best there (Redis and
  // the thread that talks to it share the cores with the pages). Must be at least 1.
  int threads = DefaultWorkerThreads();
  // I/O threads that run every connection (reads, writes, static files): two where there are two
  // cores or more, so that static files are served on both. Must be at least 1.
  int ioThreads = DefaultIoThreads();
  // Minutes a session may stay idle before it is dropped. Must be at least 1.
  int sessionTimeoutMinutes = 20;
  // Minutes a session lives at most, however busy it is (a stolen cookie is worthless after it).
  int sessionLifetimeMinutes = 12 * 60;
  // Sessions kept at most; a new one over the cap ends the session idle longest first (through
  // Session_OnEnd). A request without a session runs with a provisional one, stored only when the
  // page puts something in it or signs in, so this counts visitors who did.
  size_t maxSessions = 100000;
  // Largest request body accepted, in bytes, whatever its framing (Content-Length or chunked); a
  // larger one is answered 413 and the connection closed.
  size_t maxBodyBytes = 32u * 1024 * 1024;
  // Largest request head (request line and headers); a larger one is answered 431 and closed.
  size_t maxHeaderBytes = 64 * 1024;
  // Milliseconds a client has to send a request's whole head once its first byte came, and at most
  // between two reads of its body; a slower one is closed.
  int headerTimeoutMs = 10000;
  // Milliseconds a kept-alive connection may wait for its next request before it is closed.
  int keepAliveTimeoutMs = 30000;
  // Connections one client address may hold at once; one more is answered 503 and closed.
  int maxConnectionsPerClient = 64;
  // One access log line per request on stdout: the combined log format with the seconds the
  // request took, or one JSON object per line with `logJson`.
  bool accessLog = true;
  bool logJson = false;
  // HTTPS: the certificate chain and private key (PEM files). Both or neither; with them the
  // session cookie is Secure.
  std::string tlsCert, tlsKey;
  // Where the sessions and the Application's values live: "" in this process; "redis://HOST:PORT[/DB]"
  // in Redis, shared by every corvane-server given the same address (several processes behind a
  // load balancer serve one site; redis_sessions.h).
  std::string sessions;

  static int DefaultWorkerThreads(bool sharedSessions = false);
  static int DefaultIoThreads();
};

// What a bad command line raises; the message names the option.
class OptionsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Parses "--name value" and "--name=value" (and "--no-access-log"). Unknown options and bad values
// raise OptionsError. `help` is set when --help or -h is given.
ServerOptions ParseOptions(int argc, const char* const* argv, bool* help = nullptr);
std::string OptionsUsage();

// The connection string for --db: a value holding "=" is taken as a connection string as it stands,
// anything else as the path of a SQLite file.
std::string ConnectionStringFor(const std::string& db);
// The SQLite file a connection string names ("Data Source=..."), or "" when it names none.
std::string SqliteFileOf(const std::string& connectionString);

}  // namespace corvane::server
