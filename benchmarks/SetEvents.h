// SPDX-License-Identifier: MIT
//
// An update set as a stream of events, for the components that report start tags, texts and end
// tags: remembers where it is and calls the store.
#ifndef KECPP_BENCHMARKS_SETEVENTS_H
#define KECPP_BENCHMARKS_SETEVENTS_H

#include <optional>
#include <string>
#include <string_view>

#include "benchmarks/Document.h"
#include "benchmarks/Store.h"

namespace bench {

class SetEvents {
 public:
  explicit SetEvents(Store& target) : store(target) {}

  // True for the element whose attribute "type" Start wants.
  static bool WantsType(std::string_view element) { return element == "obj"; }

  void Start(std::string_view element, std::string_view type) {
    text.clear();
    if (inValue) {
      hasItems = true;
    } else if (element == "val") {
      inValue = true;
      hasItems = false;
    } else if (WantsType(element)) {
      objectType.assign(type);
    }
  }

  void Text(std::string_view piece) { text.append(piece); }

  void End(std::string_view element) {
    if (element == "val") {
      if (!hasItems && object) object->Set(property, text);
      inValue = false;
    } else if (inValue) {
      if (object) object->AddMachine(text);
    } else if (element == "name") {
      property.swap(text);
    } else if (element == "obj") {
      if (watched) object.emplace(store, objectType, text);
    } else if (element == "objectSet") {
      object.reset();
    } else if (element == "filter") {
      watched = text == kFilter;
    }
    text.clear();
  }

 private:
  Store& store;
  std::optional<Store::Object> object;
  std::string text, property, objectType;
  bool watched = false;
  bool inValue = false;
  bool hasItems = false;
};

}  // namespace bench

#endif
