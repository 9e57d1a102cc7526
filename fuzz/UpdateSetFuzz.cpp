// SPDX-License-Identifier: MIT
//
// An update set, or the answer of a property method, into caches that are filled already. Whatever
// it is, links agree on both sides; and once it was applied, applying it again changes nothing: the
// second time neither an object nor a field if all that it does is to enter objects and to assign,
// the third time not a link either. Where no markup repeats, so that none can be recognised as that
// of the object before, the same is cached.
#include <algorithm>

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

std::size_t CountOf(const std::string& text, const char* part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

// Every object is entered and every change assigns. Of other sets the second application may well
// change more: what modifies an object that is entered further down does something only then.
bool IsFull(const std::string& text) {
  return CountOf(text, "<objectSet") == CountOf(text, "<objectSet><kind>enter</kind>") &&
         CountOf(text, "<op>") == CountOf(text, "<op>assign</op>") &&
         CountOf(text, "<op") == CountOf(text, "<op>");
}

// The dump without the links of each object: one to an object that the same text enters further
// down is made by the second application.
std::string WithoutLinks(const std::string& dump) {
  std::string text;
  for (std::size_t at = 0, end; at < dump.size(); at = end + 1) {
    end = dump.find('\n', at);
    std::string line = dump.substr(at, end - at);
    for (const char* link : {" host=", " machines=", " privileges=", " identities=", " roles="}) {
      line.resize(std::min(line.size(), line.find(link)));
    }
    text += line + '\n';
  }
  return text;
}

// The same with a number in each tag that begins what is repeated, so that no two are the same.
// Sections and comments stay as they are, and with them all of the text.
std::string WithoutRepetition(const std::string& text) {
  if (text.find("<!") != std::string::npos) return text;
  std::string varied = text;
  for (const std::string tag : {"<changeSet", "<kind", "<version"}) {
    std::size_t number = 0;
    for (std::size_t at = 0; (at = varied.find(tag + '>', at)) != std::string::npos;) {
      at += tag.size();
      varied.insert(at, ' ' + std::to_string(number++));
    }
  }
  return varied;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).Rest();
  Target target;
  const std::string first = target.Apply(text);
  FUZZ_CHECK(Target().Apply(WithoutRepetition(text)) == first);
  const std::string settled = target.Apply(text);
  if (IsFull(text)) FUZZ_CHECK(WithoutLinks(settled) == WithoutLinks(first));
  FUZZ_CHECK(target.Apply(text) == settled);
  return 0;
}
