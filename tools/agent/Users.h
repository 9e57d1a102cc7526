// SPDX-License-Identifier: MIT
//
// Who may ask, by HTTP basic authentication. Passwords are kept as hashes of crypt(3), in any form
// that the system's crypt knows: "mkpasswd" and "htpasswd -B" write them.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_USERS_H
#define KECPP_TOOLS_AGENT_USERS_H

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace tools::agent {

class Users {
 public:
  // Lines "NAME:HASH"; empty lines and those that begin with "#" are passed over, and so is what
  // follows a second colon. Throws std::runtime_error for a file that cannot be read, has no user
  // or holds a hash that crypt does not know, such as a password in clear.
  explicit Users(const std::string& file);

  // Reads the file again. Throws as the constructor does, and then the former users stay.
  void ReadAgain();

  // True when the value of an "Authorization" header is a user's. Hashing is slow on purpose. One
  // thread at a time does it; credentials that were good once are recognised without it. Wrong ones
  // leave a line on standard error with the address that they came from, one in ten seconds at
  // most.
  bool Accepts(const std::string& authorization, const std::string& peer);

 private:
  using Digest = std::array<unsigned char, 32>;
  using Clock = std::chrono::steady_clock;

  // What one reading of the file gave.
  struct Table {
    std::map<std::string, std::string> hashes;  // constant once it is read, like the next
    std::string costliest;                      // of the hashes, by the time that it takes
    std::map<std::string, Digest> accepted;     // by user, so bounded; guarded by `mutex`
  };

  static std::shared_ptr<Table> Read(const std::string& file);
  bool Knows(const std::string& authorization);
  bool Check(const Table& table, const std::string& user, const std::string& password);
  Digest DigestOf(const std::string& credentials) const;
  void Report(const std::string& peer);

  const std::string path;
  Digest secret;  // constant after construction: no digest is worth stealing
  std::mutex hashing;
  std::mutex mutex;
  std::shared_ptr<Table> current;  // guarded by `mutex`, like all below
  Clock::time_point silentUntil;
  unsigned untold = 0;
};

}  // namespace tools::agent

#endif
