// SPDX-License-Identifier: MIT
//
// The store behind the peers: what a C++ team would write first for this inventory. It owns the
// same fields and keeps the same links as the library's caches; machines and hosts are in
// std::unordered_map, texts in std::string.
//
// Thread safety: none.
#ifndef KECPP_BENCHMARKS_STORE_H
#define KECPP_BENCHMARKS_STORE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace bench {

struct Reference {
  std::string type;
  std::string value;
};

struct Host;

struct Machine {
  std::string id, name, annotation, uuid, guestFullName, guestHostName, guestAddress, pathName,
      powerState;
  Reference reference;
  unsigned short status = 0;
  Host* host = nullptr;
  std::size_t place = 0;  // in the host's list
};

struct Host {
  std::string id, name, uuid, vendor, model;
  Reference reference;
  unsigned short status = 0;
  std::vector<Machine*> machines;
};

class Store {
 public:
  // The changes of one object: looked up once, then changed property by property.
  class Object {
   public:
    // Finds the object or enters it. Other types are passed over.
    Object(Store& store, std::string_view type, std::string_view id);

    void Set(std::string_view property, std::string_view value);

    // One item of the host's list of machines.
    void AddMachine(std::string_view id);

    // The same for a caller that knows the object's type and the property.
    void SetField(std::string Machine::*field, std::string_view value) {
      (machine->*field).assign(value);
    }
    void SetField(std::string Host::*field, std::string_view value) {
      (host->*field).assign(value);
    }
    void SetPowerState(std::string_view state);
    void SetHostOf(std::string_view id);  // of the machine
    void SetOverallStatus(std::string_view status);

   private:
    void SetMachine(std::string_view property, std::string_view value);
    void SetHost(std::string_view property, std::string_view value);

    Store& store;
    Machine* machine = nullptr;
    Host* host = nullptr;
  };

  // From now on the machines that change are appended to `list`, which outlives the store.
  void NoteChanges(std::vector<std::string>& list) { changeList = &list; }

  // Null when there is none.
  const Machine* FindMachine(const std::string& id) const;

  std::uint64_t Checksum() const;
  std::size_t Walk() const;
  void Drop();

 private:
  static void Link(Machine& machine, Host& host);
  static void Unlink(Machine& machine);

  std::vector<std::string>* changeList = nullptr;
  std::unordered_map<std::string, std::unique_ptr<Machine>> machines;
  std::unordered_map<std::string, std::unique_ptr<Host>> hosts;
};

}  // namespace bench

#endif
