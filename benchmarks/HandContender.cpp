// SPDX-License-Identifier: MIT
//
// A parser by hand for this one document: it knows every tag, every attribute and the order of the
// properties, and throws at anything else, be it a line end. What it costs is about the least that
// a parser in front of this store can cost; it is of no use with another server.
#include <cstring>
#include <stdexcept>

#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

#define KECPP_BENCH_BEFORE(path, attributes) \
  "<changeSet><name>" path "</name><op>assign</op><val " attributes ">"
#define KECPP_BENCH_STRING(path) KECPP_BENCH_BEFORE(path, "xsi:type=\"xsd:string\"")

template <typename Owner>
struct Row {
  std::string_view before;
  std::string Owner::*field;  // null: `set`
  void (Store::Object::*set)(std::string_view value);
};

// In the order of the document.
constexpr Row<Machine> kMachineRows[] = {
    {KECPP_BENCH_STRING("name"), &Machine::name, nullptr},
    {KECPP_BENCH_STRING("config.annotation"), &Machine::annotation, nullptr},
    {KECPP_BENCH_STRING("config.uuid"), &Machine::uuid, nullptr},
    {KECPP_BENCH_STRING("config.files.vmPathName"), &Machine::pathName, nullptr},
    {KECPP_BENCH_BEFORE("runtime.powerState", "xsi:type=\"VirtualMachinePowerState\""), nullptr,
     &Store::Object::SetPowerState},
    {KECPP_BENCH_BEFORE("runtime.host", "type=\"HostSystem\" xsi:type=\"ManagedObjectReference\""),
     nullptr, &Store::Object::SetHostOf},
    {KECPP_BENCH_STRING("config.guestFullName"), &Machine::guestFullName, nullptr},
    {KECPP_BENCH_STRING("guest.hostName"), &Machine::guestHostName, nullptr},
    {KECPP_BENCH_STRING("guest.ipAddress"), &Machine::guestAddress, nullptr},
};

constexpr Row<Host> kHostRows[] = {
    {KECPP_BENCH_STRING("name"), &Host::name, nullptr},
    {KECPP_BENCH_STRING("hardware.systemInfo.uuid"), &Host::uuid, nullptr},
    {KECPP_BENCH_STRING("hardware.systemInfo.vendor"), &Host::vendor, nullptr},
    {KECPP_BENCH_STRING("hardware.systemInfo.model"), &Host::model, nullptr},
    {KECPP_BENCH_BEFORE("summary.overallStatus", "xsi:type=\"ManagedEntityStatus\""), nullptr,
     &Store::Object::SetOverallStatus},
};

constexpr std::string_view kMachineList =
    KECPP_BENCH_BEFORE("vm", "xsi:type=\"ArrayOfManagedObjectReference\"");

class HandContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    at = text.characters.get();
    end = at + text.length;
    Expect("<returnval xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><version>");
    UpToTag();
    Expect("</version><filterSet><filter type=\"PropertyFilter\">");
    if (UpToTag() != kFilter) Refuse();
    Expect("</filter>");
    while (Pass("<objectSet><kind>")) ApplyObject();
    Expect("</filterSet></returnval>");
  }

 private:
  [[noreturn]] static void Refuse() { throw std::runtime_error("another document"); }

  bool Pass(std::string_view markup) {
    if (static_cast<std::size_t>(end - at) < markup.size() ||
        std::memcmp(at, markup.data(), markup.size()) != 0) {
      return false;
    }
    at += markup.size();
    return true;
  }

  void Expect(std::string_view markup) {
    if (!Pass(markup)) Refuse();
  }

  std::string_view UpToTag() {
    const auto* stop =
        static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)));
    if (stop == nullptr) Refuse();
    const std::string_view text(at, static_cast<std::size_t>(stop - at));
    at = stop;
    return text;
  }

  void ApplyObject() {
    UpToTag();
    Expect("</kind><obj type=\"");
    if (Pass("VirtualMachine\">")) {
      Store::Object object(store, "VirtualMachine", Id());
      ApplyRows(object, kMachineRows);
    } else {
      Expect("HostSystem\">");
      Store::Object object(store, "HostSystem", Id());
      ApplyRows(object, kHostRows);
      if (Pass(kMachineList)) ApplyList(object);
    }
    Expect("</objectSet>");
  }

  std::string_view Id() {
    const std::string_view id = UpToTag();
    Expect("</obj>");
    return id;
  }

  template <typename Owner, std::size_t N>
  void ApplyRows(Store::Object& object, const Row<Owner> (&rows)[N]) {
    for (const Row<Owner>& row : rows) {
      if (!Pass(row.before)) continue;
      const std::string_view value = UpToTag();
      if (row.field != nullptr) {
        object.SetField(row.field, value);
      } else {
        (object.*row.set)(value);
      }
      Expect("</val></changeSet>");
    }
  }

  void ApplyList(Store::Object& host) {
    while (Pass("<ManagedObjectReference type=\"VirtualMachine\">")) {
      host.AddMachine(UpToTag());
      Expect("</ManagedObjectReference>");
    }
    Expect("</val></changeSet>");
  }

  const char* at = nullptr;
  const char* end = nullptr;
};

}  // namespace

std::unique_ptr<Contender> MakeHandContender() {
  return std::make_unique<HandContender>();
}

}  // namespace bench
