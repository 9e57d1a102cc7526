// SPDX-License-Identifier: MIT
//
// libxml2 by its SAX2 interface.
#include <libxml/parser.h>

#include <cstring>
#include <stdexcept>

#include "benchmarks/SetEvents.h"
#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

std::string_view View(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

// An attribute is five pointers: name, prefix, namespace, begin and end of the value.
void Start(void* events, const xmlChar* name, const xmlChar*, const xmlChar*, int, const xmlChar**,
           int attributes, int, const xmlChar** attribute) {
  std::string_view type;
  const std::string_view element = View(name);
  for (int i = 0; SetEvents::WantsType(element) && i < attributes; ++i, attribute += 5) {
    if (attribute[1] != nullptr || View(attribute[0]) != "type") continue;
    type = {reinterpret_cast<const char*>(attribute[3]),
            static_cast<std::size_t>(attribute[4] - attribute[3])};
  }
  static_cast<SetEvents*>(events)->Start(element, type);
}

void End(void* events, const xmlChar* name, const xmlChar*, const xmlChar*) {
  static_cast<SetEvents*>(events)->End(View(name));
}

void Characters(void* events, const xmlChar* text, int length) {
  static_cast<SetEvents*>(events)->Text(
      {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
}

class LibxmlSaxContender final : public StoreContender {
 public:
  LibxmlSaxContender() {
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = Start;
    handler.endElementNs = End;
    handler.characters = Characters;
  }

  void Apply(Text text) override {
    SetEvents events(store);
    if (xmlSAXUserParseMemory(&handler, &events, text.characters.get(),
                              static_cast<int>(text.length)) != 0) {
      throw std::runtime_error("libxml2 refuses the document");
    }
  }

 private:
  xmlSAXHandler handler{};
};

}  // namespace

std::unique_ptr<Contender> MakeLibxmlSaxContender() {
  return std::make_unique<LibxmlSaxContender>();
}

}  // namespace bench
