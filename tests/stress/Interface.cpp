// SPDX-License-Identifier: MIT
#include "stress/Scene.h"

namespace stress {
namespace {

using kecpp::Follower;
using kecpp::MachineView;
using std::chrono::milliseconds;

void Take(Follower& follower, endurance::Replay& replay, std::size_t max) {
  for (const kecpp::Change& change : follower.Next(max)) replay.Apply(change);
}

bool IsWhole(const MachineView& machine) {
  const unsigned status = machine.powerStateText == "poweredOn"    ? 2
                          : machine.powerStateText == "poweredOff" ? 10
                                                                   : 15;
  return machine.powerStateText.empty() || machine.operationalStatus == status;
}

}  // namespace

void FollowInventory(Scene& scene, Seat& seat) {
  seat.Does("takes what the lasting Follower gives");
  const std::lock_guard<std::mutex> use(scene.interface.promptUse);
  scene.interface.prompt.Wait(milliseconds(20));
  Take(scene.interface.prompt, scene.interface.promptReplay, 5);
}

void OpenFollower(Scene& scene, Seat& seat) {
  seat.Does("opens a Follower");
  Follower follower = scene.interface.inventory->Follow();
  endurance::Replay replay(*scene.interface.inventory);
  for (int i = 1; i < 40 && !scene.park; ++i) {
    seat.Does("takes what a Follower gives");
    follower.Wait(milliseconds(i % 3 * 10));
    Take(follower, replay, static_cast<std::size_t>(i));
  }
  if (!replay.Wrong().empty()) scene.tally.Wrong("a Follower gave what does not fit");
  scene.tally.Count("Followers");
}

void ReadInventory(Scene& scene, Seat& seat) {
  const kecpp::Inventory& inventory = *scene.interface.inventory;
  seat.Does("visits the machines of the Inventory");
  std::vector<std::string> hosts;
  inventory.ForEach<MachineView>([&](const MachineView& machine) {
    if (!IsWhole(machine)) scene.tally.Wrong("a machine of the Inventory is not whole");
    if (machine.host) hosts.emplace_back(*machine.host);
  });
  seat.Does("looks objects of the Inventory up");
  for (const std::string& host : hosts) {
    const auto found = inventory.FindHost(host);
    std::string seen = host;
    inventory.Look<kecpp::HostView>(host, [&](const kecpp::HostView& view) { seen = view.key; });
    if (seen != host || (found && found->key != host)) scene.tally.Wrong("it was another host");
  }
  inventory.ForEach<kecpp::Role>([](const kecpp::Role&) { std::this_thread::yield(); });
  scene.tally.Count("visits of the Inventory");
}

// Fails while its session is out or both connections are taken.
void CallInventory(Scene& scene, Seat& seat) {
  seat.Does("runs a task by the Inventory (network)");
  try {
    const bool succeeded =
        scene.interface.inventory->RunTask("StartTask", {"VirtualMachine", "success"});
    scene.tally.Count(succeeded ? "tasks of the Inventory" : "tasks of the Inventory let go");
  } catch (const kecpp::Error&) {
    scene.tally.Count("calls of the Inventory that failed");
    Nap(20);
  }
}

void OpenInventory(Scene& scene, Seat& seat) {
  kecpp::Options options{scene.config};
  options.connectInBackground = true;
  seat.Does("makes an Inventory");
  auto other = std::make_unique<kecpp::Inventory>(options);
  Follower follower = other->Follow();
  endurance::Replay replay(*other);
  for (int i = scene.inventories++ % 7; i > 0 && !scene.park; --i) {
    seat.Does("takes what the Follower of another Inventory gives");
    follower.Wait(milliseconds(20));
    Take(follower, replay, 100);
  }
  const std::string reason = other->State().reason;
  if (reason.find("memory") != std::string::npos) scene.tally.Wrong("an Inventory says " + reason);
  seat.Does("ends an Inventory (network)");
  other.reset();
  if (!follower.Closed()) scene.tally.Wrong("a Follower is open without its Inventory");
  if (!replay.Wrong().empty()) scene.tally.Wrong("a Follower gave what does not fit");
  scene.tally.Count("Inventories");
}

std::string CompareFollowers(Scene& scene, const endurance::Json& truth, Clock::time_point limit) {
  Interface& face = scene.interface;
  const endurance::Json wanted = endurance::Decoded(truth);
  const std::lock_guard<std::mutex> use(face.promptUse);
  endurance::Json is;
  for (; Clock::now() < limit; Nap(10)) {
    face.slowReplay.TakeAll(face.slow);
    face.promptReplay.TakeAll(face.prompt);
    is = face.promptReplay.Document();
    if (is == wanted && face.slowReplay.Document() == wanted && face.slowReplay.EqualsInventory()) {
      return face.slowReplay.Wrong() + face.promptReplay.Wrong();
    }
  }
  return "not the truth: " + endurance::Json::diff(is, wanted).dump().substr(0, 1000) +
         (face.promptReplay.EqualsInventory() ? ", as the Inventory; " : "; ") +
         face.inventory->State().reason;
}

void EndInventory(Scene& scene) {
  std::thread waiting([&follower = scene.interface.slow] {
    while (follower.Wait(std::chrono::hours(1))) follower.Next();
  });
  scene.interface.inventory.reset();
  waiting.join();
}

}  // namespace stress
