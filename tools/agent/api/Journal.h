// SPDX-License-Identifier: MIT
//
// The last changes of the inventory, and how many there were in the last minutes. Streams wait here
// for what comes next.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_API_JOURNAL_H
#define KECPP_TOOLS_AGENT_API_JOURNAL_H

#include <kecpp/inventory.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tools/agent/api/Catalogues.h"

namespace tools::agent::api {

class Journal {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t KEPT = 1000;
  static constexpr std::size_t SLOTS = 30;
  static constexpr std::chrono::seconds SLOT{10};

  // Numbers begin with the time, so that none of a former process is met again.
  Journal();

  void Add(const std::vector<KnownChange>& changes);

  // Changes were missed: every stream is told so.
  void BeginAgain();

  // The state of the connection has changed: lets waiting streams look at it.
  void NoteState();

  // No stream waits from now on.
  void End();
  bool HasEnded() const;

  struct Item {
    std::uint64_t id;
    kecpp::Kind kind;
    std::string key;
    std::string json;
    std::string more;  // members for streams, behind those of `json`
  };

  // The newest ones first, at most `limit`; of that kind and key, where these are not null.
  std::vector<std::string> Newest(const kecpp::Kind* kind, const std::string* key,
                                  std::size_t limit) const;

  // The number of the last change, and its time, the epoch before the first.
  std::uint64_t Last() const;
  std::chrono::system_clock::time_point LastTime() const;

  // Those behind `id`, oldest first, of which `id` becomes the last one's. False when some of them
  // are not kept any more; `id` is then the last one that there is.
  bool After(std::uint64_t& id, std::vector<Item>& items) const;

  // Another one when there was a change, or another state, or ten seconds are over.
  using Version = std::pair<std::uint64_t, long long>;
  Version Now() const;

  // Waits until there is something behind `id`, or the state is another than `state`, which gets
  // the present one, or the end has come; at most until `deadline`.
  void Await(std::uint64_t id, unsigned& state, Clock::time_point deadline) const;

  // How many changes there were, ever.
  std::uint64_t Count() const;

  // Changes in the last five minutes, by ten seconds, oldest first.
  std::array<std::size_t, SLOTS> Activity() const;

 private:
  void AddToSlot(std::size_t changes);

  mutable std::mutex mutex;
  mutable std::condition_variable news;
  std::deque<Item> items;  // guarded by `mutex`, like all below
  std::uint64_t last;
  std::uint64_t count = 0;
  std::chrono::system_clock::time_point lastTime;
  unsigned states = 0;
  bool ended = false;
  std::array<std::size_t, SLOTS> slots = {};  // a ring
  long long newestSlot = 0;                   // in slots since the clock's begin
};

}  // namespace tools::agent::api

#endif
