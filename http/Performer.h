// SPDX-License-Identifier: MIT
//
// Performs the transfers of one handle by libcurl's multi interface. It waits until there is
// something to do, where curl_easy_perform wakes once a second: a quiet minute then costs a
// hundredth of the processor time.
//
// Keeps the handle's connections from one transfer to the next.
//
// Thread safety: none, as the handle. Ownership: to be destroyed after the handle and before the
//   registry of its sockets.
#ifndef KECPP_HTTP_PERFORMER_H
#define KECPP_HTTP_PERFORMER_H

#include <chrono>
#include <optional>

namespace KELib {
namespace Http {

class Performer {
 public:
  Performer() = default;
  ~Performer() { CloseConnections(); }
  Performer(const Performer&) = delete;
  Performer& operator=(const Performer&) = delete;

  // Lets the connections go, when no handle is there any more.
  void CloseConnections();

  // As curl_easy_perform of `easy`. Progress is reported when something happens, at `look`, and,
  // when that has passed, once a second.
  int Perform(void* easy, std::optional<std::chrono::steady_clock::time_point> look);

 private:
  int Run(std::optional<std::chrono::steady_clock::time_point> look);
  int Result() const;

  void* multi = nullptr;  // made with the first transfer
};

}  // namespace Http
}  // namespace KELib

#endif
