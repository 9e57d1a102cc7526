// SPDX-License-Identifier: MIT
//
// Who may ask, by HTTP basic authentication. Passwords are kept as hashes of crypt(3), in any form
// that the system's crypt knows: "mkpasswd" and "htpasswd -B" write them.
//
// Thread safety: any thread.
#ifndef KECPP_AGENT_CIMXML_USERS_H
#define KECPP_AGENT_CIMXML_USERS_H

#include <array>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace cimxml {

class Users {
 public:
  // Lines "NAME:HASH"; empty lines and those that begin with "#" are passed over, and so is what
  // follows a second colon. Throws std::runtime_error for a file that cannot be read, has no user
  // or holds a hash that crypt does not know: a password in clear is one.
  explicit Users(const std::string& file);

  // True when the value of an "Authorization" header is a user's. Hashing is slow on purpose, and
  // is done by one thread at a time; credentials that were good once are known again without it.
  bool Accepts(const std::string& authorization);

 private:
  using Digest = std::array<unsigned char, 32>;

  bool Check(const std::string& user, const std::string& password);
  Digest DigestOf(const std::string& credentials) const;

  std::map<std::string, std::string> hashes;  // constant after construction
  Digest secret;                              // likewise: no digest is worth stealing
  std::mutex hashing;
  std::mutex mutex;
  std::map<std::string, Digest> accepted;  // by user, so bounded; guarded by `mutex`
};

}  // namespace cimxml

#endif
