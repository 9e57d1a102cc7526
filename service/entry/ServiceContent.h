// SPDX-License-Identifier: MIT
//
// Reads single elements out of the service content, wherever they are in it.
//
// The content is lent to a reader and handed back in every case, also when reading throws: without
// it the instance could neither create sessions nor answer for its references.
#ifndef KECPP_SERVICE_ENTRY_SERVICECONTENT_H
#define KECPP_SERVICE_ENTRY_SERVICECONTENT_H

#include <memory>

#include "foundation/KEString.h"
#include "stub/classes/ManagedObjectReference.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

class ServiceContent {
 public:
  explicit ServiceContent(KELib::KEString& content);
  ~ServiceContent();
  ServiceContent(const ServiceContent&) = delete;
  ServiceContent& operator=(const ServiceContent&) = delete;

  // The reference in the element `name`. Throws XmlException when there is none.
  std::unique_ptr<KE::Stub::ManagedObjectReference> Reference(const char* name);

  // The text of the element `name`; empty when there is none.
  void Text(const char* name, KELib::KEString& out);

 private:
  bool Find(const char* name);

  KELib::KEString& content;
  KELib::Xml::KEXmlReader reader;
};

}  // namespace KE::Service

#endif
