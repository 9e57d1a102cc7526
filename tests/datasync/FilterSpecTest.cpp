// SPDX-License-Identifier: MIT
#include "datasync/FilterSpec.h"

#include "datasync/PropertyList.h"
#include "datasync/SyncFixture.h"
#include "xml/KEXmlBuffer.h"

namespace KE::Service {
namespace {

class FilterSpecTest : public SyncFixture {
 protected:
  static std::string Write(decltype(CreatePropertySet) writer, const std::string& elements) {
    PropertyTexts list(elements);
    KELib::Xml::KEXmlBuffer xml;
    const std::string error = TextOf([&] { writer(list, xml); });
    return error == "no exception" ? xml.Str() : error;
  }
};

TEST_F(FilterSpecTest, TheRequestIsWrittenToTheByte) {
  PropertyTexts list(
      "_p_ _o_ VirtualMachine name runtime.powerState _p_ _o_ HostSystem "
      "_t_ folderWalk _o_ Folder _p_ childEntity _s_ folderWalk _s_ other "
      "_t_ other _o_ Datacenter _p_ hostFolder _x_ _co_ ZORBEL_VMComputerSystem");
  sync->CreatePropFilter(Reference("Folder", "group-d1").get(), list, nullptr);
  const char* lines[] = {"<CreateFilter xmlns=\"urn:pxa25\">",
                         "<_this type=\"PropertyCollector\">pc-1</_this>",
                         "<spec>",
                         "<propSet>",
                         "<type>VirtualMachine</type>",
                         "<all>false</all>",
                         "<pathSet>name</pathSet>",
                         "<pathSet>runtime.powerState</pathSet>",
                         "</propSet>",
                         "<propSet>",
                         "<type>HostSystem</type>",
                         "<all>false</all>",
                         "</propSet>",
                         "<objectSet>",
                         "<obj type=\"Folder\">group-d1</obj>",
                         "<skip>false</skip>",
                         "<selectSet xsi:type=\"TraversalSpec\">",
                         "<name>folderWalk</name>",
                         "<type>Folder</type>",
                         "<path>childEntity</path>",
                         "<skip>false</skip>",
                         "<selectSet>\n<name>folderWalk</name>\n</selectSet>",
                         "<selectSet>\n<name>other</name>\n</selectSet>",
                         "</selectSet>",
                         "<selectSet xsi:type=\"TraversalSpec\">",
                         "<name>other</name>",
                         "<type>Datacenter</type>",
                         "<path>hostFolder</path>",
                         "<skip>true</skip>",
                         "</selectSet>",
                         "</objectSet>",
                         "</spec>",
                         "<partialUpdates>true</partialUpdates>",
                         "</CreateFilter>"};
  std::string expected;
  for (const char* line : lines) expected += std::string(line) + "\n";
  EXPECT_EQ(server.Calls("CreateFilter").at(0).argument, expected);
}

// The same sections, whatever stands before and between them; a traversal's path is no property
// set.
TEST_F(FilterSpecTest, SectionsStandInAnyOrder) {
  const std::string sets = Write(CreatePropertySet, "_p_ _o_ A a1 a2 _p_ _o_ B b1");
  const std::string traversals = Write(CreateSelectSet, "_t_ t1 _o_ Folder _p_ child _s_ t1");
  for (const char* order :
       {"_p_ _o_ A a1 a2 _p_ _o_ B b1 _t_ t1 _o_ Folder _p_ child _s_ t1 _co_ X _m_ M",
        "_t_ t1 _o_ Folder _p_ child _s_ t1 _p_ _o_ A a1 a2 _m_ M _p_ _o_ B b1 _co_ X",
        "ignored _co_ X _p_ _o_ A a1 a2 _t_ t1 _o_ Folder _p_ child _s_ t1 _m_ M _p_ _o_ B b1"}) {
    SCOPED_TRACE(order);
    EXPECT_EQ(Write(CreatePropertySet, order), sets);
    EXPECT_EQ(Write(CreateSelectSet, order), traversals);
    PropertyTexts texts(order);
    const PropertyList list(texts);
    ASSERT_TRUE(list.methods.size() == 1 && list.cacheTypes.size() == 1);
    EXPECT_STREQ(list.At(list.methods[0]).Cstr(), "M");
    EXPECT_STREQ(list.At(list.cacheTypes[0]).Cstr(), "X");
  }
}

TEST_F(FilterSpecTest, SeparatorsWithoutTheirOperandsAreErrors) {
  for (const char* list : {"_p_ VirtualMachine name", "_p_", "_p_ _o_", "_p_ _o_ _p_ _o_ A",
                           "_p_ _o_ A _p_", "_p_ _t_ t1 _o_ Folder _p_ child"}) {
    EXPECT_EQ(Write(CreatePropertySet, list), "No ObjectType specified for PropertySet") << list;
  }
  for (const char* list :
       {"_t_", "_t_ t1", "_t_ t1 Folder _p_ child", "_t_ _o_ Folder _p_ child", "_t_ t1 _o_",
        "_t_ t1 _o_ _p_ child", "_t_ t1 _o_ Folder _p_ child _s_"}) {
    EXPECT_EQ(Write(CreateSelectSet, list), "No ObjectType specified for SelectSet") << list;
  }
  for (const char* list : {"_t_ t1 _o_ Folder childEntity", "_t_ t1 _o_ Folder",
                           "_t_ t1 _o_ Folder _p_", "_t_ t1 _o_ Folder _p_ _x_"}) {
    EXPECT_EQ(Write(CreateSelectSet, list), "No Path Specified for Traversal Spec") << list;
  }
}

TEST_F(FilterSpecTest, OnlyTheOneListWatchesATask) {
  for (const char* elements : {"_p_ _o_ Task info.state", "_p_ _o_ Task info.state info.error",
                               "_p_ _o_ Task", "_p_ _o_ VirtualMachine name"}) {
    PropertyTexts texts(elements);
    EXPECT_EQ(PropertyList(texts).IsTaskWatch(),
              std::string(elements) == "_p_ _o_ Task info.state");
  }
}

// Nothing is sent for a broken list; a server's refusal and a useless answer are logged and thrown.
TEST_F(FilterSpecTest, AFilterThatCannotBeMadeIsTold) {
  EXPECT_EQ(TextOf([&] { Watch("_p_ name"); }), "No ObjectType specified for PropertySet");
  EXPECT_EQ(server.Count("CreateFilter"), 0u);
  EXPECT_TRUE(CapturedLog::Lines().empty());
  server.Then("CreateFilter", FakeServer::Throw(KELib::SystemException("NoPermission")));
  EXPECT_EQ(TextOf([&] { Watch(kMachines); }), "NoPermission");
  EXPECT_TRUE(CapturedLog::Contains("Exception Creating PropFilter : NoPermission"));
  for (const char* answer : {"", "<returnval type=\"PropertyFilter\"></returnval>", "<other/>"}) {
    CapturedLog::Clear();
    server.Then("CreateFilter", FakeServer::Text(answer));
    const std::string text = TextOf([&] { Watch(kMachines); });
    EXPECT_TRUE(CapturedLog::Contains("Exception Creating PropFilter : " + text)) << answer;
  }
}

}  // namespace
}  // namespace KE::Service
