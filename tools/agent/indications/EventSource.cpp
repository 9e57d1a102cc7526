// SPDX-License-Identifier: MIT
#include "tools/agent/indications/EventSource.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/agent/XmlWriter.h"
#include "tools/common/Split.h"

namespace tools::agent {
namespace {

using ChangeType = kecpp::Change::Type;

constexpr std::size_t PORTION = 256;  // objects that are read under one lock

// The columns of an object's row: its key, then its properties.
std::vector<ReadValue> Columns(const ClassRow& type) {
  std::vector<ReadValue> reads = {type.key->read};
  for (const ClassProperty& property : PropertiesOf(type)) reads.push_back(property.row->read);
  return reads;
}

std::size_t WidthOf(const ClassRow& type) {
  return PropertiesOf(type).size() + 1;
}

// The key of an object at the result of a link, and its partners' keys, each followed by a NUL.
std::string LinksOf(const ClassRow& linkClass, const ObjectView& object) {
  std::string keys;
  ResultOf(linkClass).key->read(object, keys);
  keys += '\0';
  linkClass.origins(object, keys);
  return keys;
}

std::vector<std::string_view> Sorted(std::string_view links) {
  auto keys = Split(links, '\0');
  if (!keys.empty()) keys.erase(keys.begin());
  std::sort(keys.begin(), keys.end());
  return keys;
}

// What is in the first one and not in the second.
std::vector<std::string_view> Without(const std::vector<std::string_view>& first,
                                      const std::vector<std::string_view>& second) {
  std::vector<std::string_view> rest;
  std::set_difference(first.begin(), first.end(), second.begin(), second.end(),
                      std::back_inserter(rest));
  return rest;
}

// All that is known of an object of which there is no copy.
Rows KeyRow(const ClassRow& type, const std::string& key) {
  XmlWriter encoded;
  encoded.Text(key);
  Rows row(WidthOf(type));
  row.Put(encoded.Written());
  for (const ClassProperty& property : PropertiesOf(type)) {
    if (SameName(property.row->name, CREATION_CLASS_NAME)) {
      row.Put(type.name);
    } else if (SameName(property.row->name, type.key->name)) {
      row.Put(encoded.Written());
    } else {
      row.PutNull();
    }
  }
  return row;
}

Rows RowOf(const ClassRow& type, const std::string& copy) {
  Rows row(WidthOf(type));
  Unpack(copy, row);
  return row;
}

}  // namespace

EventSource::EventSource(const kecpp::Inventory& watched, std::string hostName)
    : inventory(watched), host(std::move(hostName)) {}

void EventSource::Reset() {
  plan = std::make_shared<const Plan>();
  copies.clear();
  untold.clear();
}

void EventSource::Use(std::shared_ptr<const Plan> next) {
  for (const ClassRow* source : EventSources()) {
    if (!next->NeedsCopies(*source)) {
      copies.erase(source);
    } else if (copies.count(source) == 0) {
      Fill(*source);
    }
  }
  plan = std::move(next);
}

void EventSource::Fill(const ClassRow& source) {
  LastCopies& filled = copies[&source];
  const ClassRow& type = source.isAssociation ? ResultOf(source) : source;
  const auto columns = Columns(type);
  Rows rows(columns.size());
  std::vector<std::string> links;
  kecpp::Walk walk;
  for (bool more = true; more;) {
    rows.Clear();
    links.clear();
    more = ForNextView(inventory, *type.kind, walk, PORTION, [&](const ObjectView& object) {
      if (source.isAssociation) {
        links.push_back(LinksOf(source, object));
      } else {
        for (const ReadValue read : columns) rows.Put(read, object);
      }
    });
    for (std::size_t row = 0; row < rows.Count(); ++row) {
      filled.Add(kecpp::Decode(*rows.At(row, 0)), Pack(rows, row, columns.size()));
    }
    for (std::string& keys : links) {
      filled.Add(kecpp::Decode(std::string_view(keys).substr(0, keys.find('\0'))), std::move(keys));
    }
  }
}

// Links are looked at from their result's side only: each has one, and a change of a link is a
// change of both ends.
EventSource::LinkClasses EventSource::WantedLinks(const ClassRow& type) const {
  LinkClasses wanted;
  for (const ClassRow* source : EventSources()) {
    const bool isOfType = source->isAssociation && &ResultOf(*source) == &type;
    if (isOfType && !plan->WishesFor(*source).empty()) wanted.push_back(source);
  }
  return wanted;
}

bool EventSource::Look(const ClassRow& type, const std::string& key, const LinkClasses& linkClasses,
                       Seen& seen) const {
  return LookAtView(inventory, *type.kind, key, [&](const ObjectView& object) {
    for (const ReadValue read : Columns(type)) seen.row.Put(read, object);
    for (const ClassRow* link : linkClasses) seen.links.push_back(LinksOf(*link, object));
  });
}

void EventSource::Take(const kecpp::Change& change) {
  const ClassRow& type = ClassOf(change.kind);
  const LinkClasses linkClasses = WantedLinks(type);
  const bool isWanted = !plan->WishesFor(type).empty();
  if (!isWanted && linkClasses.empty()) return;
  if (change.type == ChangeType::removed) {
    for (const ClassRow* link : linkClasses) TakeLinks(*link, change, nullptr);
    if (untold.erase({change.kind, change.key}) == 0 && isWanted) TakeRemoval(type, change.key);
    return;
  }
  Seen seen{Rows(WidthOf(type)), {}};
  if (!Look(type, change.key, linkClasses, seen)) {  // its removal comes
    if (change.type == ChangeType::added) untold.emplace(change.kind, change.key);
    return;
  }
  if (isWanted) TakeObject(type, change, seen);
  for (std::size_t i = 0; i < linkClasses.size(); ++i) {
    TakeLinks(*linkClasses[i], change, &seen.links[i]);
  }
}

void EventSource::TakeObject(const ClassRow& type, const kecpp::Change& change, const Seen& now) {
  const bool isNew =
      untold.erase({change.kind, change.key}) > 0 || change.type == ChangeType::added;
  const auto known = copies.find(&type);
  std::optional<std::string> former;
  if (known != copies.end()) {
    const std::string copy = Pack(now.row, 0, WidthOf(type));
    former = known->second.Replace(change.key, copy);
    if (!isNew && former == copy) return;
  }
  if (isNew) return Tell({EventType::Creation, &type, &now.row});
  if (known == copies.end()) return;
  const Rows before = RowOf(type, former.value_or(""));
  Tell({EventType::Modification, &type, &now.row, former ? &before : nullptr});
}

void EventSource::TakeRemoval(const ClassRow& type, const std::string& key) {
  const auto known = copies.find(&type);
  const auto former = known == copies.end() ? std::nullopt : known->second.Remove(key);
  const Rows row = former ? RowOf(type, *former) : KeyRow(type, key);
  Tell({EventType::Deletion, &type, &row});
}

// `now` is null for an object that has gone.
void EventSource::TakeLinks(const ClassRow& linkClass, const kecpp::Change& change,
                            const std::string* now) {
  LastCopies& known = copies[&linkClass];
  const std::string former =
      (now ? known.Replace(change.key, *now) : known.Remove(change.key)).value_or("");
  const std::string& named = now ? *now : former;
  const auto own = std::string_view(named).substr(0, named.find('\0'));
  const auto partners = Sorted(now ? std::string_view(*now) : std::string_view());
  const auto formerPartners = Sorted(former);
  TellLinks(linkClass, EventType::Deletion, own, Without(formerPartners, partners));
  TellLinks(linkClass, EventType::Creation, own, Without(partners, formerPartners));
}

void EventSource::TellLinks(const ClassRow& linkClass, EventType type, std::string_view own,
                            const std::vector<std::string_view>& partners) const {
  for (const std::string_view partner : partners) {
    Rows row(2);
    row.Put(partner);
    row.Put(own);
    Tell({type, &linkClass, &row});
  }
}

void EventSource::Tell(const Event& event) const {
  std::shared_ptr<const EventText> text;
  for (const Plan::Wish& wish : plan->WishesFor(*event.source)) {
    if (!wish.filter->Passes(event)) continue;
    if (!text) text = WriteEvent(event, host);
    wish.delivery->Offer(text, wish.filterName);
  }
}

}  // namespace tools::agent
