// SPDX-License-Identifier: MIT
//
// pugixml, parsing in place, with the options that make it fastest here: values keep their
// entities, as the library's do.
#include <pugixml.hpp>
#include <stdexcept>

#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

void ApplyChange(Store::Object& object, const pugi::xml_node& change) {
  const std::string_view name = change.child_value("name");
  const pugi::xml_node val = change.child("val");
  const pugi::xml_node first = val.first_child();
  if (first.type() == pugi::node_element) {
    for (const pugi::xml_node& item : val.children()) object.AddMachine(item.child_value());
  } else {
    object.Set(name, first.value());
  }
}

class PugixmlContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    pugi::xml_document document;
    if (!document.load_buffer_inplace(text.characters.get(), text.length, pugi::parse_minimal)) {
      throw std::runtime_error("pugixml refuses the document");
    }
    for (const pugi::xml_node& filterSet : document.child("returnval").children("filterSet")) {
      if (std::string_view(filterSet.child_value("filter")) != kFilter) continue;
      for (const pugi::xml_node& objectSet : filterSet.children("objectSet")) {
        const pugi::xml_node reference = objectSet.child("obj");
        Store::Object object(store, reference.attribute("type").value(), reference.child_value());
        for (const pugi::xml_node& change : objectSet.children("changeSet")) {
          ApplyChange(object, change);
        }
      }
    }
  }
};

}  // namespace

std::unique_ptr<Contender> MakePugixmlContender() {
  return std::make_unique<PugixmlContender>();
}

}  // namespace bench
