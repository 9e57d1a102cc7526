// SPDX-License-Identifier: MIT
//
// One POST request at a time to a member of the cluster, over libcurl. A request can be begun and
// finished later, so that its sender works meanwhile.
//
// Thread safety: one thread at a time; Cut from any.
#ifndef KECPP_FLEET_TRANSFER_H
#define KECPP_FLEET_TRANSFER_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/EtcdError.h"

namespace kecpp::fleet {

// Files in PEM form; an empty name: the system's authorities, no certificate.
struct TlsFiles {
  std::string authorities;
  std::string certificate;
  std::string key;
};

class Transfer {
 public:
  struct Answer {
    long status = 0;  // of HTTP
    std::string body;
  };
  // Takes the body as it comes; false ends the transfer.
  using Sink = std::function<bool(std::string_view piece)>;

  // An answer of more than `mostBytes` is an error.
  Transfer(const TlsFiles& tls, std::size_t mostBytes);
  ~Transfer();
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  // Sends as much as goes without waiting. What was under way is given up.
  void Begin(const std::string& url, std::string body, const std::vector<std::string>& headers,
             std::chrono::milliseconds limit);
  // Goes on sending and receiving without waiting.
  void Advance();
  // Waits for the answer, whatever its status. Throws EtcdError.
  Answer Finish();

  // Sends a request and gives its answer's body to `sink` until that ends or refuses more, nothing
  // came for `silence`, or it is cut. Returns HTTP's status. Throws EtcdError.
  long Stream(const std::string& url, std::string body, const std::vector<std::string>& headers,
              std::chrono::milliseconds silence, const Sink& sink);

  // From now on every transfer fails at once.
  void Cut();

 private:
  class Handles;

  bool IsDone();
  void GiveUp();
  Answer Result();
  static std::size_t Take(char* bytes, std::size_t size, std::size_t count, void* self);

  const std::size_t most;
  std::unique_ptr<Handles> handles;
  std::string request;
  Answer answer;
  const Sink* sink = nullptr;
  bool isUnderWay = false;
  bool isTooLong = false;
  int result = 0;  // libcurl's, when it is done
  std::atomic<bool> isCut{false};
};

}  // namespace kecpp::fleet

#endif
