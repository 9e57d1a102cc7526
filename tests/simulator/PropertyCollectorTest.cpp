// SPDX-License-Identifier: MIT
#include "simulator/PropertyCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

namespace sim {
namespace {

using testing::ElementsAre;
using Strings = std::vector<std::string>;

std::string Spec(const std::string& objects) {
  return "<spec><propSet><type>HostSystem</type><all>false</all></propSet>"
         "<propSet><type>VirtualMachine</type><all>false</all><pathSet>name</pathSet></propSet>"
         "<objectSet>" +
         objects + "</objectSet></spec>";
}

std::string Walk(const char* type, const char* path, const char* skip) {
  return std::string("<selectSet xsi:type=\"TraversalSpec\"><name>") + type + "</name><type>" +
         type + "</type><path>" + path + "</path><skip>" + skip +
         "</skip><selectSet><name>Folder</name></selectSet>"
         "<selectSet><name>HostSystem</name></selectSet></selectSet>";
}

const char kRoot[] = "<obj type=\"Folder\">group-d1</obj><skip>false</skip>";

class PropertyCollectorTest : public testing::Test {
 protected:
  void SetUp() override { collector.OpenSession("s"); }

  std::string Watch(PropertyCollector& with, const std::string& spec) {
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(spec.c_str()));
    return with.CreateFilter("s", document.document_element());
  }

  // The answer's object sets as "kind identifier"; takes its version over.
  Strings Wait(PropertyCollector& with) {
    pugi::xml_document document;
    document.load_string(("<r>" + with.Wait("s", version, [] { return false; }) + "</r>").c_str());
    version = document.document_element().child_value("version");
    Strings sets;
    for (const auto& filter : document.document_element().children("filterSet")) {
      for (const auto& set : filter.children()) {
        if (!set.child("obj")) continue;  // the filter's reference
        const std::string kind = set.child("kind") ? set.child_value("kind") : set.name();
        sets.push_back(kind + " " + set.child_value("obj"));
      }
    }
    return sets;
  }

  Inventory inventory{1, 3, 1};
  PropertyCollector collector{inventory, 0};
  std::string version;
};

TEST_F(PropertyCollectorTest, SelectsWhatItsTraversalsReach) {
  Watch(collector, Spec(kRoot + Walk("Folder", "childEntity", "false")));
  EXPECT_THAT(Wait(collector),
              ElementsAre("enter host-1", "enter vm-1", "enter vm-2", "enter vm-3"));
  collector.CloseSession("s");
  collector.OpenSession("s");
  const std::string skipped = Walk("Folder", "childEntity", "true");
  Watch(collector, Spec(kRoot + skipped + Walk("HostSystem", "vm", "false")));
  EXPECT_THAT(Wait(collector),
              testing::UnorderedElementsAre("enter vm-1", "enter vm-2", "enter vm-3"))
      << "machines are skipped as entities of a folder, not as machines of a host";
  EXPECT_THROW(Watch(collector, Spec("<obj>x</obj><skip>false</skip>")), Fault);
  Watch(collector, Spec("<obj type=\"HostSystem\">host-9</obj><skip>false</skip>"));
  EXPECT_THAT(Wait(collector), ElementsAre("missingSet host-9"));
}

TEST_F(PropertyCollectorTest, ReportsOnlyWhatChanged) {
  Watch(collector, Spec(kRoot + Walk("Folder", "childEntity", "false")));
  Wait(collector);
  inventory.Set("vm-2", "runtime.powerState", "suspended");  // not asked for
  inventory.Set("vm-1", "name", "other");
  EXPECT_THAT(Wait(collector), ElementsAre("modify vm-1"));
  inventory.RemoveMachine("vm-3");
  inventory.CreateMachine("new", "host-1");
  EXPECT_THAT(Wait(collector), ElementsAre("leave vm-3", "enter vm-4"));
}

TEST_F(PropertyCollectorTest, RepeatsAnswersThatWereLost) {
  Watch(collector, Spec(kRoot + Walk("Folder", "childEntity", "false")));
  Wait(collector);
  const std::string before = version;
  inventory.RemoveMachine("vm-3");
  Wait(collector);
  version = before;
  EXPECT_THAT(Wait(collector),
              ElementsAre("leave vm-3", "enter host-1", "enter vm-1", "enter vm-2"));
  version.clear();
  EXPECT_THAT(Wait(collector), ElementsAre("enter host-1", "enter vm-1", "enter vm-2"));
}

TEST_F(PropertyCollectorTest, SplitsLargeAnswersWithoutLosingChanges) {
  PropertyCollector splitting(inventory, 2);
  splitting.OpenSession("s");
  Watch(splitting, Spec(kRoot + Walk("Folder", "childEntity", "false")));
  EXPECT_THAT(Wait(splitting), ElementsAre("enter host-1", "enter vm-1"));
  inventory.RemoveMachine("vm-2");
  inventory.Set("vm-1", "name", "other");
  EXPECT_THAT(Wait(splitting), ElementsAre("modify vm-1", "enter vm-3"));
}

TEST_F(PropertyCollectorTest, AWaitEndsWithANewFilterAnotherWaitOrACancel) {
  const auto pending = [this] {
    auto result = std::async(std::launch::async, [this] {
      try {
        return collector.Wait("s", "", [] { return false; });
      } catch (const Fault& fault) {
        return fault.type;
      }
    });
    while (collector.PendingWaits() == 0) std::this_thread::yield();
    return result;
  };
  auto first = pending();
  auto second = std::async(std::launch::async, [this] { return Wait(collector); });
  EXPECT_EQ(first.get(), "RequestCanceledFault");
  Watch(collector, Spec("<obj type=\"HostSystem\">host-1</obj><skip>false</skip>"));
  EXPECT_THAT(second.get(), ElementsAre("enter host-1"));
  collector.CloseSession("s");
  collector.OpenSession("s");
  auto third = pending();
  collector.CancelWait("s");
  EXPECT_EQ(third.get(), "RequestCanceledFault");
  auto fourth = pending();
  collector.CloseSession("s");
  EXPECT_EQ(fourth.get(), "NotAuthenticatedFault");
}

}  // namespace
}  // namespace sim
