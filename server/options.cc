#include "options.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <thread>

#include "corvane/codepage.h"
#include "corvane/text.h"
#include "redis_client.h"

namespace corvane::server {

namespace {

long ToNumber(std::string_view name, std::string_view text, long min, long max) {
  long value = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value < min || value > max)
    throw OptionsError("--" + std::string(name) + ": expected a number from " + std::to_string(min) + " to " +
                       std::to_string(max) + ", got '" + std::string(text) + "'");
  return value;
}

}  // namespace

int ServerOptions::DefaultWorkerThreads(bool sharedSessions) {
  return static_cast<int>(std::max(2u, (sharedSessions ? 4 : 2) * std::thread::hardware_concurrency()));
}

int ServerOptions::DefaultIoThreads() { return std::thread::hardware_concurrency() >= 2 ? 2 : 1; }

ServerOptions ParseOptions(int argc, const char* const* argv, bool* help) {
  ServerOptions o;
  bool threadsGiven = false;
  if (help) *help = false;
  for (int i = 1; i < argc; ++i) {
    std::string_view arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      if (help) *help = true;
      continue;
    }
    if (arg == "--no-access-log" || arg == "--log-json") {
      (arg == "--log-json" ? o.logJson : o.accessLog) = arg == "--log-json";
      continue;
    }
    if (arg.substr(0, 2) != "--") throw OptionsError("unexpected argument '" + std::string(arg) + "'");
    std::string_view name = arg.substr(2), value;
    if (size_t eq = name.find('='); eq != std::string_view::npos) {
      value = name.substr(eq + 1);
      name = name.substr(0, eq);
    } else {
      if (i + 1 >= argc) throw OptionsError("--" + std::string(name) + " needs a value");
      value = argv[++i];
    }
    if (name == "port") {
      o.port = static_cast<int>(ToNumber(name, value, 0, 65535));
    } else if (name == "bind") {
      o.bind = value;
    } else if (name == "site") {
      o.site = value;
    } else if (name == "db") {
      if (value.empty()) throw OptionsError("--db must not be empty");
      o.db = value;
    } else if (name == "codepage") {
      o.codePage = static_cast<int>(ToNumber(name, value, 0, 65535));
      if (!IsSupportedCodePage(o.codePage) || (o.codePage != kCodePageGbk && o.codePage != kCodePageUtf8))
        throw OptionsError("--codepage: 936 or 65001, got " + std::string(value));
    } else if (name == "drives") {
      o.drives = value;
    } else if (name == "threads") {
      o.threads = static_cast<int>(ToNumber(name, value, 1, 1024));
      threadsGiven = true;
    } else if (name == "io-threads") {
      o.ioThreads = static_cast<int>(ToNumber(name, value, 1, 64));
    } else if (name == "session-timeout") {
      o.sessionTimeoutMinutes = static_cast<int>(ToNumber(name, value, 1, 24 * 60));
    } else if (name == "session-lifetime") {
      o.sessionLifetimeMinutes = static_cast<int>(ToNumber(name, value, 1, 366 * 24 * 60));
    } else if (name == "max-sessions") {
      o.maxSessions = static_cast<size_t>(ToNumber(name, value, 1, 100000000));
    } else if (name == "max-body") {
      o.maxBodyBytes = static_cast<size_t>(ToNumber(name, value, 1, 1L << 40));
    } else if (name == "max-header") {
      o.maxHeaderBytes = static_cast<size_t>(ToNumber(name, value, 1024, 16L << 20));
    } else if (name == "header-timeout") {
      o.headerTimeoutMs = static_cast<int>(ToNumber(name, value, 1, 3600)) * 1000;
    } else if (name == "keep-alive-timeout") {
      o.keepAliveTimeoutMs = static_cast<int>(ToNumber(name, value, 1, 3600)) * 1000;
    } else if (name == "max-connections-per-client") {
      o.maxConnectionsPerClient = static_cast<int>(ToNumber(name, value, 1, 1000000));
    } else if (name == "sessions") {
      try {
        ParseRedisUrl(value);
      } catch (const std::invalid_argument& e) {
        throw OptionsError("--sessions: " + std::string(e.what()));
      }
      o.sessions = value;
    } else if (name == "tls-cert" || name == "tls-key") {
      if (value.empty()) throw OptionsError("--" + std::string(name) + " must not be empty");
      (name == "tls-cert" ? o.tlsCert : o.tlsKey) = value;
    } else {
      throw OptionsError("unknown option --" + std::string(name) + " (see --help)");
    }
  }
  if (o.tlsCert.empty() != o.tlsKey.empty()) throw OptionsError("--tls-cert and --tls-key go together");
  if (!threadsGiven && !o.sessions.empty()) o.threads = ServerOptions::DefaultWorkerThreads(true);
  return o;
}

std::string OptionsUsage() {
  ServerOptions d;
  return "usage: corvane-server [options]\n"
         "  --port N             TCP port (default " +
         std::to_string(d.port) +
         "; 0 picks a free one)\n"
         "  --bind ADDR          address to listen on (default " +
         d.bind +
         ")\n"
         "  --site DIR           folder of the static files (default: the source tree's site/www)\n"
         "  --db CONN|FILE       connection string or SQLite file (default " +
         d.db +
         ")\n"
         "  --codepage 936|65001 code page of pages and forms (default " +
         std::to_string(d.codePage) +
         ")\n"
         "  --drives DIR         drive root for uploads, sets CORVANE_DRIVE_ROOT (default ./drives)\n"
         "  --threads N          worker threads that run pages (default " +
         std::to_string(d.threads) + "; " + std::to_string(ServerOptions::DefaultWorkerThreads(true)) +
         " with --sessions)\n"
         "  --io-threads N       threads that run the connections and static files (default " +
         std::to_string(d.ioThreads) +
         ")\n"
         "  --session-timeout M  idle minutes before a session ends (default " +
         std::to_string(d.sessionTimeoutMinutes) +
         ")\n"
         "  --session-lifetime M minutes a session lives at most (default " +
         std::to_string(d.sessionLifetimeMinutes) +
         ")\n"
         "  --max-sessions N     sessions kept at most; the one idle longest ends first (default " +
         std::to_string(d.maxSessions) +
         ")\n"
         "  --max-body BYTES     largest request body, any framing (default " +
         std::to_string(d.maxBodyBytes) +
         ")\n"
         "  --max-header BYTES   largest request head (default " +
         std::to_string(d.maxHeaderBytes) +
         ")\n"
         "  --header-timeout S   seconds to send a request's head (default " +
         std::to_string(d.headerTimeoutMs / 1000) +
         ")\n"
         "  --keep-alive-timeout S  seconds an idle connection is kept (default " +
         std::to_string(d.keepAliveTimeoutMs / 1000) +
         ")\n"
         "  --max-connections-per-client N  connections of one address at once (default " +
         std::to_string(d.maxConnectionsPerClient) +
         ")\n"
         "  --sessions redis://HOST:PORT[/DB]  keep the sessions and Application values in Redis,\n"
         "                       shared by every server given the same address (default: in this process);\n"
         "                       unix:///PATH[?db=DB] reaches a Redis on this machine by its socket\n"
         "  --tls-cert FILE, --tls-key FILE  serve HTTPS with this certificate chain and key (PEM)\n"
         "  --no-access-log      no access log lines on stdout\n"
         "  --log-json           access log lines as JSON objects\n";
}

std::string ConnectionStringFor(const std::string& db) {
  if (db.find('=') != std::string::npos) return db;
  return "Provider=SQLite;Data Source=" + db;
}

std::string SqliteFileOf(const std::string& connectionString) {
  std::string lower = LCase(connectionString);
  if (lower.find("provider=sqlite") == std::string::npos && lower.find('=') != std::string::npos) return "";
  if (lower.find('=') == std::string::npos) return connectionString;
  size_t at = lower.find("data source=");
  if (at == std::string::npos) return "";
  size_t start = at + 12;
  size_t end = connectionString.find(';', start);
  return connectionString.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

}  // namespace corvane::server
