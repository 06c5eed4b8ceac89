// corvane-server: serves the demo office site (or any registered pages) over HTTP.
#include <pthread.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "corvane/drive_path.h"
#include "corvane/error.h"
#include "corvane/registry.h"
#include "http_server.h"
#include "options.h"
#include "scripting/scripting.h"
#include "site.h"

namespace {

using corvane::server::ServerOptions;

// The site's static files: the source tree's site/www for a build, share/corvane/www beside an
// installed binary (<prefix>/bin/corvane-server).
std::string DefaultSiteDir() {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (fs::is_directory(CORVANE_DEFAULT_SITE_DIR, ec)) return CORVANE_DEFAULT_SITE_DIR;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  return (exe.parent_path().parent_path() / "share" / "corvane" / "www").string();
}

int Serve(const ServerOptions& o) {
  namespace fs = std::filesystem;
  if (!o.drives.empty()) ::setenv("CORVANE_DRIVE_ROOT", o.drives.c_str(), 1);
  // The drive folders hold the site's uploads; pages cannot make the root themselves.
  fs::create_directories(corvane::DriveRoot());
  // The file objects of pages (Scripting.FileSystemObject, ADODB.Stream) reach the site's folder by
  // the local paths Server.MapPath gives.
  std::error_code ec;
  fs::path site = fs::canonical(o.site, ec);
  corvane::scripting::SetSiteFolder((ec ? fs::absolute(o.site) : site).string());
  const std::string connStr = corvane::server::ConnectionStringFor(o.db);
  const std::string dbFile = corvane::server::SqliteFileOf(connStr);
  if (!dbFile.empty() && fs::path(dbFile).has_parent_path())
    fs::create_directories(fs::path(dbFile).parent_path());

  if (corvane::site::PrepareDatabase(connStr))
    std::printf("corvane-server: created and seeded the demo database %s\n",
                dbFile.empty() ? "" : dbFile.c_str());

  auto application = std::make_shared<corvane::host::Application>();
  application->Set("ConnStr", corvane::Variant(connStr));
  corvane::server::PageRegistry pages;  // the site's pages are script pages: none compiled in

  std::vector<std::string> secrets{connStr};
  if (!dbFile.empty()) {
    secrets.push_back(dbFile);
    secrets.push_back(fs::absolute(dbFile).string());
  }
  corvane::server::HttpServer server(
      o, std::move(pages), {.application = application, .createObject = corvane::CreateObject}, secrets);
  server.SetPageGuard(corvane::site::SiteGuard(connStr));
  int port = server.Bind();

  // SIGTERM and SIGINT are taken by one thread that stops the server; the workers never see them.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGTERM);
  sigaddset(&stopSignals, SIGINT);
  std::thread signalThread([&server, stopSignals] {
    int sig = 0;
    sigwait(&stopSignals, &sig);
    if (sig != 0) {
      std::printf("corvane-server: %s, stopping\n", sig == SIGTERM ? "SIGTERM" : "SIGINT");
      std::fflush(stdout);
      server.Stop();
    }
  });

  std::printf("corvane-server: serving %s on http://%s:%d/\n", o.site.c_str(), o.bind.c_str(), port);
  std::fflush(stdout);
  server.Run();
  // Run() also returns when stopped by other means: wake the signal thread so it can be joined.
  pthread_kill(signalThread.native_handle(), SIGTERM);
  signalThread.join();
  std::printf("corvane-server: stopped\n");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // Block the stop signals before any thread starts, so that every thread inherits the mask.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGTERM);
  sigaddset(&stopSignals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
  signal(SIGPIPE, SIG_IGN);
  // A write past the file size limit fails (EFBIG) and the page reports it, instead of the signal
  // ending the server.
  signal(SIGXFSZ, SIG_IGN);

  ServerOptions options;
  try {
    bool help = false;
    options = corvane::server::ParseOptions(argc, argv, &help);
    if (help) {
      std::fputs(corvane::server::OptionsUsage().c_str(), stdout);
      return 0;
    }
  } catch (const corvane::server::OptionsError& e) {
    std::fprintf(stderr, "corvane-server: %s\n", e.what());
    return 2;
  }
  if (options.site.empty()) options.site = DefaultSiteDir();
  try {
    return Serve(options);
  } catch (const corvane::Error& e) {
    std::fprintf(stderr, "corvane-server: error %d: %s\n", e.Number(), e.Description().c_str());
  } catch (const std::exception& e) {
    std::fprintf(stderr, "corvane-server: %s\n", e.what());
  }
  return 1;
}
