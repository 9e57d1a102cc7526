// SPDX-License-Identifier: MIT
//
// Carries cookies between the handles of a pool where they cannot share libcurl's own store.
//
// libcurl 8 has been seen (8.14.1) to read the cookies of a request after it let go of the shared
// store's lock: two transfers at once then damage the heap. There each handle keeps its cookies,
// and this store holds those of the whole pool: a transfer takes over what changed since the
// handle's last one, and leaves behind what the server has set or removed. Of two transfers that
// change one cookie at the same time, the one that ends last counts.
//
// Thread safety: any thread; the handle belongs to the caller meanwhile.
// Complexity: linear in the cookies of the pool, which is small: a session's.
#ifndef KECPP_HTTP_COOKIESTORE_H
#define KECPP_HTTP_COOKIESTORE_H

#include <mutex>
#include <string>
#include <vector>

namespace KELib {
namespace Http {

// Cookies in libcurl's lines, as one handle had them.
struct HandleCookies {
  std::vector<std::string> lines;
  unsigned long long generation = 0;  // the store's when they were the same
};

class CookieStore {
 public:
  // Whether the handles of this process's libcurl must not share its store.
  static bool IsNeeded();

  // Before a transfer: gives the pool's cookies to `easy`, whose own are `known`. Without memory
  // the transfer goes without the newest.
  void Load(void* easy, HandleCookies& known);

  // After a transfer: takes over what it changed.
  void Save(void* easy, HandleCookies& known);

 private:
  std::mutex mutex;
  std::vector<std::string> lines;     // guarded by `mutex`, as is the next
  unsigned long long generation = 0;  // counts the changes
};

}  // namespace Http
}  // namespace KELib

#endif
