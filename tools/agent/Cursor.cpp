// SPDX-License-Identifier: MIT
#include "tools/agent/Cursor.h"

#include <utility>

#include "tools/common/Split.h"

namespace tools::agent {
namespace {

std::size_t WriteRows(const Element& element, const Rows& rows, XmlWriter& out) {
  for (std::size_t row = 0; row < rows.Count(); ++row) element.Write(rows, row, out);
  return rows.Count();
}

// Texts, each followed by a NUL, of which the first ones were taken.
class Texts {
 public:
  explicit Texts(std::string all) : texts(std::move(all)) {}

  bool AtEnd() const { return begin == texts.size(); }
  std::string_view Take() {
    std::string_view rest = std::string_view(texts).substr(begin);
    const std::string_view text = TakePart(rest, '\0');
    begin = texts.size() - rest.size();
    return text;
  }
  std::size_t Bytes() const { return texts.capacity(); }

 private:
  std::string texts;
  std::size_t begin = 0;
};

class Sequence final : public Cursor {
 public:
  explicit Sequence(Cursors all) : cursors(std::move(all)) {}

  std::size_t Write(const kecpp::Inventory* inventory, std::size_t most, XmlWriter& out) override {
    return AtEnd() ? 0 : cursors[current]->Write(inventory, most, out);
  }
  bool AtEnd() const override {
    while (current < cursors.size() && cursors[current]->AtEnd()) ++current;
    return current == cursors.size();
  }
  std::size_t Bytes() const override {
    std::size_t bytes = 0;
    for (const auto& cursor : cursors) bytes += cursor->Bytes();
    return bytes;
  }

 private:
  const Cursors cursors;
  mutable std::size_t current = 0;  // those before it are at their end
};

// How the rows of a class's objects are filled.
class Reader {
 public:
  Reader(const ClassRow& type, const std::vector<ClassProperty>& properties)
      : reads{type.key->read} {
    for (const ClassProperty& property : properties) reads.push_back(property.row->read);
  }

  std::size_t Width() const { return reads.size(); }
  void Add(const ObjectView& object, Rows& rows) const {
    for (const ReadValue read : reads) rows.Put(read, object);
  }

 private:
  std::vector<ReadValue> reads;
};

class ObjectWalk final : public Cursor {
 public:
  ObjectWalk(const ClassRow& type, const std::vector<ClassProperty>& properties, Element prepared,
             Wanted whichAreWanted)
      : kind(*type.kind),
        reader(type, properties),
        element(std::move(prepared)),
        wanted(std::move(whichAreWanted)),
        rows(reader.Width()) {}

  std::size_t Write(const kecpp::Inventory* inventory, std::size_t most, XmlWriter& out) override {
    rows.Clear();
    more = ForNextView(*inventory, kind, walk, most, [this](const ObjectView& object) {
      if (!wanted || wanted(object)) reader.Add(object, rows);
    });
    return WriteRows(element, rows, out);
  }
  bool AtEnd() const override { return !more; }
  std::size_t Bytes() const override { return rows.Bytes(); }

 private:
  const kecpp::Kind kind;
  const Reader reader;
  const Element element;
  const Wanted wanted;
  kecpp::Walk walk;
  Rows rows;
  bool more = true;
};

class OneObject final : public Cursor {
 public:
  OneObject(const ClassRow& type, const std::vector<ClassProperty>& properties, Element prepared,
            std::string objectKey, Wanted isWanted)
      : kind(*type.kind),
        reader(type, properties),
        element(std::move(prepared)),
        key(std::move(objectKey)),
        wanted(std::move(isWanted)) {}

  std::size_t Write(const kecpp::Inventory* inventory, std::size_t, XmlWriter& out) override {
    Rows rows(reader.Width());
    more = false;
    LookAtView(*inventory, kind, key, [&](const ObjectView& object) {
      if (wanted(object)) reader.Add(object, rows);
    });
    return WriteRows(element, rows, out);
  }
  bool AtEnd() const override { return !more; }
  std::size_t Bytes() const override { return key.capacity(); }

 private:
  const kecpp::Kind kind;
  const Reader reader;
  const Element element;
  const std::string key;
  const Wanted wanted;
  bool more = true;
};

class KeyList final : public Cursor {
 public:
  KeyList(const ClassRow& type, const std::vector<ClassProperty>& properties, std::string all,
          Element prepared, Wanted whichAreWanted)
      : kind(*type.kind),
        reader(type, properties),
        element(std::move(prepared)),
        wanted(std::move(whichAreWanted)),
        keys(std::move(all)),
        rows(reader.Width()) {}

  std::size_t Write(const kecpp::Inventory* inventory, std::size_t most, XmlWriter& out) override {
    rows.Clear();
    for (std::size_t i = 0; i < most && !keys.AtEnd(); ++i) Add(*inventory, keys.Take());
    return WriteRows(element, rows, out);
  }
  bool AtEnd() const override { return keys.AtEnd(); }
  std::size_t Bytes() const override { return keys.Bytes() + rows.Bytes(); }

 private:
  void Add(const kecpp::Inventory& inventory, std::string_view key) {
    if (reader.Width() == 1 && !wanted) return rows.Put(key);
    LookAtView(inventory, kind, kecpp::Decode(key), [this](const ObjectView& object) {
      if (!wanted || wanted(object)) reader.Add(object, rows);
    });
  }

  const kecpp::Kind kind;
  const Reader reader;
  const Element element;
  const Wanted wanted;
  Texts keys;
  Rows rows;
};

// The links of one object.
class Fan {
 public:
  Fan(std::string ownKey, bool ownIsOrigin, std::string partnerKeys)
      : own(std::move(ownKey)), isOrigin(ownIsOrigin), partners(std::move(partnerKeys)) {}

  bool AtEnd() const { return partners.AtEnd(); }
  void Take(std::size_t most, Rows& rows) {
    for (std::size_t i = 0; i < most && !AtEnd(); ++i) {
      const std::string_view partner = partners.Take();
      rows.Put(isOrigin ? std::string_view(own) : partner);
      rows.Put(isOrigin ? partner : std::string_view(own));
    }
  }
  std::size_t Bytes() const { return own.capacity() + partners.Bytes(); }

 private:
  std::string own;
  bool isOrigin;
  Texts partners;
};

class LinkList final : public Cursor {
 public:
  LinkList(Fan links, Element prepared) : fan(std::move(links)), element(std::move(prepared)) {}

  std::size_t Write(const kecpp::Inventory*, std::size_t most, XmlWriter& out) override {
    rows.Clear();
    fan.Take(most, rows);
    return WriteRows(element, rows, out);
  }
  bool AtEnd() const override { return fan.AtEnd(); }
  std::size_t Bytes() const override { return fan.Bytes() + rows.Bytes(); }

 private:
  Fan fan;
  const Element element;
  Rows rows{2};
};

// One origin after the other: each may have very many links.
class LinkWalk final : public Cursor {
 public:
  LinkWalk(const ClassRow& assocClass, Element prepared)
      : origin(OriginOf(assocClass)), results(assocClass.results), element(std::move(prepared)) {}

  std::size_t Write(const kecpp::Inventory* inventory, std::size_t most, XmlWriter& out) override {
    rows.Clear();
    while (rows.Count() < most && !AtEnd()) {
      if (fan.AtEnd()) ReadFan(*inventory);
      fan.Take(most - rows.Count(), rows);
    }
    return WriteRows(element, rows, out);
  }
  bool AtEnd() const override { return !more && fan.AtEnd(); }
  std::size_t Bytes() const override { return fan.Bytes() + rows.Bytes(); }

 private:
  void ReadFan(const kecpp::Inventory& inventory) {
    std::string own, partners;
    more = ForNextView(inventory, *origin.kind, walk, 1, [&](const ObjectView& object) {
      origin.key->read(object, own);
      results(object, partners);
    });
    fan = Fan(std::move(own), true, std::move(partners));
  }

  const ClassRow& origin;
  const ReadValue results;
  const Element element;
  kecpp::Walk walk;
  Fan fan{"", true, ""};
  Rows rows{2};
  bool more = true;
};

}  // namespace

std::unique_ptr<Cursor> InSequence(Cursors cursors) {
  return std::make_unique<Sequence>(std::move(cursors));
}

std::unique_ptr<Cursor> ObjectsOf(const ClassRow& type,
                                  const std::vector<ClassProperty>& properties, Element element,
                                  Wanted wanted) {
  return std::make_unique<ObjectWalk>(type, properties, std::move(element), std::move(wanted));
}

std::unique_ptr<Cursor> ObjectOf(const ClassRow& type, const std::vector<ClassProperty>& properties,
                                 Element element, std::string key, Wanted wanted) {
  return std::make_unique<OneObject>(type, properties, std::move(element), std::move(key),
                                     std::move(wanted));
}

std::unique_ptr<Cursor> LinksOf(const ClassRow& assocClass, Element element) {
  return std::make_unique<LinkWalk>(assocClass, std::move(element));
}

std::unique_ptr<Cursor> ObjectsWithKeys(const ClassRow& type,
                                        const std::vector<ClassProperty>& properties,
                                        std::string keys, Element element, Wanted wanted) {
  return std::make_unique<KeyList>(type, properties, std::move(keys), std::move(element),
                                   std::move(wanted));
}

std::unique_ptr<Cursor> LinksWithPartners(std::string own, bool isOrigin, std::string partners,
                                          Element element) {
  return std::make_unique<LinkList>(Fan(std::move(own), isOrigin, std::move(partners)),
                                    std::move(element));
}

}  // namespace tools::agent
