// SPDX-License-Identifier: MIT
//
// Any bytes as the instance that a client creates beside a filter and a destination. Nothing
// crashes, what is created can be changed to itself, and the file that keeps it gives it back.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "tools/agent/Errors.h"
#include "tools/agent/indications/Entries.h"

namespace {

using namespace tools::agent;

Parameter ReadInstance(const std::string& instance) {
  return ParseRequest(
             "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
             "<SIMPLEREQ><IMETHODCALL NAME=\"CreateInstance\"><LOCALNAMESPACEPATH>"
             "<NAMESPACE NAME=\"interop\"/></LOCALNAMESPACEPATH><IPARAMVALUE "
             "NAME=\"NewInstance\">" +
             instance + "</IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>")
      .parameters.at(0);
}

std::string Property(const char* name, const char* value) {
  return std::string("<PROPERTY NAME=\"") + name + "\" TYPE=\"string\"><VALUE>" + value +
         "</VALUE></PROPERTY>";
}

class Fresh {
 public:
  Fresh() { policy.hosts = AllowedHosts("listener.example,10.0.0.0/8"); }

  Stored Create(const std::string& instance) {
    const Parameter given = ReadInstance(instance);
    const tools::ClassRow* type = tools::FindClass(given.value, tools::INTEROP);
    return type ? entries.Create(*type, given.properties) : nullptr;
  }

  DeliveryPolicy policy;
  DeliveryCounters counters;
  Stored service =
      std::make_shared<const StoredInstance>(*tools::FindClass("CIM_IndicationService"));
  Entries entries{"host.example", service, policy, counters};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fresh first;
  first.Create("<INSTANCE CLASSNAME=\"CIM_IndicationFilter\">" + Property("Name", "f") +
               Property("QueryLanguage", "WQL") + Property("SourceNamespace", "root/cimv2") +
               Property("Query", "SELECT * FROM CIM_InstCreation") + "</INSTANCE>");
  first.Create("<INSTANCE CLASSNAME=\"CIM_ListenerDestinationCIMXML\">" + Property("Name", "d") +
               Property("Destination", "http://10.0.0.1/") + "</INSTANCE>");
  try {
    const Stored made = first.Create({reinterpret_cast<const char*>(data), size});
    if (!made) return 0;
    first.entries.Modify(made, PropertiesGiven(*made), {});
  } catch (const MessageError&) {
    return 0;
  } catch (const OperationError&) {
    return 0;
  } catch (const std::out_of_range&) {
    return 0;  // the bytes have ended the parameter
  }
  const std::string text = WriteState(first.entries.Kept());
  Fresh second;
  second.entries.Restore(ReadState(text));
  if (WriteState(second.entries.Kept()) != text) std::abort();
  return 0;
}
