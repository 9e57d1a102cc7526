// SPDX-License-Identifier: MIT
//
// The properties of one kind of object, found by their paths. A table is made when the library is
// compiled, of an array of rows: `TableOf<kRows>()`. Paths may have any length, and the same one.
//
// Thread safety: constant.
#ifndef KECPP_DATASYNC_PROPERTYTABLE_H
#define KECPP_DATASYNC_PROPERTYTABLE_H

#include <cstddef>
#include <iterator>
#include <string_view>

#include "datasync/ObjectCaches.h"
#include "foundation/KEString.h"
#include "stub/base/KEStubBase.h"
#include "xml/FixedText.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

struct Property {
  // All are called with a stub of the kind that the table belongs to.
  using Apply = void (*)(KELib::Stub::KEStubBase& stub, const KELib::Xml::XmlSlice& value,
                         ObjectCaches& caches);
  using Begin = void (*)(KELib::Stub::KEStubBase& stub);
  using Differs = bool (*)(const KELib::Stub::KEStubBase& stub, const KELib::Xml::XmlSlice& value);

  std::string_view path;
  KELib::KEString KELib::Stub::KEStubBase::*field;  // where the value is kept as it is; else null
  Apply apply;                                      // what else is done with a value
  bool isList;                                      // values may be lists: each item is applied
  Begin beginList;                                  // before the first item; null: nothing
  Differs differs;  // whether `apply` changes the stub; null: links alone, which the feeds are told

  void Put(KELib::Stub::KEStubBase& stub, const KELib::Xml::XmlSlice& value,
           ObjectCaches& caches) const {
    if (field != nullptr) {
      value.CopyTo(stub.*field);
    } else {
      apply(stub, value, caches);
    }
  }

  // Whether the stub will be another one, links aside.
  bool Changes(const KELib::Stub::KEStubBase& stub, const KELib::Xml::XmlSlice& value) const {
    if (field != nullptr) return !Holds(stub.*field, value);
    return differs != nullptr && differs(stub, value);
  }

  static bool Holds(const KELib::KEString& text, const KELib::Xml::XmlSlice& value) {
    return std::string_view(text.Cstr()) == std::string_view(value.text, value.length);
  }
};

// The rows of a table: a text that is kept as it is; a value that `apply` puts into the stub; a
// list of references, or a single one.
template <typename Stub>
constexpr Property Text(std::string_view path, KELib::KEString Stub::*field) {
  return {path,    static_cast<KELib::KEString KELib::Stub::KEStubBase::*>(field),
          nullptr, false,
          nullptr, nullptr};
}
constexpr Property Value(std::string_view path, Property::Apply apply,
                         Property::Differs differs = nullptr) {
  return {path, nullptr, apply, false, nullptr, differs};
}
constexpr Property References(std::string_view path, Property::Apply apply,
                              Property::Begin beginList = nullptr) {
  return {path, nullptr, apply, true, beginList, nullptr};
}

// Chains the rows whose paths have the same length.
template <std::size_t kRowCount, std::size_t kLongest>
struct PathIndex {
  static constexpr unsigned char kNone = 255;
  static_assert(kRowCount < kNone, "a row's position is one byte");

  constexpr explicit PathIndex(const Property (&rows)[kRowCount]) {
    for (unsigned char& place : first) place = kNone;
    for (std::size_t i = kRowCount; i-- > 0;) {
      next[i] = first[rows[i].path.size()];
      first[rows[i].path.size()] = static_cast<unsigned char>(i);
    }
  }

  unsigned char first[kLongest + 1] = {};  // by length
  unsigned char next[kRowCount] = {};
};

class PropertyTable {
 public:
  constexpr PropertyTable(const Property* properties, const unsigned char* firstOfLength,
                          const unsigned char* nextOfLength, std::size_t longestPath)
      : rows(properties), first(firstOfLength), next(nextOfLength), longest(longestPath) {}

  // Null when there is no property of that path. Compares with the paths of the same length only.
  const Property* Find(const KELib::Xml::XmlSlice& path) const {
    if (path.length > longest) return nullptr;
    for (unsigned char i = first[path.length]; i != kNone; i = next[i]) {
      if (KELib::Xml::SameText(path.text, rows[i].path.data(), path.length)) return &rows[i];
    }
    return nullptr;
  }

 private:
  static constexpr unsigned char kNone = PathIndex<1, 0>::kNone;

  const Property* rows;
  const unsigned char* first;
  const unsigned char* next;
  std::size_t longest;
};

template <std::size_t kRowCount>
constexpr std::size_t LongestPath(const Property (&rows)[kRowCount]) {
  std::size_t longest = 0;
  for (const Property& row : rows) longest = row.path.size() > longest ? row.path.size() : longest;
  return longest;
}

template <std::size_t kRowCount>
constexpr bool PathsDiffer(const Property (&rows)[kRowCount]) {
  for (std::size_t i = 0; i < kRowCount; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (rows[i].path == rows[j].path) return false;
    }
  }
  return true;
}

template <const auto& kRows>
inline constexpr PathIndex<std::size(kRows), LongestPath(kRows)> kPathIndex{kRows};

template <const auto& kRows>
constexpr PropertyTable TableOf() {
  static_assert(PathsDiffer(kRows), "a path is in the table twice: the second row is never found");
  return {kRows, kPathIndex<kRows>.first, kPathIndex<kRows>.next, LongestPath(kRows)};
}

}  // namespace KE::Service

#endif
