// SPDX-License-Identifier: MIT
//
// pugixml, parsing in place, with the options that make it fastest here: values keep their
// entities, as the library's do, and a text is kept in its element's node.
#include <pugixml.hpp>
#include <stdexcept>

#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

// Children are walked, not looked up by name: each is met once, in the order of the document.
void ApplyChange(Store::Object& object, const pugi::xml_node& change) {
  std::string_view property;
  for (pugi::xml_node part = change.first_child(); part; part = part.next_sibling()) {
    const std::string_view name = part.name();
    if (name == "name") {
      property = part.value();
    } else if (name == "val") {
      pugi::xml_node item = part.first_child();
      if (!item) object.Set(property, part.value());
      for (; item; item = item.next_sibling()) object.AddMachine(item.value());
    }
  }
}

void ApplyObject(Store& store, const pugi::xml_node& objectSet) {
  pugi::xml_node part = objectSet.first_child();
  while (part && std::string_view(part.name()) != "obj") part = part.next_sibling();
  if (!part) return;
  Store::Object object(store, part.attribute("type").value(), part.value());
  for (; part; part = part.next_sibling()) {
    if (std::string_view(part.name()) == "changeSet") ApplyChange(object, part);
  }
}

class PugixmlContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    constexpr unsigned int kFlags = pugi::parse_minimal | pugi::parse_embed_pcdata;
    pugi::xml_document document;
    if (!document.load_buffer_inplace(text.characters.get(), text.length, kFlags)) {
      throw std::runtime_error("pugixml refuses the document");
    }
    for (pugi::xml_node set = document.first_child().first_child(); set; set = set.next_sibling()) {
      if (std::string_view(set.name()) != "filterSet") continue;
      pugi::xml_node part = set.first_child();
      if (!part || std::string_view(part.value()) != kFilter) continue;
      for (; part; part = part.next_sibling()) {
        if (std::string_view(part.name()) == "objectSet") ApplyObject(store, part);
      }
    }
  }
};

}  // namespace

std::unique_ptr<Contender> MakePugixmlContender() {
  return std::make_unique<PugixmlContender>();
}

}  // namespace bench
