// SPDX-License-Identifier: MIT
//
// libxml2 by its pull interface, xmlTextReader.
#include <libxml/xmlreader.h>

#include <stdexcept>

#include "benchmarks/SetEvents.h"
#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

using Reader = std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)>;

std::string_view View(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

void Tell(SetEvents& events, xmlTextReader* reader) {
  const std::string_view name = View(xmlTextReaderConstLocalName(reader));
  switch (xmlTextReaderNodeType(reader)) {
    case XML_READER_TYPE_ELEMENT: {
      const bool empty = xmlTextReaderIsEmptyElement(reader) == 1;
      std::string_view type;
      if (SetEvents::WantsType(name) &&
          xmlTextReaderMoveToAttribute(reader, BAD_CAST "type") == 1) {
        type = View(xmlTextReaderConstValue(reader));
      }
      events.Start(name, type);
      if (empty) events.End(name);
      break;
    }
    case XML_READER_TYPE_TEXT:
    case XML_READER_TYPE_CDATA:
      events.Text(View(xmlTextReaderConstValue(reader)));
      break;
    case XML_READER_TYPE_END_ELEMENT:
      events.End(name);
      break;
    default:
      break;
  }
}

class LibxmlReaderContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    const Reader reader(xmlReaderForMemory(text.characters.get(), static_cast<int>(text.length),
                                           nullptr, nullptr, XML_PARSE_HUGE | XML_PARSE_NOERROR),
                        xmlFreeTextReader);
    SetEvents events(store);
    int read = 0;
    while ((read = xmlTextReaderRead(reader.get())) == 1) Tell(events, reader.get());
    if (read != 0) throw std::runtime_error("xmlTextReader refuses the document");
  }
};

}  // namespace

std::unique_ptr<Contender> MakeLibxmlReaderContender() {
  return std::make_unique<LibxmlReaderContender>();
}

}  // namespace bench
