// SPDX-License-Identifier: MIT
//
// RapidXML, in its fastest mode, in which values are taken by their lengths and keep their
// entities, as the library's do; and in situ, where it ends values by NULs and decodes their
// entities.
#include <cstring>
#include <rapidxml/rapidxml.hpp>
#include <stdexcept>
#include <utility>

#include "benchmarks/StoreContender.h"

namespace bench {

namespace {

using Node = rapidxml::xml_node<>;

std::string_view Name(const Node& node) {
  return {node.name(), node.name_size()};
}

std::string_view Value(const rapidxml::xml_base<>& base) {
  return {base.value(), base.value_size()};
}

std::string_view TypeOf(const Node& node) {
  for (auto* a = node.first_attribute(); a != nullptr; a = a->next_attribute()) {
    if (std::string_view(a->name(), a->name_size()) == "type") return Value(*a);
  }
  return {};
}

void ApplyChange(Store::Object& object, const Node& change) {
  std::string_view property;
  for (const Node* part = change.first_node(); part != nullptr; part = part->next_sibling()) {
    if (Name(*part) == "name") {
      property = Value(*part);
    } else if (Name(*part) == "val") {
      const Node* item = part->first_node();
      if (item == nullptr) object.Set(property, Value(*part));
      for (; item != nullptr; item = item->next_sibling()) object.AddMachine(Value(*item));
    }
  }
}

void ApplyObject(Store& store, const Node& objectSet) {
  const Node* part = objectSet.first_node();
  while (part != nullptr && Name(*part) != "obj") part = part->next_sibling();
  if (part == nullptr) return;
  Store::Object object(store, TypeOf(*part), Value(*part));
  for (; part != nullptr; part = part->next_sibling()) {
    if (Name(*part) == "changeSet") ApplyChange(object, *part);
  }
}

template <int kFlags>
class RapidxmlContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    rapidxml::xml_document<> document;
    document.parse<kFlags>(text.characters.get());
    for (const Node* set = document.first_node()->first_node(); set != nullptr;
         set = set->next_sibling()) {
      if (Name(*set) != "filterSet") continue;
      const Node* part = set->first_node();
      if (part == nullptr || Value(*part) != kFilter) continue;
      for (; part != nullptr; part = part->next_sibling()) {
        if (Name(*part) == "objectSet") ApplyObject(store, *part);
      }
    }
  }
};

// The same parser fed one object set at a time: its nodes stay in the processor's caches. What is
// around the object sets is looked for as text, and taken for what servers mostly send.
class RapidxmlBySetContender final : public StoreContender {
 public:
  void Apply(Text text) override {
    constexpr std::string_view kOpen = "<objectSet>", kClose = "</objectSet>";
    char* at = text.characters.get();
    if (std::strstr(at, (std::string(">") + kFilter + "</filter>").c_str()) == nullptr) return;
    while ((at = std::strstr(at, kOpen.data())) != nullptr) {
      char* const end = std::strstr(at, kClose.data());
      if (end == nullptr) throw std::runtime_error("an object set without end");
      char* const behind = end + kClose.size();
      const char next = std::exchange(*behind, '\0');
      document.clear();
      document.parse<rapidxml::parse_fastest>(at);
      ApplyObject(store, *document.first_node());
      *behind = next;
      at = behind;
    }
  }

 private:
  rapidxml::xml_document<> document;
};

}  // namespace

std::unique_ptr<Contender> MakeRapidxmlBySetContender() {
  return std::make_unique<RapidxmlBySetContender>();
}

std::unique_ptr<Contender> MakeRapidxmlContender() {
  return std::make_unique<RapidxmlContender<rapidxml::parse_fastest>>();
}

std::unique_ptr<Contender> MakeRapidxmlInSituContender() {
  return std::make_unique<RapidxmlContender<rapidxml::parse_no_data_nodes>>();
}

}  // namespace bench
