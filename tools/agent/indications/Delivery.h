// SPDX-License-Identifier: MIT
//
// Sends the indications of one destination in their order: one queue, one thread, one listener.
//
// Thread safety: any thread, but the destructor, which waits for the thread.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_DELIVERY_H
#define KECPP_TOOLS_AGENT_INDICATIONS_DELIVERY_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tools/agent/indications/AllowedHosts.h"
#include "tools/agent/indications/DeliveryCounters.h"
#include "tools/agent/indications/EventText.h"
#include "tools/agent/indications/ListenerClient.h"
#include "tools/agent/indications/ListenerUrl.h"

namespace tools::agent {

// How indications are sent.
struct DeliveryPolicy {
  AllowedHosts hosts{""};
  std::string caFile;  // by which listeners are verified; empty: the system's
  unsigned retries = 3;
  std::chrono::seconds retryInterval{30};
  std::chrono::seconds removalInterval{2592000};  // 30 days without an answer end a subscription
  std::size_t mostQueued = 1000;
  std::size_t mostQueuedBytes = std::size_t{8} << 20;
};

class Delivery {
 public:
  using WallClock = std::chrono::system_clock;

  // `context` is what the destination's indications are numbered in; no other destination and no
  // other run of the agent has it. `failing`: since when the listener does not answer, if that is
  // known. Policy and counters outlive the object.
  Delivery(ListenerUrl url, std::string context, std::optional<WallClock::time_point> failing,
           const DeliveryPolicy& policy, DeliveryCounters& counters);
  ~Delivery();
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  // Gives the event a number and queues it. When the queue is full the event is dropped; the
  // listener sees that a number is missing. Never waits for the listener.
  void Offer(std::shared_ptr<const EventText> event, const std::string& filterName);

  // Leaves out a number, when events may have been missed.
  void Skip();

  // Lets the thread end as soon as it can. Nothing is sent from then on.
  void End();

  // Since when the listener has taken nothing; nothing while it does.
  std::optional<WallClock::time_point> FailingSince() const;

 private:
  struct Item {
    std::shared_ptr<const EventText> event;
    std::string filterName;
    unsigned long long number;
  };

  void Run();
  void Send(const Item& item, ListenerClient& client);
  std::optional<Item> Front();
  void Pop();
  void Pause();
  void NoteFailure(const std::string& why);
  void NoteSuccess();
  std::string Message(const Item& item) const;
  static std::size_t BytesOf(const Item& item);

  const ListenerUrl url;
  const std::string context;
  const DeliveryPolicy& policy;
  DeliveryCounters& counters;
  std::atomic<bool> ended{false};
  mutable std::mutex mutex;
  std::condition_variable wake;
  std::deque<Item> queue;  // guarded by `mutex`, like all below; the first one is being sent
  std::size_t bytes = 0;
  unsigned long long next = 0;  // number
  std::optional<WallClock::time_point> failingSince;
  bool isFull = false;  // that was said
  std::thread thread;   // from the first event on
};

}  // namespace tools::agent

#endif
