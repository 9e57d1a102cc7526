// SPDX-License-Identifier: MIT
//
// Following 1,000 changes in an inventory of many machines, from the request of the daemon to
// copies of what changed: processor time of the agent, for each change. The daemon is another
// process.
//
//   interface   kecpp::Inventory with a Follower; each machine that it names is looked up
//   copying     the same without: all machines are copied and compared with the copy before
//   rapidxml, by-hand   a libcurl long poll, the parser, the store of standard containers with a
//               list of what changed, each machine looked up and copied; no thread, no lock
//
// Usage: kecpp-bench-following CONTENDER MACHINES
// Prints one line of JSON; the checksum is that of all machines that changed.
#include <kecpp/inventory.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "benchmarks/BarePost.h"
#include "benchmarks/ByteServer.h"
#include "benchmarks/Checksum.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Rounds.h"
#include "benchmarks/StoreContender.h"

namespace bench {

std::unique_ptr<Contender> MakeRapidxmlContender();
std::unique_ptr<Contender> MakeHandContender();

namespace {

constexpr unsigned int kBursts = 15;

std::uint64_t Hash(const kecpp::Machine& m) {
  return HashObject({m.key, m.name, m.description, m.uuid, m.guestFullName, m.guestHostName,
                     m.guestIPAddress, m.path, m.powerStateText, m.host.value_or("")},
                    m.operationalStatus);
}

std::uint64_t Hash(const Machine& m) {
  return HashObject({m.id, m.name, m.annotation, m.uuid, m.guestFullName, m.guestHostName,
                     m.guestAddress, m.pathName, m.powerState, m.host ? m.host->id : ""},
                    m.status);
}

class Agent {
 public:
  virtual ~Agent() = default;
  // Receives what the daemon has ready, which is kBurst changes; the sum of what changed.
  virtual std::uint64_t Follow() = 0;
};

kecpp::Options OptionsFor(const std::string& url) {
  kecpp::Options options;
  options.config =
      "<?xml version=\"1.0\"?><Config><ConnectionInfo><url>" + url +
      "</url><timeout>60</timeout></ConnectionInfo><LoginInfo><localTicket>false"
      "</localTicket><userName>u</userName><password>p</password></LoginInfo></Config>";
  options.authorization = kecpp::Authorization::none;
  return options;
}

class FollowingAgent final : public Agent {
 public:
  explicit FollowingAgent(const std::string& url) : inventory(OptionsFor(url)) {
    while (!changes.Next().empty()) continue;
  }

  std::uint64_t Follow() override {
    std::uint64_t sum = 0;
    for (unsigned int left = kBurst; left > 0;) {
      if (!changes.Wait(std::chrono::minutes(1))) throw std::runtime_error("nothing changes");
      for (const kecpp::Change& change : changes.Next()) {
        sum += Hash(inventory.FindMachine(change.key).value());
        --left;
      }
    }
    return sum;
  }

 private:
  const kecpp::Inventory inventory;
  kecpp::Follower changes = inventory.Follow();
};

// The Follower only says when all changes are there: one comparison for all of them is the best
// that this agent can get.
class CopyingAgent final : public Agent {
 public:
  explicit CopyingAgent(const std::string& url) : inventory(OptionsFor(url)) {
    while (!changes.Next(100000).empty()) continue;
  }

  std::uint64_t Follow() override {
    for (std::size_t left = kBurst; left > 0;) {
      if (!changes.Wait(std::chrono::minutes(1))) throw std::runtime_error("nothing changes");
      left -= changes.Next(left).size();
    }
    std::uint64_t sum = 0;
    std::vector<kecpp::Machine> now = inventory.Machines();
    for (std::size_t i = 0; i < now.size(); ++i) {
      if (!(now[i] == before.at(i))) sum += Hash(now[i]);
    }
    before.swap(now);
    return sum;
  }

 private:
  const kecpp::Inventory inventory;
  kecpp::Follower changes = inventory.Follow();
  std::vector<kecpp::Machine> before = inventory.Machines();
};

class ParsingAgent final : public Agent {
 public:
  ParsingAgent(const std::string& url, std::unique_ptr<Contender> made)
      : post(url),
        contender(std::move(made)),
        store(dynamic_cast<StoreContender&>(*contender).GetStore()) {
    Receive("<version></version>");
    store.NoteChanges(changes);
  }

  std::uint64_t Follow() override {
    std::uint64_t sum = 0;
    Receive("<version>17</version>");
    for (const std::string& id : changes) {
      const Machine machine = *store.FindMachine(id);
      sum += Hash(machine);
    }
    changes.clear();
    return sum;
  }

 private:
  void Receive(const std::string& version) {
    post.Call("WaitForUpdates", version);
    const char* const inner = std::strstr(post.Body(), "<returnval");
    const char* const end = std::strstr(inner, "</WaitForUpdatesResponse>");
    Text set;
    set.length = static_cast<std::size_t>(end - inner);
    const std::size_t before = static_cast<std::size_t>(inner - post.Body());
    set.characters = post.TakeBody();
    std::memmove(set.characters.get(), set.characters.get() + before, set.length);
    set.characters[set.length] = '\0';
    contender->Apply(std::move(set));
  }

  BarePost post;
  const std::unique_ptr<Contender> contender;
  Store& store;
  std::vector<std::string> changes;
};

std::unique_ptr<Agent> MakeAgent(const std::string& name, const std::string& url) {
  if (name == "interface") return std::make_unique<FollowingAgent>(url);
  if (name == "copying") return std::make_unique<CopyingAgent>(url);
  if (name == "rapidxml") return std::make_unique<ParsingAgent>(url, MakeRapidxmlContender());
  if (name == "by-hand") return std::make_unique<ParsingAgent>(url, MakeHandContender());
  throw std::runtime_error("no such contender");
}

void Run(const char* name, unsigned int machines) {
  Inventory inventory;
  inventory.machines = machines;
  const ByteServer server(inventory, 0);
  BarePost order(server.Url());
  const std::unique_ptr<Agent> agent = MakeAgent(name, server.Url());
  std::vector<double> each;
  std::uint64_t sum = 0;
  for (unsigned int i = 0; i < kBursts; ++i) {
    const Clocks begin = Clocks::Now();
    order.Call("Burst", "");
    sum += agent->Follow();
    each.push_back((Clocks::Now() - begin).cpu / kBurst);
  }
  std::printf(
      "{\"contender\": \"%s\", \"machines\": %u, \"cpu\": %.4f, \"checksum\": \"%016llx\"}\n", name,
      machines, Median(each), static_cast<unsigned long long>(sum));
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  const int machines = argc == 3 ? std::atoi(argv[2]) : 0;
  if (machines < static_cast<int>(bench::kBurst)) {
    std::fprintf(stderr, "Usage: %s interface|copying|rapidxml|by-hand MACHINES\n", argv[0]);
    return 2;
  }
  try {
    bench::Run(argv[1], static_cast<unsigned int>(machines));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
    return 1;
  }
  return 0;
}
