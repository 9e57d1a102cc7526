// SPDX-License-Identifier: MIT
//
// expat, fed with the whole document at once.
#include <expat.h>

#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "benchmarks/SetEvents.h"
#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)>;

void Start(void* events, const char* name, const char** attributes) {
  const char* type = "";
  for (; SetEvents::WantsType(name) && *attributes != nullptr; attributes += 2) {
    if (std::strcmp(*attributes, "type") == 0) type = attributes[1];
  }
  static_cast<SetEvents*>(events)->Start(name, type);
}

void End(void* events, const char* name) {
  static_cast<SetEvents*>(events)->End(name);
}

void Characters(void* events, const char* text, int length) {
  static_cast<SetEvents*>(events)->Text({text, static_cast<std::size_t>(length)});
}

class ExpatContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    const Parser parser(XML_ParserCreate("UTF-8"), XML_ParserFree);
    SetEvents events(store);
    XML_SetUserData(parser.get(), &events);
    XML_SetElementHandler(parser.get(), Start, End);
    XML_SetCharacterDataHandler(parser.get(), Characters);
    if (XML_Parse(parser.get(), text.characters.get(), static_cast<int>(text.length), 1) !=
        XML_STATUS_OK) {
      throw std::runtime_error("expat refuses the document");
    }
  }
};

}  // namespace

std::unique_ptr<Contender> MakeExpatContender() {
  return std::make_unique<ExpatContender>();
}

}  // namespace bench
