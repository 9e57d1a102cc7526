// SPDX-License-Identifier: MIT
//
// Which objects are to be looked at and published, each once, in the order of their first marks.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_PUBLISH_MARKS_H
#define KECPP_TOOLS_PUBLISH_MARKS_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace tools::publish {

// An object's part of its key, as fleet/Keys.h makes it, and when it was known to have changed.
struct Mark {
  std::string part;
  std::int64_t changed = 0;  // milliseconds since 1970
  std::uint64_t place = 0;
};

class Marks {
 public:
  using Clock = std::chrono::steady_clock;

  // One that is marked already stays where it is.
  void Add(const std::string& part, std::int64_t changed);

  // The oldest, at most `most`; from now on they are not marked.
  std::vector<Mark> Take(std::size_t most);

  // Puts back what was taken and could not be published, before all others.
  void Return(std::vector<Mark> marks);

  // Waits until there are so many marks, or somebody wakes it, or the time has come. One thread.
  void Wait(std::size_t count, Clock::time_point until);
  // The same without a look at the marks.
  void WaitForWake(Clock::time_point until) { Wait(static_cast<std::size_t>(-1), until); }
  void Wake();

  std::size_t Size() const;
  // How long the oldest one waits, in seconds.
  double Age() const;

  // What is added from now on has this place or a later one.
  std::uint64_t Place() const;
  // Whether all before that place have been taken.
  bool HasPassed(std::uint64_t place) const;

 private:
  struct Entry {
    std::int64_t changed;
    std::uint64_t place;
  };
  using Entries = std::unordered_map<std::string, Entry>;

  mutable std::mutex mutex;  // guards all below
  std::condition_variable changed;
  Entries entries;
  std::deque<const Entries::value_type*> order;
  std::uint64_t next = 1;
  std::size_t awaited = 0;  // marks that somebody waits for; 0: nobody waits
  bool isWoken = false;
};

}  // namespace tools::publish

#endif
