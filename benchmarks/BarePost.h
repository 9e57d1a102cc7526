// SPDX-License-Identifier: MIT
//
// What libcurl alone needs for a call: the floor under the library's transport. It has the same
// options (including cookies in a share with its locks), the same header lines, the same request
// and a connection that is kept.
#ifndef KECPP_BENCHMARKS_BAREPOST_H
#define KECPP_BENCHMARKS_BAREPOST_H

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

namespace bench {

class BarePost {
 public:
  explicit BarePost(std::string url);
  ~BarePost();
  BarePost(const BarePost&) = delete;
  BarePost& operator=(const BarePost&) = delete;

  // Posts a call of the method and receives the reply into a block taken at once for the length
  // that it announces. Throws std::runtime_error.
  void Call(const std::string& method, const std::string& inner);

  const char* Body() const { return body.get(); }
  std::size_t Length() const { return length; }
  std::unique_ptr<char[]> TakeBody() { return std::move(body); }

 private:
  static std::size_t Store(char* data, std::size_t size, std::size_t count, void* self);

  std::string url;
  void* easy;
  void* share;
  std::mutex shareMutex;
  char errorText[256] = "";
  void* headers = nullptr;
  std::unique_ptr<char[]> body;
  std::size_t room = 0;
  std::size_t length = 0;
};

}  // namespace bench

#endif
