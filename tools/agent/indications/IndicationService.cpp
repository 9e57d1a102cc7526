// SPDX-License-Identifier: MIT
#include "tools/agent/indications/IndicationService.h"

#include <curl/curl.h>

#include <exception>
#include <iostream>
#include <utility>

#include "tools/agent/Errors.h"
#include "tools/common/CellText.h"

namespace tools::agent {
namespace {

constexpr const char* FILE_NAME = "subscriptions.json";
constexpr std::chrono::seconds LOOK_INTERVAL(1);

void Say(const std::string& text) {
  std::cerr << "kecpp-agent: " + Printable(text) + '\n';
}

}  // namespace

IndicationService::IndicationService(const kecpp::Inventory& inventory, const InteropModel& model,
                                     const std::string& hostName, const std::string& folder,
                                     const DeliveryPolicy& policy,
                                     DeliveryCounters& deliveryCounters)
    : interop(model),
      counters(deliveryCounters),
      file(folder.empty() ? nullptr : std::make_unique<const StateFile>(folder, FILE_NAME)),
      entries(hostName, model.IndicationService(), policy, deliveryCounters) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  if (file) Load();
  watch.emplace(inventory, hostName, [this] { LookAround(); });
  const std::lock_guard<std::mutex> lock(changing);
  Publish();
}

IndicationService::~IndicationService() {
  End();
  watch.reset();
}

void IndicationService::End() {
  watch->End();
  const std::lock_guard<std::mutex> lock(changing);
  entries.EndDeliveries();
}

void IndicationService::Load() {
  const auto text = file->Read();
  if (!text) return;
  const Entries::Backup nothing = entries.Save();
  try {
    entries.Restore(ReadState(*text));
    written = *text;
  } catch (const std::exception& error) {
    entries.Return(nothing);
    const std::string other = file->SetAside();
    Say(file->Path() + " cannot be understood (" + error.what() + "): it is now " + other +
        ", and there are no subscriptions");
  }
}

std::vector<Stored> IndicationService::All() const {
  std::vector<Stored> all = interop.All();
  const std::lock_guard<std::mutex> lock(mutex);
  all.insert(all.end(), published.begin(), published.end());
  return all;
}

// Under `changing`.
void IndicationService::Write() {
  if (!file) return;
  std::string text = WriteState(entries.Kept());
  if (text == written) return;
  file->Write(text);
  written = std::move(text);
}

// Under `changing`.
void IndicationService::Publish() {
  auto plan = entries.MakePlan();
  counters.subscriptions = plan->All().size();
  watch->Follow(std::move(plan));
  auto instances = entries.Instances();
  const std::lock_guard<std::mutex> lock(mutex);
  published.swap(instances);
}

template <class Change>
void IndicationService::Apply(Change change) {
  const std::lock_guard<std::mutex> lock(changing);
  const Entries::Backup backup = entries.Save();
  change();
  try {
    Write();
  } catch (const std::exception& error) {
    entries.Return(backup);
    Say(error.what());
    throw OperationError(Status::Failed, "subscriptions cannot be kept now");
  }
  Publish();
}

Stored IndicationService::Create(const ClassRow& type,
                                 const std::vector<GivenProperty>& properties) {
  Stored made;
  Apply([&] { made = entries.Create(type, properties); });
  if (type.isAssociation) watch->Await();
  return made;
}

void IndicationService::Modify(const Stored& instance, const std::vector<GivenProperty>& properties,
                               const std::optional<std::vector<std::string>>& wanted) {
  Apply([&] { entries.Modify(instance, properties, wanted); });
  if (instance->Type().isAssociation) watch->Await();
}

void IndicationService::Delete(const Stored& instance) {
  Apply([&] { entries.Delete(instance); });
}

// A listener that begins or ends to fail is written, too: otherwise the time that it has would
// begin again with the agent.
void IndicationService::LookAround() {
  const std::unique_lock<std::mutex> lock(changing, std::try_to_lock);
  const auto now = std::chrono::steady_clock::now();
  if (!lock || now < nextLook) return;
  nextLook = now + LOOK_INTERVAL;
  const auto removed = entries.RemoveExpired(std::chrono::system_clock::now());
  for (const std::string& what : removed) Say(what);
  if (!removed.empty()) Publish();
  try {
    Write();
  } catch (const std::exception& error) {
    if (!removed.empty()) Say(error.what());
  }
}

}  // namespace tools::agent
