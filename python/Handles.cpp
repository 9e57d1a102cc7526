// SPDX-License-Identifier: MIT
#include "Handles.h"

#include <future>
#include <thread>
#include <type_traits>
#include <utility>

#include "SharedInventory.h"

namespace py = pybind11;

namespace kecpp::python {
namespace {

// Does `use` with a value whose type is that of the kind's objects.
template <class Use>
auto WithTypeOf(Kind kind, Use use) {
  switch (kind) {
    case Kind::host:
      return use(Host());
    case Kind::machine:
      return use(Machine());
    case Kind::role:
      return use(Role());
    case Kind::privilege:
      return use(Privilege());
    default:
      return use(Identity());
  }
}

AnyObject Look(const Inventory& inventory, Kind kind, const std::string& key) {
  return WithTypeOf(kind, [&](const auto& type) -> AnyObject {
    auto found = inventory.Find<std::decay_t<decltype(type)>>(key);
    if (!found) return {};
    return *std::move(found);
  });
}

// The last one that lets it go waits for threads.
void LetGo(std::shared_ptr<SharedInventory>& shared) {
  if (!shared) return;
  if (shared->IsForked()) {
    new std::shared_ptr<SharedInventory>(std::move(shared));  // it can be neither ended nor freed
    return;
  }
  const Unlocked unlocked;
  shared.reset();
}

// An attempt's failure, whose text begins with the URL where there is one.
Error ErrorOf(const std::string& text) {
  const std::size_t colon = text.find(": ");
  if (text.compare(0, 4, "http") != 0 || colon == std::string::npos) return {"", text};
  return {text.substr(0, colon), text.substr(colon + 2)};
}

// Runs `work` with the inventory on a thread that Ctrl-C does not end.
template <class Work>
auto Await(std::shared_ptr<SharedInventory> shared, Work work) {
  std::packaged_task<decltype(work(shared->Get()))()> task(
      [shared, call = std::make_shared<SharedInventory::Call>(*shared), work = std::move(work)] {
        return work(shared->Get());
      });
  auto result = task.get_future();
  std::thread(std::move(task)).detach();
  WaitUntil(Deadline({}), [&](Milliseconds slice) -> std::optional<bool> {
    if (result.wait_for(slice) == std::future_status::ready) return true;
    return {};
  });
  return result.get();
}

}  // namespace

// --- the inventory -------------------------------------------------------------------------------

// The background thread makes every connection, so that Ctrl-C can end the wait for the first.
InventoryHandle::InventoryHandle(Options options, Seconds connectTimeout) {
  const bool isWaiting = !options.connectInBackground;
  options.connectInBackground = true;
  {
    const Unlocked unlocked;
    shared = SharedInventory::Make(options);
  }
  if (!isWaiting) return;
  try {
    AwaitFirstData(connectTimeout);
  } catch (...) {
    LetGo(shared);
    throw;
  }
}

InventoryHandle::~InventoryHandle() {
  LetGo(shared);
}

void InventoryHandle::AwaitFirstData(Seconds limit) const {
  const Inventory& inventory = shared->Get();
  const bool isDecided = WaitUntil(Deadline(limit), [&](Milliseconds slice) {
    return inventory.WaitForState({}, slice) ? std::optional<bool>(true) : std::nullopt;
  });
  const Status status = inventory.State();
  if (status.connections > 0) return;
  if (isDecided) throw ErrorOf(status.reason);
  throw Error("", "not connected within " + std::string(py::str(py::float_(*limit))) + " seconds");
}

void InventoryHandle::Close() const {
  Inventory& inventory = shared->Get();
  const Unlocked unlocked;
  inventory.Close();
}

py::object InventoryHandle::State() const {
  Status status;
  {
    const Unlocked unlocked;
    status = shared->Get().State();
  }
  return ToPython(status);
}

bool InventoryHandle::WaitForState(Status::State state, unsigned long long connections,
                                   std::string reason, Seconds limit) const {
  Status seen;
  seen.state = state;
  seen.connections = connections;
  seen.reason = std::move(reason);
  const Inventory& inventory = shared->Get();
  return WaitUntil(Deadline(limit), [&](Milliseconds slice) {
    return inventory.WaitForState(seen, slice) ? std::optional<bool>(true) : std::nullopt;
  });
}

py::object InventoryHandle::All(Kind kind) const {
  return WithTypeOf(kind, [&](const auto& type) -> py::object {
    std::vector<std::decay_t<decltype(type)>> objects;
    {
      const Unlocked unlocked;
      objects = shared->Get().template All<std::decay_t<decltype(type)>>();
    }
    return ToList(objects);
  });
}

py::object InventoryHandle::Columns(Kind kind, const std::vector<std::size_t>& fields) const {
  return WithTypeOf(kind, [&](const auto& type) -> py::object {
    std::vector<std::decay_t<decltype(type)>> objects;
    {
      const Unlocked unlocked;
      objects = shared->Get().template All<std::decay_t<decltype(type)>>();
    }
    return ToColumns(objects, fields);
  });
}

py::object InventoryHandle::Find(Kind kind, const std::string& key) const {
  AnyObject found;
  {
    const Unlocked unlocked;
    found = Look(shared->Get(), kind, key);
  }
  return ToPython(found);
}

std::size_t InventoryHandle::Count(Kind kind) const {
  const Unlocked unlocked;
  return shared->Get().Count(kind);
}

std::unique_ptr<FollowerHandle> InventoryHandle::Follow() const {
  return std::make_unique<FollowerHandle>(shared);
}

py::object InventoryHandle::Invoke(const std::string& method, const Target& target,
                                   const Arguments& arguments) const {
  return ToPython(Await(
      shared, [=](Inventory& inventory) { return inventory.Invoke(method, target, arguments); }));
}

bool InventoryHandle::RunTask(const std::string& method, const Target& target,
                              const Arguments& arguments) const {
  return Await(shared,
               [=](Inventory& inventory) { return inventory.RunTask(method, target, arguments); });
}

// --- the follower --------------------------------------------------------------------------------

FollowerHandle::FollowerHandle(std::shared_ptr<SharedInventory> of) : shared(std::move(of)) {
  const Unlocked unlocked;
  follower = std::make_unique<Follower>(shared->Get().Follow());
}

FollowerHandle::~FollowerHandle() {
  if (shared->IsForked()) {
    follower.release();
  } else {
    const Unlocked unlocked;
    follower.reset();
  }
  LetGo(shared);
}

bool FollowerHandle::Wait(Seconds limit) {
  shared->Get();
  return WaitUntil(Deadline(limit), [&](Milliseconds slice) -> std::optional<bool> {
    if (follower->Wait(slice)) return true;
    if (follower->Closed()) return false;
    return {};
  });
}

py::list FollowerHandle::Take(std::size_t max) {
  std::vector<FullChange> changes;
  {
    const Unlocked unlocked;
    const Inventory& inventory = shared->Get();
    for (Change& change : follower->Next(max)) {
      AnyObject object;
      if (change.type != Change::Type::removed) object = Look(inventory, change.kind, change.key);
      changes.push_back({std::move(change), std::move(object)});
    }
  }
  py::list list;
  for (const FullChange& change : changes) list.append(ToPython(change));
  return list;
}

void FollowerHandle::Close() {
  shared->Get();
  const Unlocked unlocked;
  follower->Close();
}

bool FollowerHandle::IsClosed() const {
  shared->Get();
  const Unlocked unlocked;
  return follower->Closed();
}

void CloseAll() {
  const Unlocked unlocked;
  SharedInventory::EndAll();
}

}  // namespace kecpp::python
