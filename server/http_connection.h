// One client connection: reads its requests one after another (pipelined ones stay in the buffer
// until the reply before them is written, so replies go out in order), hands each to the handler and
// writes its reply. Only http_listener.cc starts connections; only it and http_connection.cc include
// this header (it brings in Asio).
//
// Limits of one connection, each answered and then closed:
//  - a head (request line and headers) over maxHeaderBytes: 431;
//  - a body over maxBodyBytes, counted as it arrives whatever its framing (Content-Length or
//    chunked): 413;
//  - both Content-Length and Transfer-Encoding, two Content-Lengths, a Transfer-Encoding that does
//    not end in chunked, or a head that does not parse: 400;
//  - a head not complete within headerTimeout of its first byte, or a body with a pause longer than
//    that: closed without a reply;
//  - no new request within keepAliveTimeout of the last reply: closed.
// A closed reply that may leave the client's body unread shuts down the sending side and discards
// what still arrives for a moment, so that the client reads the status rather than a reset.
#pragma once

#include <atomic>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "http_listener.h"

namespace corvane::server {

class ConnectionBase {
 public:
  virtual ~ConnectionBase() = default;
  // On stop: closes the connection unless a request of it is being answered; one being answered
  // closes after its reply.
  virtual void Shutdown() = 0;
};

// What the connections of one listener share: the settings, the handler, and the count of open
// connections per client address. Connections hold it, so it outlives them.
class ConnectionHost {
 public:
  ConnectionHost(const ListenerOptions& o, RequestHandler h) : options(o), handler(std::move(h)) {}
  const ListenerOptions options;
  const RequestHandler handler;

  // Counts a new connection of `address`; false (counting nothing) when it has its cap already.
  bool Admit(const std::string& address);
  void Register(ConnectionBase* c, std::weak_ptr<ConnectionBase> weak);
  // A connection of `address` has gone.
  void Closed(ConnectionBase* c, const std::string& address);
  // Asks every open connection to shut down (Stop).
  void ShutdownAll();
  size_t Count() const;

  // Set while stopping: no new request is read. Called when the last connection has gone.
  std::atomic<bool> stopping{false};
  std::function<void()> onDrained;

 private:
  mutable std::mutex mu_;
  std::unordered_map<std::string, int> perAddress_;
  std::unordered_map<ConnectionBase*, std::weak_ptr<ConnectionBase>> open_;
};

// Starts serving an accepted socket (already counted by Admit); over TLS when `tls` is set.
void StartConnection(std::shared_ptr<ConnectionHost> host, boost::asio::ip::tcp::socket socket,
                     std::string remoteAddress, boost::asio::ssl::context* tls);

}  // namespace corvane::server
