// SPDX-License-Identifier: MIT
//
// Who is logged in. A session is known by the value of its cookie.
//
// Thread safety: any thread.
#ifndef KECPP_SIMULATOR_SESSIONS_H
#define KECPP_SIMULATOR_SESSIONS_H

#include <map>
#include <mutex>
#include <set>
#include <string>

namespace sim {

struct Account {
  std::string user = "root", password = "secret";
  std::string ticketFolder;  // where password files are written; empty: there are no tickets
};

class Sessions {
 public:
  explicit Sessions(const Account& account);

  // Writes a file with a password that is good for one login; returns its path. Throws Fault.
  std::string IssueTicket(const std::string& user);

  // Returns the new session's cookie; `cookie` is the one that came with the call. Throws Fault.
  std::string Login(const std::string& user, const std::string& password,
                    const std::string& cookie);
  void Logout(const std::string& cookie);
  void LogoutAll();
  void Check(const std::string& cookie);  // throws Fault unless it is logged in
  std::size_t Count();

 private:
  const Account account;
  std::mutex mutex;                            // guards what follows
  std::map<std::string, std::string> tickets;  // user by password
  std::set<std::string> cookies;
};

}  // namespace sim

#endif
