// SPDX-License-Identifier: MIT
//
// A property list, an element a line, made into the request of a filter: well-formed, or refused.
#include "datasync/FilterSpec.h"
#include "foundation/KEException.h"
#include "fuzz/Fuzz.h"
#include "stub/classes/ManagedObjectReference.h"
#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"

namespace {

using KELib::KEString;

// Throws where an element is not closed by its own end tag.
void WalkAll(KEString& xml) {
  KELib::Xml::KEXmlReader reader(xml, false, 0);
  KELib::Xml::KEXmlCursor cursor(reader);
  KELib::Xml::XmlSlice name;
  unsigned int elements = 0;
  while (cursor.NextChild(name)) {
    cursor.SkipElement(name);
    ++elements;
  }
  FUZZ_CHECK(cursor.AtEnd());
  FUZZ_CHECK(elements == 1);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  KELib::KEVector<KEString> list;
  bool plain = true;  // names come from the agent, as XML text
  while (!input.Empty()) {
    const std::string element = input.Until('\n');
    plain = plain && element.find_first_of("<>&") == std::string::npos;
    list.Add(KEString(element.c_str()));
  }
  KEString type("Folder"), value("group-d1");
  KE::Stub::ManagedObjectReference root;
  root.type = type;
  root.value = value;
  KELib::Xml::KEXmlBuffer xml;
  try {
    KE::Service::CreateFilterSpec(&root, list, xml);
  } catch (const KELib::SystemException&) {
    return 0;
  }
  KEString text(xml.Str());
  if (plain) WalkAll(text);
  return 0;
}
