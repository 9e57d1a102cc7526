// SPDX-License-Identifier: MIT
#include "tools/agent/StoredCursor.h"

#include <utility>

#include "tools/agent/StoredElements.h"

namespace tools::agent {
namespace {

class StoredCursor final : public Cursor {
 public:
  StoredCursor(std::vector<StoredChoice> chosen, StoredStyle writtenSo)
      : choices(std::move(chosen)), style(std::move(writtenSo)) {}

  std::size_t Write(const kecpp::Inventory*, std::size_t most, XmlWriter& out) override {
    const std::size_t begin = next;
    for (; next < choices.size() && next - begin < most; ++next) Put(choices[next], out);
    return next - begin;
  }
  bool AtEnd() const override { return next == choices.size(); }
  std::size_t Bytes() const override { return choices.size() * sizeof(StoredChoice); }

 private:
  void Put(const StoredChoice& choice, XmlWriter& out) const {
    StoredElements elements(out, style.host, style.nameSpace, style.origins);
    const StoredInstance& instance = *choice.instance;
    const auto within = [&](const char* element, auto write) {
      out.Open(element);
      write();
      out.Close(element);
    };
    const auto withPath = [&] {
      elements.Path(instance);
      elements.Instance(instance, choice.properties);
    };
    switch (style.shape) {
      case Shape::Instance:
        return elements.Instance(instance, choice.properties);
      case Shape::Name:
        return elements.Name(instance);
      case Shape::NamedInstance:
        return within("VALUE.NAMEDINSTANCE", [&] {
          elements.Name(instance);
          elements.Instance(instance, choice.properties);
        });
      case Shape::ObjectPath:
        return within("OBJECTPATH", [&] { elements.Path(instance); });
      case Shape::ObjectWithPath:
        return within("VALUE.OBJECTWITHPATH", withPath);
      case Shape::Path:
        return elements.Path(instance);
      case Shape::WithPath:
        return within("VALUE.INSTANCEWITHPATH", withPath);
    }
  }

  const std::vector<StoredChoice> choices;
  const StoredStyle style;
  std::size_t next = 0;
};

}  // namespace

std::unique_ptr<Cursor> StoredOnes(std::vector<StoredChoice> choices, StoredStyle style) {
  return std::make_unique<StoredCursor>(std::move(choices), std::move(style));
}

}  // namespace tools::agent
