// SPDX-License-Identifier: MIT
//
// An inventory and a follower as Python has them. They wait without the interpreter lock, and not
// beyond a Ctrl-C. Nothing here calls Python on a thread of the library.
//
// After fork() a child has these objects, but not the threads behind them: there every call throws
// Error, and nothing is freed.
//
// Thread safety: any thread that holds the interpreter lock.
#ifndef KECPP_PYTHON_HANDLES_H
#define KECPP_PYTHON_HANDLES_H

#include <kecpp/inventory.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Values.h"
#include "Waiting.h"

namespace kecpp::python {

class FollowerHandle;
class SharedInventory;

using Seconds = std::optional<double>;  // none: for ever
using Arguments = std::vector<std::pair<std::string, std::string>>;

class InventoryHandle {
 public:
  // Connects, and waits for the first data unless the options say otherwise. Throws Error.
  InventoryHandle(Options options, Seconds connectTimeout);
  ~InventoryHandle();
  InventoryHandle(const InventoryHandle&) = delete;
  InventoryHandle& operator=(const InventoryHandle&) = delete;

  void Close() const;
  pybind11::object State() const;
  // Whether state, connections and reason are not all the same as these.
  bool WaitForState(Status::State state, unsigned long long connections, std::string reason,
                    Seconds limit) const;

  pybind11::object All(Kind kind) const;
  pybind11::object Columns(Kind kind, const std::vector<std::size_t>& fields) const;
  pybind11::object Find(Kind kind, const std::string& key) const;
  std::size_t Count(Kind kind) const;
  std::unique_ptr<FollowerHandle> Follow() const;

  // Ctrl-C ends the wait for them, not the calls.
  pybind11::object Invoke(const std::string& method, const Target& target,
                          const Arguments& arguments) const;
  bool RunTask(const std::string& method, const Target& target, const Arguments& arguments) const;

 private:
  void AwaitFirstData(Seconds limit) const;

  std::shared_ptr<SharedInventory> shared;
};

// Keeps its inventory alive.
class FollowerHandle {
 public:
  explicit FollowerHandle(std::shared_ptr<SharedInventory> of);
  ~FollowerHandle();
  FollowerHandle(const FollowerHandle&) = delete;
  FollowerHandle& operator=(const FollowerHandle&) = delete;

  bool Wait(Seconds limit);
  pybind11::list Take(std::size_t max);
  void Close();
  bool IsClosed() const;

 private:
  std::shared_ptr<SharedInventory> shared;
  std::unique_ptr<Follower> follower;
};

// At the end of the process: no thread of ours may use what its exit handlers destroy. Closes all
// inventories, at the same time, and waits up to five seconds for calls that a Ctrl-C has left.
void CloseAll();

}  // namespace kecpp::python

#endif
