// SPDX-License-Identifier: MIT
//
// An HTTP client that costs little: it sends a request as it is, and reads an answer without
// keeping it.
//
// Thread safety: one thread.
#ifndef KECPP_BENCHMARKS_AGENT_PLAINCLIENT_H
#define KECPP_BENCHMARKS_AGENT_PLAINCLIENT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

struct Transfer {
  bool good = false;            // status 200, and the answer came whole
  bool ends = false;            // the server ends the connection
  std::size_t bytes = 0;        // of the content
  double firstByteSeconds = 0;  // from the request to the content's first byte
};

class PlainClient {
 public:
  // Throws std::runtime_error when it cannot connect.
  explicit PlainClient(int port);
  ~PlainClient();
  PlainClient(const PlainClient&) = delete;
  PlainClient& operator=(const PlainClient&) = delete;

  // One request after the other.
  Transfer Ask(const std::string& request);

 private:
  bool Send(const std::string& request) const;
  bool Fill();
  bool ReadHead(std::string& head);
  bool Skip(std::size_t bytes);
  bool SkipChunks(std::size_t& bytes);
  bool ReadLine(std::string& line);

  const int fd;
  std::vector<char> buffer;
  std::string_view unread;  // in `buffer`
};

}  // namespace bench

#endif
