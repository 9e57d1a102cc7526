// SPDX-License-Identifier: MIT
#include "tools/agent/indications/Delivery.h"

#include <exception>
#include <iostream>
#include <new>
#include <utility>

#include "tools/agent/XmlWriter.h"
#include "tools/common/CellText.h"

namespace tools::agent {
namespace {

void Say(const std::string& text) {
  std::cerr << "kecpp-agent: " + Printable(text) + '\n';
}

void WriteProperty(XmlWriter& out, const char* name, const char* type, std::string_view value) {
  out.Open("PROPERTY", {{"NAME", name}, {"TYPE", type}});
  out.Open("VALUE");
  out.Text(value);
  out.Close("VALUE");
  out.Close("PROPERTY");
}

}  // namespace

Delivery::Delivery(ListenerUrl listenerUrl, std::string sequenceContext,
                   std::optional<WallClock::time_point> failing,
                   const DeliveryPolicy& deliveryPolicy, DeliveryCounters& deliveryCounters)
    : url(std::move(listenerUrl)),
      context(std::move(sequenceContext)),
      policy(deliveryPolicy),
      counters(deliveryCounters),
      failingSince(failing) {}

Delivery::~Delivery() {
  End();
  if (thread.joinable()) thread.join();
}

void Delivery::End() {
  const std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  wake.notify_all();
}

void Delivery::Offer(std::shared_ptr<const EventText> event, const std::string& filterName) {
  const std::lock_guard<std::mutex> lock(mutex);
  Item item{std::move(event), filterName, next++};
  const bool fits =
      queue.size() < policy.mostQueued && bytes + BytesOf(item) <= policy.mostQueuedBytes;
  if (!fits) {
    ++counters.dropped;
    if (!isFull) Say("too many indications wait for " + url.text + ": new ones are dropped");
    isFull = true;
    return;
  }
  bytes += BytesOf(item);
  queue.push_back(std::move(item));
  if (!thread.joinable()) thread = std::thread([this] { Run(); });
  wake.notify_all();
}

void Delivery::Skip() {
  const std::lock_guard<std::mutex> lock(mutex);
  ++next;
}

std::optional<Delivery::WallClock::time_point> Delivery::FailingSince() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return failingSince;
}

void Delivery::Run() {
  try {
    ListenerClient client(url, policy.hosts, policy.caFile, ended);
    while (const auto item = Front()) {
      try {
        Send(*item, client);
      } catch (const std::bad_alloc& error) {
        NoteFailure(error.what());
      }
      Pop();
    }
  } catch (const std::exception& error) {
    Say("indications for " + url.text + " are not sent any more: " + error.what());
  }
}

// An event that could not be sent is given up, so that one that a listener does not understand
// keeps back none of the others for long.
void Delivery::Send(const Item& item, ListenerClient& client) {
  const std::string message = Message(item);
  for (unsigned attempt = 0; !ended; ++attempt) {
    const std::string error = client.Send(message);
    if (error.empty()) return NoteSuccess();
    if (ended) return;
    if (attempt == policy.retries) return NoteFailure(error);
    Pause();
    if (!ended) ++counters.retried;
  }
}

std::optional<Delivery::Item> Delivery::Front() {
  std::unique_lock<std::mutex> lock(mutex);
  wake.wait(lock, [this] { return ended || !queue.empty(); });
  if (ended) return {};
  return queue.front();
}

void Delivery::Pop() {
  const std::lock_guard<std::mutex> lock(mutex);
  bytes -= BytesOf(queue.front());
  queue.pop_front();
  if (queue.empty()) isFull = false;
}

void Delivery::Pause() {
  std::unique_lock<std::mutex> lock(mutex);
  wake.wait_for(lock, policy.retryInterval, [this] { return ended.load(); });
}

void Delivery::NoteFailure(const std::string& why) {
  ++counters.dropped;
  const std::lock_guard<std::mutex> lock(mutex);
  if (failingSince) return;
  failingSince = WallClock::now();
  Say("indications for " + url.text + " are dropped: " + why);
}

void Delivery::NoteSuccess() {
  ++counters.delivered;
  const std::lock_guard<std::mutex> lock(mutex);
  if (!failingSince) return;
  failingSince.reset();
  Say("indications for " + url.text + " are taken again");
}

std::string Delivery::Message(const Item& item) const {
  const std::string number = std::to_string(item.number);
  XmlWriter out;
  out.Declare();
  out.Open("CIM", {{"CIMVERSION", "2.0"}, {"DTDVERSION", "2.0"}});
  out.Open("MESSAGE", {{"ID", number}, {"PROTOCOLVERSION", "1.0"}});
  out.Open("SIMPLEEXPREQ");
  out.Open("EXPMETHODCALL", {{"NAME", "ExportIndication"}});
  out.Open("EXPPARAMVALUE", {{"NAME", "NewIndication"}});
  out.Open("INSTANCE", {{"CLASSNAME", item.event->className}});
  WriteProperty(out, "IndicationIdentifier", "string", context + "#" + number);
  WriteProperty(out, "IndicationTime", "datetime", item.event->time);
  WriteProperty(out, "PerceivedSeverity", "uint16", "2");  // information
  WriteProperty(out, "IndicationFilterName", "string", item.filterName);
  WriteProperty(out, "SequenceContext", "string", context);
  WriteProperty(out, "SequenceNumber", "sint64", number);
  out.Encoded(item.event->properties);
  for (const char* element :
       {"INSTANCE", "EXPPARAMVALUE", "EXPMETHODCALL", "SIMPLEEXPREQ", "MESSAGE", "CIM"}) {
    out.Close(element);
  }
  return out.Take();
}

std::size_t Delivery::BytesOf(const Item& item) {
  return item.event->properties.size() + item.filterName.size() + sizeof item;
}

}  // namespace tools::agent
