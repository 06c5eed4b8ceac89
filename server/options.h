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
  // Worker threads. A worker serves one connection at a time for as long as the client keeps it alive
  // (1000 requests or 3 idle seconds at most), so this is the number of connections served at once;
  // more wait their turn. Must be at least 1.
  int threads = 64;
  // Minutes a session may stay idle before it is dropped. Must be at least 1.
  int sessionTimeoutMinutes = 20;
  // Largest request body accepted, in bytes; a larger one is answered 413 without reading it.
  size_t maxBodyBytes = 32u * 1024 * 1024;
  // One access log line per request on stdout.
  bool accessLog = true;
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
