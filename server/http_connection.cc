#include "http_connection.h"

#include <array>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <optional>

namespace corvane::server {

namespace beast = boost::beast;
namespace http = beast::http;
namespace net = boost::asio;
using tcp = net::ip::tcp;
using Clock = std::chrono::steady_clock;

bool ConnectionHost::Admit(const std::string& address) {
  std::lock_guard lock(mu_);
  int& n = perAddress_[address];
  if (n >= options.maxConnectionsPerClient) {
    if (n == 0) perAddress_.erase(address);
    return false;
  }
  ++n;
  return true;
}

void ConnectionHost::Register(ConnectionBase* c, std::weak_ptr<ConnectionBase> weak) {
  std::lock_guard lock(mu_);
  open_.emplace(c, std::move(weak));
}

void ConnectionHost::Closed(ConnectionBase* c, const std::string& address) {
  bool drained = false;
  {
    std::lock_guard lock(mu_);
    open_.erase(c);
    if (auto it = perAddress_.find(address); it != perAddress_.end() && --it->second <= 0)
      perAddress_.erase(it);
    drained = stopping && open_.empty();
  }
  if (drained && onDrained) onDrained();
}

void ConnectionHost::ShutdownAll() {
  std::vector<std::shared_ptr<ConnectionBase>> open;
  {
    std::lock_guard lock(mu_);
    for (auto& [c, weak] : open_)
      if (auto p = weak.lock()) open.push_back(std::move(p));
  }
  for (auto& c : open) c->Shutdown();
}

size_t ConnectionHost::Count() const {
  std::lock_guard lock(mu_);
  return open_.size();
}

namespace {

// Whether `ec` says the request did not parse (rather than that the connection failed).
bool IsParseError(const beast::error_code& ec) {
  return ec.category() == http::make_error_code(http::error::bad_target).category();
}

// A header value a reply may carry: no line break or NUL (a page's Response.AddHeader is not trusted).
bool IsSafeHeader(std::string_view name, std::string_view value) {
  if (name.empty()) return false;
  for (std::string_view s : {name, value})
    for (char c : s)
      if (c == '\r' || c == '\n' || c == '\0') return false;
  return name.find(':') == std::string_view::npos;
}

template <class Stream>
class Connection : public ConnectionBase, public std::enable_shared_from_this<Connection<Stream>> {
 public:
  template <class... Tls>
  Connection(std::shared_ptr<ConnectionHost> host, tcp::socket socket, std::string remote, Tls&... tls)
      : host_(std::move(host)), stream_(std::move(socket), tls...), remote_(std::move(remote)) {
    beast::error_code ec;
    tcp::endpoint local = Tcp().socket().local_endpoint(ec);
    if (!ec) {
      localAddr_ = local.address().to_string();
      localPort_ = local.port();
    }
    Tcp().socket().set_option(tcp::no_delay(true), ec);
  }
  ~Connection() override { host_->Closed(this, remote_); }

  void Start() {
    host_->Register(this, this->weak_from_this());
    if constexpr (kTls) {
      Tcp().expires_after(host_->options.headerTimeout);
      stream_.async_handshake(net::ssl::stream_base::server,
                              [self = this->shared_from_this()](beast::error_code ec) {
                                if (ec) return self->Close();
                                self->AwaitRequest();
                              });
    } else {
      AwaitRequest();
    }
  }

  void Shutdown() override {
    net::dispatch(Tcp().get_executor(), [self = this->shared_from_this()] {
      if (self->state_ != State::kAnswering && self->state_ != State::kWriting) self->Close();
    });
  }

 private:
  static constexpr bool kTls = !std::is_same_v<Stream, beast::tcp_stream>;
  enum class State { kIdle, kReading, kAnswering, kWriting, kClosing };

  beast::tcp_stream& Tcp() { return beast::get_lowest_layer(stream_); }

  // Waits for the next request's first byte (at most keepAliveTimeout), unless a pipelined one is
  // already in the buffer.
  void AwaitRequest() {
    if (host_->stopping) return Close();
    state_ = State::kIdle;
    parser_.emplace();
    parser_->header_limit(static_cast<std::uint32_t>(host_->options.maxHeaderBytes));
    parser_->body_limit(host_->options.maxBodyBytes);
    if (buffer_.size() > 0) return ReadHead();
    Tcp().expires_after(host_->options.keepAliveTimeout);
    stream_.async_read_some(buffer_.prepare(4096),
                            [self = this->shared_from_this()](beast::error_code ec, size_t n) {
                              if (ec) return self->Close();
                              self->buffer_.commit(n);
                              self->ReadHead();
                            });
  }

  void ReadHead() {
    state_ = State::kReading;
    started_ = Clock::now();
    Tcp().expires_after(host_->options.headerTimeout);
    http::async_read_header(
        stream_, buffer_, *parser_,
        [self = this->shared_from_this()](beast::error_code ec, size_t) { self->OnHead(ec); });
  }

  void OnHead(beast::error_code ec) {
    if (ec == http::error::header_limit) return Refuse(431);
    if (ec == http::error::body_limit) return Refuse(413);  // a Content-Length over the limit
    if (ec) return IsParseError(ec) && ec != http::error::end_of_stream ? Refuse(400) : Close();
    const auto& head = parser_->get();
    const size_t lengths = head.count(http::field::content_length);
    const bool hasEncoding = head.count(http::field::transfer_encoding) > 0;
    // Framing a proxy in front could read otherwise than we do: refused, so neither can be fooled.
    if (lengths > 1 || (lengths && hasEncoding) || (hasEncoding && !parser_->chunked())) return Refuse(400);
    if (!parser_->is_done() && beast::iequals(head[http::field::expect], "100-continue")) {
      static const std::string kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
      net::async_write(stream_, net::buffer(kContinue),
                       [self = this->shared_from_this()](beast::error_code e, size_t) {
                         if (e) return self->Close();
                         self->ReadBody();
                       });
      return;
    }
    ReadBody();
  }

  // Reads the body piece by piece; each read may wait headerTimeout at most.
  void ReadBody() {
    if (parser_->is_done()) return Dispatch();
    Tcp().expires_after(host_->options.headerTimeout);
    http::async_read_some(stream_, buffer_, *parser_,
                          [self = this->shared_from_this()](beast::error_code ec, size_t) {
                            if (ec == http::error::body_limit) return self->Refuse(413);
                            if (ec) return IsParseError(ec) ? self->Refuse(400) : self->Close();
                            self->ReadBody();
                          });
  }

  void Dispatch() {
    http::request<http::string_body> message = parser_->release();
    parser_.reset();
    auto request = std::make_shared<HttpRequest>();
    request->method = std::string(message.method_string());
    request->target = std::string(message.target());
    request->version = message.version() == 10 ? "HTTP/1.0" : "HTTP/1.1";
    keepAlive_ = message.keep_alive();
    RememberForLog(*request, message);
    if (!SplitTarget(request->target, request->path, request->query)) return Refuse(400);
    request->headers.reserve(std::distance(message.begin(), message.end()));
    for (const auto& field : message)
      request->headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    request->body = std::move(message.body());  // the one copy of the body, moved from here on
    request->remoteAddr = remote_;
    request->localAddr = localAddr_;
    request->localPort = localPort_;
    request->secure = kTls;
    head_ = request->method == "HEAD";
    state_ = State::kAnswering;
    Tcp().expires_never();
    host_->handler(std::move(request), [self = this->shared_from_this()](HttpReply reply) {
      net::dispatch(self->Tcp().get_executor(),
                    [self, reply = std::move(reply)]() mutable { self->Write(std::move(reply)); });
    });
  }

  void RememberForLog(const HttpRequest& request, const http::request<http::string_body>& message) {
    if (!host_->options.log) return;
    method_ = request.method;
    target_ = request.target;
    version_ = request.version;
    referer_ = std::string(message[http::field::referer]);
    userAgent_ = std::string(message[http::field::user_agent]);
  }

  // Answers a request that is not read whole, and closes.
  void Refuse(int status) {
    HttpReply reply = StatusPage(status);
    reply.close = true;
    keepAlive_ = false;
    Write(std::move(reply));
  }

  void Write(HttpReply reply) {
    if (state_ == State::kClosing) return;
    state_ = State::kWriting;
    const bool close = reply.close || !keepAlive_ || host_->stopping;
    status_ = reply.status;
    const bool bodyless = reply.status == 304 || reply.status == 204 || reply.status < 200;
    bytes_ = head_ || bodyless ? 0 : reply.body.size();
    WriteHead(reply, bodyless, close);
    if (!head_ && !bodyless) body_ = std::move(reply.body);
    Tcp().expires_after(host_->options.keepAliveTimeout);  // a reader too slow to take its reply
    const std::array<net::const_buffer, 2> out{net::buffer(headText_), net::buffer(body_)};
    net::async_write(stream_, out, [self = this->shared_from_this(), close](beast::error_code ec, size_t) {
      self->body_ = std::string();  // a kept-alive connection holds no reply while it waits
      self->Log();
      if (ec) return self->Close();
      if (close) return self->Linger();
      self->AwaitRequest();
    });
  }

  // The status line and the headers: the defaults, the reply's own (those a header may carry), the
  // length unless the status has no body, and "Connection: close" when the connection closes after.
  void WriteHead(const HttpReply& reply, bool bodyless, bool close) {
    std::string& h = headText_;
    h.clear();
    h += "HTTP/1.1 ";
    h += std::to_string(reply.status);
    h += ' ';
    const beast::string_view reason = http::obsolete_reason(static_cast<http::status>(reply.status));
    h.append(reason.data(), reason.size());
    h += "\r\n";
    auto add = [&h](std::string_view name, std::string_view value) {
      h.append(name).append(": ").append(value).append("\r\n");
    };
    for (const auto& [name, value] : host_->options.defaultHeaders) add(name, value);
    for (const auto& [name, value] : reply.headers)
      if (IsSafeHeader(name, value)) add(name, value);
    if (!bodyless) add("Content-Length", std::to_string(reply.body.size()));
    if (close) add("Connection", "close");
    h += "\r\n";
  }

  void Log() {
    if (!host_->options.log) return;
    host_->options.log(
        AccessRecord{.remoteAddr = remote_,
                     .method = method_,
                     .target = target_,
                     .version = version_,
                     .referer = referer_,
                     .userAgent = userAgent_,
                     .status = status_,
                     .bytes = bytes_,
                     .when = std::time(nullptr),
                     .took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started_)});
    method_.clear(), target_.clear(), version_.clear(), referer_.clear(), userAgent_.clear();
  }

  // After a closing reply: no more is sent; what the client still sends is read and dropped for a
  // moment (a body it had started), then the connection closes.
  void Linger() {
    state_ = State::kClosing;
    beast::error_code ignored;
    Tcp().socket().shutdown(tcp::socket::shutdown_send, ignored);
    Tcp().expires_after(
        std::min<std::chrono::milliseconds>(host_->options.headerTimeout, std::chrono::milliseconds(2000)));
    Drain();
  }

  void Drain() {
    if (drained_ > kDrainMost) return Close();
    Tcp().async_read_some(net::buffer(scratch_),
                          [self = this->shared_from_this()](beast::error_code ec, size_t n) {
                            if (ec) return self->Close();
                            self->drained_ += n;
                            self->Drain();
                          });
  }

  void Close() {
    state_ = State::kClosing;
    beast::error_code ignored;
    Tcp().socket().shutdown(tcp::socket::shutdown_both, ignored);
    Tcp().close();
  }

  static constexpr size_t kDrainMost = 4u << 20;

  std::shared_ptr<ConnectionHost> host_;
  Stream stream_;
  std::string remote_, localAddr_;
  int localPort_ = 0;
  beast::flat_buffer buffer_;
  std::optional<http::request_parser<http::string_body>> parser_;
  State state_ = State::kIdle;
  bool keepAlive_ = true, head_ = false;
  // For the access log line of the request being answered.
  Clock::time_point started_ = Clock::now();
  std::string method_, target_, version_, referer_, userAgent_;
  int status_ = 0;
  size_t bytes_ = 0, drained_ = 0;
  // The reply being written: its head, and its body (taken from the reply, never copied).
  std::string headText_, body_;
  std::array<char, 16384> scratch_;
};

}  // namespace

void StartConnection(std::shared_ptr<ConnectionHost> host, tcp::socket socket, std::string remoteAddress,
                     net::ssl::context* tls) {
  if (tls) {
    std::make_shared<Connection<beast::ssl_stream<beast::tcp_stream>>>(std::move(host), std::move(socket),
                                                                       std::move(remoteAddress), *tls)
        ->Start();
  } else {
    std::make_shared<Connection<beast::tcp_stream>>(std::move(host), std::move(socket),
                                                    std::move(remoteAddress))
        ->Start();
  }
}

}  // namespace corvane::server
