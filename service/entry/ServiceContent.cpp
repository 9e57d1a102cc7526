// SPDX-License-Identifier: MIT
#include "service/entry/ServiceContent.h"

#include <cstring>

#include "instance/CacheConversion.h"
#include "xml/KEXmlCursor.h"
#include "xml/XmlException.h"

namespace KE::Service {

namespace XmlToken = KELib::Xml::XmlToken;

ServiceContent::ServiceContent(KELib::KEString& text) : content(text) {
  reader.SetInput(content, false);
}

ServiceContent::~ServiceContent() {
  reader.MoveContentTo(content);
}

// Looks from the beginning each time: nothing is assumed about the order of the elements.
bool ServiceContent::Find(const char* name) {
  reader.MoveTo(0, XmlToken::none);
  KELib::Xml::KEXmlCursor cursor(reader);
  const std::size_t length = std::strlen(name);
  KELib::Xml::XmlSlice found;
  for (;;) {
    if (cursor.NextChild(found)) {
      if (found.Is(name, length)) break;
      cursor.Enter();
    } else if (!cursor.PassEndTag(found)) {
      return false;
    }
  }
  reader.MoveTo(static_cast<unsigned int>(found.text + found.length - reader.Str()),
                XmlToken::elementName);
  return true;
}

std::unique_ptr<KE::Stub::ManagedObjectReference> ServiceContent::Reference(const char* name) {
  if (!Find(name)) {
    KELib::KEString text("Service content lacks the element : ");
    KELib::Xml::ThrowXmlException(text, name);
  }
  auto reference = std::make_unique<KE::Stub::ManagedObjectReference>();
  KE::Stub::ManagedObjectReference* target = reference.get();
  KE::Instance::ConvertManagedObjectReference(name, reader, target);
  return reference;
}

void ServiceContent::Text(const char* name, KELib::KEString& out) {
  out.Clear();
  if (Find(name)) reader.GetElementValue(name, out);
}

}  // namespace KE::Service
