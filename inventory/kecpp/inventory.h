// SPDX-License-Identifier: MIT
//
// A virtualization host's inventory, kept true: hosts, machines, roles, privileges and identities
// as plain values, and a feed of what changes.
//
//   kecpp::Inventory inventory({"agent.xml"});  // connected and filled, or kecpp::Error
//   for (const kecpp::Machine& machine : inventory.Machines()) std::cout << machine.name << '\n';
//   kecpp::Follower changes = inventory.Follow();
//   while (changes.Wait(std::chrono::minutes(1))) {
//     for (const kecpp::Change& change : changes.Next()) ...  // inventory.FindMachine(change.key)
//   }
//
// Connecting, logging in, watching, locking, decoding and connecting again are done here; the
// library behind it, libkecpp, does the rest. Link with -lkecpp-inventory. The same source compiles
// with every version 1.x; a program runs with every version 1.x that was built with the same
// compiler's standard library.
//
// Reconnecting: when the session or the daemon is lost, a background thread connects again, after
// pauses that double from one second to 30. Until then everything that is read is as last known,
// and State() says so; only roles, privileges and identities may be gone meanwhile, since the
// daemon took the right to see them away. When the daemon's process has changed, the process ends
// with status 0, and a supervisor starts it again: what another daemon holds has nothing to do with
// what was known.
//
// Threads: every operation may be called from any thread. Nothing else may run on an Inventory
// while it is destroyed, except Followers' Wait and RunTask, which return then. Texts: UTF-8,
// decoded, unless a comment says otherwise.
#ifndef KECPP_INVENTORY_H
#define KECPP_INVENTORY_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#if defined __GNUC__
#define KECPP_INVENTORY_API __attribute__((visibility("default")))
#else
#define KECPP_INVENTORY_API
#endif

namespace kecpp {

// --- values --------------------------------------------------------------------------------------

enum class Kind { host, machine, role, privilege, identity };

// This library's version, such as "1.0.0".
KECPP_INVENTORY_API const char* Version();

// "host", "machine", "role", "privilege", "identity".
KECPP_INVENTORY_API const char* NameOf(Kind kind);

enum class PowerState { unknown, off, on, suspended };

// Each kind of object has two forms: with std::string, a copy with decoded texts; and with
// std::string_view, a look at what the library holds, in which texts are XML text (entities stay as
// the daemon wrote them). The second form is good only inside the callback that receives it.

// XML text to the text that it means.
KECPP_INVENTORY_API std::string Decode(std::string_view xmlText);

// A host: one physical computer.
template <class Text>
struct BasicHost {
  Text key;
  Text name;
  Text description;
  Text uuid;
  Text vendor;
  Text model;
  unsigned operationalStatus = 0;  // CIM's: 2 OK, 3 degraded, 6 error, 0 unknown
  std::vector<Text> machines;      // keys, sorted in the first form
};
// Whether all fields are equal.
template <class Text>
bool operator==(const BasicHost<Text>& left, const BasicHost<Text>& right) {
  return std::tie(left.key, left.name, left.description, left.uuid, left.vendor, left.model,
                  left.operationalStatus, left.machines) ==
         std::tie(right.key, right.name, right.description, right.uuid, right.vendor, right.model,
                  right.operationalStatus, right.machines);
}

// A virtual machine.
template <class Text>
struct BasicMachine {
  Text key;
  Text name;
  Text description;
  Text uuid;
  Text guestFullName;
  Text guestHostName;
  Text guestIPAddress;
  Text path;            // of the file that describes it
  Text powerStateText;  // the daemon's word, such as "poweredOn"
  PowerState powerState = PowerState::unknown;
  unsigned operationalStatus = 0;  // as a host's
  std::optional<Text> host;        // key; none while the daemon names no host
};
// Whether all fields are equal.
template <class Text>
bool operator==(const BasicMachine<Text>& left, const BasicMachine<Text>& right) {
  return std::tie(left.key, left.name, left.description, left.uuid, left.guestFullName,
                  left.guestHostName, left.guestIPAddress, left.path, left.powerStateText,
                  left.powerState, left.operationalStatus, left.host) ==
         std::tie(right.key, right.name, right.description, right.uuid, right.guestFullName,
                  right.guestHostName, right.guestIPAddress, right.path, right.powerStateText,
                  right.powerState, right.operationalStatus, right.host);
}

// A role: privileges, and the identities that have them.
template <class Text>
struct BasicRole {
  Text key;
  Text name;
  Text caption;
  Text description;
  Text type;
  std::vector<Text> privileges;  // keys, sorted in the first form
  std::vector<Text> identities;  // likewise
};
// Whether all fields are equal.
template <class Text>
bool operator==(const BasicRole<Text>& left, const BasicRole<Text>& right) {
  return std::tie(left.key, left.name, left.caption, left.description, left.type, left.privileges,
                  left.identities) == std::tie(right.key, right.name, right.caption,
                                               right.description, right.type, right.privileges,
                                               right.identities);
}

// The right to do one thing.
template <class Text>
struct BasicPrivilege {
  Text key;
  Text name;
  std::vector<Text> roles;  // keys, sorted in the first form
};
// Whether all fields are equal.
template <class Text>
bool operator==(const BasicPrivilege<Text>& left, const BasicPrivilege<Text>& right) {
  return std::tie(left.key, left.name, left.roles) == std::tie(right.key, right.name, right.roles);
}

// A user or a group of users.
template <class Text>
struct BasicIdentity {
  Text key;
  std::vector<Text> roles;  // keys, sorted in the first form
};
// Whether all fields are equal.
template <class Text>
bool operator==(const BasicIdentity<Text>& left, const BasicIdentity<Text>& right) {
  return std::tie(left.key, left.roles) == std::tie(right.key, right.roles);
}

using Host = BasicHost<std::string>;
using Machine = BasicMachine<std::string>;
using Role = BasicRole<std::string>;
using Privilege = BasicPrivilege<std::string>;
using Identity = BasicIdentity<std::string>;
using HostView = BasicHost<std::string_view>;
using MachineView = BasicMachine<std::string_view>;
using RoleView = BasicRole<std::string_view>;
using PrivilegeView = BasicPrivilege<std::string_view>;
using IdentityView = BasicIdentity<std::string_view>;

// --- connecting ----------------------------------------------------------------------------------

// Why something could not be done. what() is one line for a program's user.
class KECPP_INVENTORY_API Error : public std::runtime_error {
 public:
  // what() is both with a colon between, or `reason` alone when `url` is empty.
  Error(const std::string& url, const std::string& reason);
  ~Error() override;

  const std::string& Url() const { return url; }  // of the daemon; empty where it does not matter
  const std::string& Reason() const { return reason; }

 private:
  std::string url;
  std::string reason;
};

// Roles, privileges and identities: not watched; watched unless the daemon keeps them from this
// account; or their absence is an error.
enum class Authorization { none, whereAllowed, required };

// How an Inventory is made.
struct Options {
  // A file's path, an XML text (it begins with "<?xml"), or empty for the library's own document.
  std::string config;

  bool systems = true;  // hosts and machines
  Authorization authorization = Authorization::whereAllowed;

  // True: the constructor returns at once, and the background thread goes on trying to connect.
  // Nothing is known until State() says that it is connected.
  bool connectInBackground = false;

  // How long the constructor may take; zero: as long as the configuration's time-outs let it.
  std::chrono::milliseconds connectTimeout{0};

  // What goes to the system log: "none", "panic", "error", "warning", "info", "verbose" or
  // "trivia". Empty: the process's first Inventory logs as its configuration says, later ones leave
  // that as it is.
  std::string logLevel{};
};

// How the connection is.
struct Status {
  enum class State { connecting, connected, lost };

  State state = State::connecting;
  std::string reason;  // why it is lost and could not be made again, or not made yet; else empty
  std::chrono::system_clock::time_point since;  // of this state
  unsigned long long connections = 0;           // made so far
  bool hasAuthorization = false;                // roles, privileges and identities are watched
  std::string authorizationFailure;             // why they are not, though they were asked for

  // Of the connection that there is, or was last:
  unsigned long long updates = 0;                    // update sets applied
  std::chrono::system_clock::time_point lastUpdate;  // when one was, to the second
  std::string version;                               // the daemon's, of the last update set
  unsigned failures = 0;                             // failed cycles since the last good one
  std::string lastFailure;                           // the text of the last failed cycle; or empty
  std::chrono::system_clock::time_point lastFailureTime;  // the epoch when none failed
};

// --- changes -------------------------------------------------------------------------------------

// One entry of a Follower: what became of which object.
struct Change {
  enum class Type { added, changed, removed };

  Type type;
  Kind kind;
  std::string key;
};

// What changed since its reader looked last: at most one entry an object, right with respect to
// what this reader was given before, in the order in which the objects changed first. A new
// follower begins with all that is known, as `added`. A new or lost link is a change of both ends.
// Nothing is ever left out; the memory is bounded by the number of objects. After a new connection
// there is only what differs from the last known inventory. When memory runs out while a lost
// connection is replaced, the follower is closed: a new one begins with all that is known.
//
// One thread waits and takes; any other may Close. It may outlive its Inventory.
class KECPP_INVENTORY_API Follower {
 public:
  Follower(Follower&&) noexcept;
  Follower& operator=(Follower&&) noexcept;
  ~Follower();

  // Waits until Next has something, at most for `limit`. False when the time is over, and at once
  // when it is closed or its Inventory has gone.
  bool Wait(std::chrono::milliseconds limit);

  // Up to `max` changes, oldest first, without waiting. Empty when there are none; rarely so after
  // Wait returned true, when a change was of another kind.
  std::vector<Change> Next(std::size_t max = 1000);

  // Lets Wait go. From then on there is nothing to take.
  void Close();
  bool Closed() const;  // by Close, or with its Inventory

  class Impl;

 private:
  friend class Inventory;
  explicit Follower(std::shared_ptr<Impl> made);

  std::shared_ptr<Impl> impl;
};

// --- reading in portions -------------------------------------------------------------------------

// How far a reader has come through the objects of one kind: a few bytes, whatever their number,
// and no lock. It stays good for as long as the reader likes, also while objects come and go and
// while the connection is replaced.
//
// One thread at a time uses it. It may outlive its Inventory.
class KECPP_INVENTORY_API Walk {
 public:
  Walk();  // at the begin
  Walk(Walk&&) noexcept;
  Walk& operator=(Walk&&) noexcept;
  ~Walk();

  class Impl;

 private:
  friend class Inventory;

  std::unique_ptr<Impl> impl;
};

// --- the inventory -------------------------------------------------------------------------------

// An object of the daemon that a method acts on, such as {"VirtualMachine", machine.key}.
struct Target {
  std::string type;
  std::string key;
};

// The inventory of one daemon; see the head of this file.
class KECPP_INVENTORY_API Inventory {
 public:
  // Connects, logs in, watches and waits for the first data. Throws Error.
  explicit Inventory(const Options& options = {});
  // Ends the threads and the session: within two seconds when the daemon answers, within five
  // otherwise.
  ~Inventory();
  Inventory(const Inventory&) = delete;
  Inventory& operator=(const Inventory&) = delete;

  // Ends the background thread and lets every wait, RunTask too, return: from then on nothing is
  // followed, State() says lost, and what is known stays readable. Takes as long as the destructor.
  void Close();

  kecpp::Status State() const;
  // Waits until the state is another than `seen` has, at most for `limit`; true when it is.
  bool WaitForState(const kecpp::Status& seen, std::chrono::milliseconds limit) const;

  // All objects of a kind, sorted by key. O(n log n); the library is kept from applying changes for
  // some hundred objects at a time only.
  std::vector<Host> Hosts() const { return All<Host>(); }
  std::vector<Machine> Machines() const { return All<Machine>(); }
  std::vector<Role> Roles() const { return All<Role>(); }
  std::vector<Privilege> Privileges() const { return All<Privilege>(); }
  std::vector<Identity> Identities() const { return All<Identity>(); }

  // One object. O(1) and its links.
  std::optional<Host> FindHost(const std::string& key) const { return Find<Host>(key); }
  std::optional<Machine> FindMachine(const std::string& key) const { return Find<Machine>(key); }
  std::optional<Role> FindRole(const std::string& key) const { return Find<Role>(key); }
  std::optional<Privilege> FindPrivilege(const std::string& key) const {
    return Find<Privilege>(key);
  }
  std::optional<Identity> FindIdentity(const std::string& key) const { return Find<Identity>(key); }

  // Any kind, as a copy: `Object` is Host, Machine, Role, Privilege or Identity.
  template <class Object>
  std::vector<Object> All() const;
  template <class Object>
  std::optional<Object> Find(const std::string& key) const;

  // The objects of a kind; before the first connection is filled, those that have arrived.
  std::size_t Count(Kind kind) const;

  // Calls `visit` with every object of a kind, in no order: each that is there from the first call
  // to the last once, one that comes or goes meanwhile once or not at all. `Object` is one of the
  // two forms.
  //
  // With copies `visit` runs without a lock and may do what it likes. With views it runs under the
  // library's locks: it must be short and must call nothing of this library. They are given up
  // after some hundred objects and taken again. What `visit` throws ends the visit.
  template <class Object>
  void ForEach(const std::function<void(const Object&)>& visit) const;

  // As ForEach with views, for the next objects of a walk, at most `most`, which must not be 0.
  // True when there are more: for answers that are given in portions, with any time in between. One
  // that comes or goes between two portions is met once or not at all; twice when it went and came
  // back. A walk is for one kind. O(portion), and for the whole walk once O(objects).
  template <class View>
  bool ForNext(Walk& walk, std::size_t most, const std::function<void(const View&)>& visit) const;

  // As Find, with a view; false when there is no such object.
  template <class View>
  bool Look(const std::string& key, const std::function<void(const View&)>& visit) const;

  Follower Follow() const;

  // Calls a method of the daemon and returns the inner XML of its answer. The arguments are texts,
  // in the order that the daemon asks for. Throws Error with the daemon's or the transport's text,
  // also while there is no connection.
  std::string Invoke(const std::string& method, const Target& target,
                     const std::vector<std::pair<std::string, std::string>>& arguments = {});

  // Calls a method that starts a task, and waits for the task. True when it succeeded; false when
  // it failed, and when the connection was lost or this object is destroyed meanwhile.
  bool RunTask(const std::string& method, const Target& target,
               const std::vector<std::pair<std::string, std::string>>& arguments = {});

 private:
  class Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace kecpp

#endif
