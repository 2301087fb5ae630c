#include "devkit/report_server/loopback_server.h"

#include <cerrno>
#include <system_error>

#include "base/print.h"

namespace ostrell {

void PrepareForLoopback(httplib::Server& server, size_t workerThreads) {
  server.new_task_queue = [workerThreads] { return new httplib::ThreadPool(workerThreads); };
  server.set_tcp_nodelay(true);
  // The library's own choice would let two servers share a port.
  server.set_socket_options([](int socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
}

int ListenOnLoopback(httplib::Server& server, int port, std::thread& accepting, std::string* why) {
  const std::string host = "127.0.0.1";
  errno = 0;
  const int taken = port == 0                         ? server.bind_to_any_port(host)
                    : server.bind_to_port(host, port) ? port
                                                      : -1;
  if (taken < 0) {
    *why = Print("cannot listen on %s:%d: %s", host, port, std::generic_category().message(errno));
    return taken;
  }
  accepting = std::thread([&server] { server.listen_after_bind(); });
  // A stop before the library has begun to accept would not be seen by it.
  while (!server.is_running()) {
    std::this_thread::yield();
  }
  return taken;
}

void StopListening(httplib::Server& server, std::thread& accepting) {
  if (accepting.joinable()) {
    server.stop();
    accepting.join();
  }
}

}  // namespace ostrell
