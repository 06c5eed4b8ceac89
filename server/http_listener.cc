#include "http_listener.h"

#include <algorithm>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "http_connection.h"

namespace corvane::server {

namespace net = boost::asio;
using tcp = net::ip::tcp;

// Every I/O thread runs an io_context of its own, so that the threads share no queue or lock; the
// first also accepts, and hands the connections to the threads in turn.
struct HttpListener::Impl {
  using WorkGuard = net::executor_work_guard<net::io_context::executor_type>;
  // Declared before the io_contexts: the connections, destroyed with them, still report to the host.
  std::shared_ptr<ConnectionHost> host;
  std::vector<std::unique_ptr<net::io_context>> contexts;
  net::io_context& ioc;  // the first: accepts and stops
  tcp::acceptor acceptor{ioc};
  net::steady_timer retryTimer{ioc}, graceTimer{ioc};
  std::optional<net::ssl::context> tls;
  std::vector<WorkGuard> work;
  size_t next = 0;  // the context of the next connection
  std::atomic<bool> stopRequested{false};

  static std::vector<std::unique_ptr<net::io_context>> Contexts(int n) {
    std::vector<std::unique_ptr<net::io_context>> out;
    for (int i = 0; i < std::max(1, n); ++i) out.push_back(std::make_unique<net::io_context>(1));
    return out;
  }

  Impl(ListenerOptions options, RequestHandler handler)
      : host(std::make_shared<ConnectionHost>(options, std::move(handler))),
        contexts(Contexts(options.ioThreads)),
        ioc(*contexts.front()) {
    host->onDrained = [this] { net::post(ioc, [this] { Drained(); }); };
  }
  // The acceptor and timers go first, then each context with the connections it still holds.
  ~Impl() { host->onDrained = nullptr; }

  void Accept() {
    net::io_context& target = *contexts[next++ % contexts.size()];
    acceptor.async_accept(target, [this](boost::system::error_code ec, tcp::socket socket) {
      if (ec == net::error::operation_aborted || !acceptor.is_open()) return;
      if (ec) {  // out of file descriptors, most likely: try again shortly instead of spinning
        retryTimer.expires_after(std::chrono::milliseconds(50));
        retryTimer.async_wait([this](boost::system::error_code e) {
          if (!e) Accept();
        });
        return;
      }
      boost::system::error_code e;
      std::string address = socket.remote_endpoint(e).address().to_string();
      if (e) {
      } else if (!host->Admit(address)) {
        TurnAway(socket);
      } else {
        StartConnection(host, std::move(socket), std::move(address), tls ? &*tls : nullptr);
      }
      Accept();
    });
  }

  // A connection over its address's cap gets a short 503, without waiting for the client to read it.
  static void TurnAway(tcp::socket& socket) {
    static const std::string kBusy =
        "HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nConnection: close\r\nRetry-After: "
        "1\r\n\r\n";
    boost::system::error_code ignored;
    socket.non_blocking(true, ignored);
    socket.write_some(net::buffer(kBusy), ignored);
    socket.shutdown(tcp::socket::shutdown_both, ignored);
    socket.close(ignored);
  }

  void BeginStop() {
    boost::system::error_code ignored;
    acceptor.close(ignored);
    retryTimer.cancel();
    host->ShutdownAll();
    graceTimer.expires_after(host->options.stopGrace);
    graceTimer.async_wait([this](boost::system::error_code ec) {
      if (!ec)
        for (auto& c : contexts) c->stop();  // what is still being answered is given up
    });
    if (host->Count() == 0) Drained();
  }

  void Drained() {
    graceTimer.cancel();
    work.clear();
  }
};

HttpListener::HttpListener(ListenerOptions options, RequestHandler handler)
    : impl_(std::make_unique<Impl>(std::move(options), std::move(handler))) {}

HttpListener::~HttpListener() = default;

int HttpListener::Bind() {
  const ListenerOptions& o = impl_->host->options;
  if (!o.tlsCert.empty()) {
    try {
      auto& tls = impl_->tls.emplace(net::ssl::context::tls_server);
      tls.set_options(net::ssl::context::default_workarounds | net::ssl::context::no_sslv2 |
                      net::ssl::context::no_sslv3 | net::ssl::context::no_tlsv1 |
                      net::ssl::context::no_tlsv1_1);
      tls.use_certificate_chain_file(o.tlsCert);
      tls.use_private_key_file(o.tlsKey, net::ssl::context::pem);
    } catch (const boost::system::system_error& e) {
      throw std::runtime_error("cannot load " + o.tlsCert + " / " + o.tlsKey + ": " + e.what());
    }
  }
  boost::system::error_code ec;
  auto address = net::ip::make_address(o.bind, ec);
  if (ec) throw std::runtime_error("cannot listen on " + o.bind + ": not an address");
  tcp::endpoint endpoint(address, static_cast<unsigned short>(o.port));
  tcp::acceptor& a = impl_->acceptor;
  a.open(endpoint.protocol(), ec);
  if (!ec) a.set_option(net::socket_base::reuse_address(true), ec);
  if (!ec) a.bind(endpoint, ec);
  if (!ec) a.listen(net::socket_base::max_listen_connections, ec);
  if (ec)
    throw std::runtime_error("cannot listen on " + o.bind + ":" + std::to_string(o.port) + ": " +
                             ec.message());
  return a.local_endpoint().port();
}

void HttpListener::Run() {
  Impl& i = *impl_;
  if (i.stopRequested || !i.acceptor.is_open()) return;
  for (auto& c : i.contexts) i.work.push_back(net::make_work_guard(*c));
  i.Accept();
  std::vector<std::thread> more;
  for (size_t n = 1; n < i.contexts.size(); ++n) more.emplace_back([c = i.contexts[n].get()] { c->run(); });
  i.ioc.run();
  for (std::thread& t : more) t.join();
}

void HttpListener::Stop() {
  if (impl_->stopRequested.exchange(true)) return;
  impl_->host->stopping = true;
  net::post(impl_->ioc, [i = impl_.get()] { i->BeginStop(); });
}

size_t HttpListener::Connections() const { return impl_->host->Count(); }

}  // namespace corvane::server
