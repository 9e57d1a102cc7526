// SPDX-License-Identifier: MIT
#include "benchmarks/agent/FixedServer.h"

#include <httplib.h>

#include <cstdio>
#include <string>

namespace bench {

int ServeFixedText(std::size_t bytes) {
  constexpr std::size_t THREADS = 64;
  constexpr std::size_t REQUESTS_PER_CONNECTION = 1000;
  httplib::Server server;
  server.new_task_queue = [] { return new httplib::ThreadPool(THREADS); };
  server.set_keep_alive_max_count(REQUESTS_PER_CONNECTION);
  server.set_tcp_nodelay(true);
  const std::string text(bytes, 'x');
  server.Post(".*", [&text](const httplib::Request&, httplib::Response& response) {
    response.set_content(text, "application/xml; charset=\"utf-8\"");
  });
  std::printf("listening on http://127.0.0.1:%d\n", server.bind_to_any_port("127.0.0.1"));
  std::fflush(stdout);
  return server.listen_after_bind() ? 0 : 1;
}

}  // namespace bench
