// SPDX-License-Identifier: MIT
//
// Enumerations that clients have opened and not read to their end. Each keeps a cursor, not the
// objects: it is small whatever it enumerates. Their number, their bytes and their time are
// bounded.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_PULLSESSIONS_H
#define KECPP_TOOLS_AGENT_PULLSESSIONS_H

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "tools/agent/Cursor.h"
#include "tools/common/Schema.h"

namespace tools::agent {

class PullSessions {
 public:
  using Clock = std::chrono::steady_clock;

  // What is pulled: instances with their paths, paths, or instances of a query.
  enum class Kind { WithPath, Paths, Instances };

  struct Session {
    Kind kind;
    Space space;
    std::size_t client;  // who opened it
    bool readsInventory;
    std::chrono::seconds timeout;  // without a request; zero is not served
    std::unique_ptr<Cursor> cursor;
  };

  struct Kept {
    Session session;
    Clock::time_point ends;
  };
  using Sessions = std::map<std::string, Kept>;  // by context
  using Taken = Sessions::node_type;

  // Keeps it and gives its context. Throws OperationError, "server limits exceeded", when there are
  // too many.
  std::string Open(Session session);

  // Takes it out of the others' reach. Throws OperationError, "invalid enumeration context", when
  // there is none of that context for that client and space, it has timed out, or another request
  // uses it. The second one tells in addition what is pulled.
  Taken Take(const std::string& context, Space space, std::size_t client);
  Taken Take(const std::string& context, Space space, std::size_t client, Kind kind);

  // Gives it back. Its time begins again. Needs no memory.
  void Return(Taken taken);

 private:
  void DropExpired();
  Sessions::iterator Find(const std::string& context, Space space, std::size_t client);

  std::mutex mutex;
  Sessions sessions;  // guarded by `mutex`
};

}  // namespace tools::agent

#endif
