// SPDX-License-Identifier: MIT
#include "simulator/PropertyCollector.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <map>
#include <memory>

#include "support/Rows.h"

namespace sim {
namespace {

class PropertyCollectorTest : public testing::Test {
 protected:
  PropertyCollectorTest() { Begin(0); }

  void Begin(unsigned int maxObjects) {
    collector.reset();
    inventory = std::make_unique<Inventory>(std::vector<unsigned int>{1, 3}, 1);
    collector = std::make_unique<PropertyCollector>(*inventory, maxObjects);
    collector->OpenSession("s");
    version = before = "";
  }

  void Watch(const std::string& objects) {
    const std::string filter =
        "<spec><propSet><type>HostSystem</type><all>false</all></propSet>"
        "<propSet><type>VirtualMachine</type><all>false</all><pathSet>name</pathSet></propSet>"
        "<objectSet>" +
        objects + "</objectSet></spec>";
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(filter.c_str()));
    collector->CreateFilter("s", document.document_element());
  }

  // The answer's object sets as "kind identifier"; takes its version over.
  std::string Wait() {
    const std::string answer = collector->Wait("s", version, [] { return false; });
    pugi::xml_document document;
    document.load_string(("<r>" + answer + "</r>").c_str());
    before = version;
    version = document.document_element().child_value("version");
    std::string sets;
    for (const auto& filter : document.document_element().children("filterSet")) {
      for (const auto& set : filter.children()) {
        if (!set.child("obj")) continue;  // the filter's reference
        sets += sets.empty() ? "" : ", ";
        sets += set.child("kind") ? set.child_value("kind") : set.name();
        sets += std::string(" ") + set.child_value("obj");
      }
    }
    return sets;
  }

  void Do(const std::string& step, const std::string& argument) {
    const std::map<std::string, std::function<void()>> doers = {
        {"collector", [&] { Begin(static_cast<unsigned int>(std::stoul(argument))); }},
        {"watch", [&] { Watch(argument); }},
        {"refuse", [&] { EXPECT_THROW(Watch(argument), Fault); }},
        {"rename", [&] { EXPECT_TRUE(inventory->Set(argument, "name", "other")); }},
        {"suspend",
         [&] { EXPECT_TRUE(inventory->Set(argument, "runtime.powerState", "suspended")); }},
        {"remove", [&] { EXPECT_TRUE(inventory->RemoveMachine(argument)); }},
        {"create", [&] { inventory->CreateMachine("new", argument); }},
        {"version", [&] { version = argument == "none" ? "" : before; }},
        {"wait", [&] { EXPECT_EQ(Wait(), argument); }},
    };
    doers.at(step)();
  }

  std::unique_ptr<Inventory> inventory;
  std::unique_ptr<PropertyCollector> collector;
  std::string version, before;
};

TEST_F(PropertyCollectorTest, ReportsWhatTheStepsSay) {
  for (const Row& row : ReadRows(KECPP_TEST_DATA "/steps.txt")) {
    SCOPED_TRACE(testing::PrintToString(row));
    Do(row.at(0), row.at(1));
  }
}

TEST_F(PropertyCollectorTest, AWaitEndsWithANewFilterAnotherWaitOrACancel) {
  const auto pending = [this] {
    auto result = std::async(std::launch::async, [this] {
      try {
        return collector->Wait("s", "", [] { return false; });
      } catch (const Fault& fault) {
        return fault.type;
      }
    });
    while (collector->PendingWaits() == 0) std::this_thread::yield();
    return result;
  };
  auto first = pending();
  auto second = std::async(std::launch::async, [this] { return Wait(); });
  EXPECT_EQ(first.get(), "RequestCanceledFault");
  Watch("<obj type=\"HostSystem\">host-1</obj><skip>false</skip>");
  EXPECT_EQ(second.get(), "enter host-1");
  collector->CloseSession("s");
  collector->OpenSession("s");
  auto third = pending();
  collector->CancelWait("s");
  EXPECT_EQ(third.get(), "RequestCanceledFault");
  auto fourth = pending();
  collector->CloseSession("s");
  EXPECT_EQ(fourth.get(), "NotAuthenticatedFault");
}

}  // namespace
}  // namespace sim
