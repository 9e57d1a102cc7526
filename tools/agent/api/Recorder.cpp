// SPDX-License-Identifier: MIT
#include "tools/agent/api/Recorder.h"

namespace tools::agent::api {
namespace {

constexpr std::size_t AT_ONCE = 1000;
constexpr std::chrono::milliseconds REST(100);  // many changes are taken together
constexpr std::chrono::hours LONG(1);

}  // namespace

Recorder::Recorder(const kecpp::Inventory& followed, Catalogues& rows, Journal& record)
    : inventory(followed),
      catalogues(rows),
      journal(record),
      changes(followed.Follow()),
      thread([this] { Run(); }) {}

Recorder::~Recorder() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    ended = true;
    changes.Close();
  }
  thread.join();
}

// Without memory for a change the rows are not true any more.
void Recorder::Run() {
  while (!HasEnded()) {
    try {
      if (changes.Wait(LONG)) Take();
      if (changes.Closed()) FollowAgain();
    } catch (const std::exception&) {
      BeginAgain();
    }
    std::this_thread::sleep_for(REST);
  }
}

void Recorder::BeginAgain() {
  catalogues.Forget();
  journal.BeginAgain();
}

bool Recorder::HasEnded() {
  const std::lock_guard<std::mutex> lock(mutex);
  return ended;
}

// It was closed by the end, or for want of memory.
void Recorder::FollowAgain() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (ended) return;
  changes = inventory.Follow();
  isFilled = false;
}

// What is known at first comes at once. It is no change, and the next request reads it anyway.
void Recorder::Take() {
  const bool wasFilled = isFilled;
  for (auto some = changes.Next(AT_ONCE); !some.empty(); some = changes.Next(AT_ONCE)) {
    if (wasFilled) journal.Add(catalogues.Apply(some));
    isFilled = true;
  }
  if (!wasFilled) BeginAgain();
}

}  // namespace tools::agent::api
