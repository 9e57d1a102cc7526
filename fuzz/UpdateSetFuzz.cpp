// SPDX-License-Identifier: MIT
//
// An update set, or the answer of a property method, into caches that are filled already. Whatever
// it is, links agree on both sides; and once it was applied, applying it again changes nothing.
#include "datasync/CacheDump.h"
#include "datasync/FakeServer.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/PropertyTexts.h"
#include "foundation/KEException.h"
#include "fuzz/CacheChecks.h"
#include "fuzz/Fuzz.h"
#include "xml/KEXmlReader.h"

namespace {

using KELib::KEString;
using namespace KE::Service;

const char kFill[] = R"(<returnval><version>1</version>
<filterSet><filter type="PropertyFilter">filter-1</filter>
<objectSet><kind>enter</kind><obj type="HostSystem">h-1</obj><changeSet><name>name</name>
<op>assign</op><val>north</val></changeSet></objectSet>
<objectSet><kind>enter</kind><obj type="HostSystem">h-2</obj><changeSet><name>name</name>
<op>assign</op><val>south</val></changeSet></objectSet>
<objectSet><kind>enter</kind><obj type="VirtualMachine">vm-1</obj><changeSet><name>runtime.host</name>
<op>assign</op><val type="HostSystem">h-1</val></changeSet></objectSet>
<objectSet><kind>enter</kind><obj type="VirtualMachine">vm-2</obj><changeSet><name>runtime.host</name>
<op>assign</op><val type="HostSystem">h-1</val></changeSet></objectSet></filterSet>
<filterSet><filter type="PropertyFilter">filter-2</filter>
<objectSet><kind>enter</kind><obj type="AuthorizationManager">a-1</obj>
<changeSet><name>privilegeList</name><op>assign</op>
<val xsi:type="ArrayOfAuthorizationPrivilege"><AuthorizationPrivilege><privId>p-1</privId>
<name>one</name></AuthorizationPrivilege></val></changeSet>
<changeSet><name>roleList</name><op>assign</op><val xsi:type="ArrayOfAuthorizationRole">
<AuthorizationRole><roleId>1</roleId><name>r</name><privilege>p-1</privilege></AuthorizationRole>
</val></changeSet></objectSet></filterSet></returnval>)";

// A data sync whose filters are known and which never starts its thread.
class Target {
 public:
  Target() {
    collector.type = KEString("PropertyCollector");
    collector.value = KEString("pc-1");
    sync.Init(&server, &collector);
    Watch(
        "_p_ _o_ VirtualMachine name _o_ HostSystem name "
        "_co_ ZORBEL_VMComputerSystem ZORBEL_ORXComputerSystem");
    Watch(
        "_p_ _o_ AuthorizationManager roleList privilegeList "
        "_co_ Zorbel_Role Zorbel_Privilege Zorbel_Identity");
    Watch("_p_ _o_ Task info.state");
    Apply(kFill);
  }

  // Applies a set and gives the caches' content.
  std::string Apply(const std::string& text) {
    KEString content(text.c_str());
    KELib::Xml::KEXmlReader reader(content, false, 0);
    UpdateInfo ui("val", nullptr);
    try {
      sync.UpdateSetToCache(ui, reader);
    } catch (const KELib::Exception&) {
    }
    fuzz::CheckCaches(*sync.GetCache());
    return DumpCaches(*sync.GetCache());
  }

 private:
  void Watch(const char* elements) {
    PropertyTexts list(elements);
    sync.CreatePropFilter(&collector, list, nullptr);
  }

  FakeServer server;
  KE::Stub::ManagedObjectReference collector;
  KEDataSyncImpl sync;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).Rest();
  Target target;
  target.Apply(text);
  // What depends on order, such as a link to a host that the same set names later, settles then.
  const std::string settled = target.Apply(text);
  FUZZ_CHECK(target.Apply(text) == settled);
  return 0;
}
