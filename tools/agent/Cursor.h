// SPDX-License-Identifier: MIT
//
// The objects or links that a request asks for, given a portion at a time, with any time in
// between. What a cursor keeps between two portions is little: its place among all objects of a
// class, or the keys of what one object is linked to. Objects are copied when their portion is
// written; one that has gone by then is left out.
//
// Thread safety: one thread at a time. Nothing here refers to the request.
#ifndef KECPP_TOOLS_AGENT_CURSOR_H
#define KECPP_TOOLS_AGENT_CURSOR_H

#include <kecpp/inventory.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/agent/Element.h"
#include "tools/agent/XmlWriter.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// The library's locks are held while so many objects are copied.
constexpr std::size_t MOST_AT_ONCE = 256;

class Cursor {
 public:
  virtual ~Cursor() = default;

  // `inventory` is null for a cursor that reads none. Writes the next objects, at most `most`,
  // which is not 0, and gives their number. It may be smaller, also 0, before the end. O(portion).
  virtual std::size_t Write(const kecpp::Inventory* inventory, std::size_t most,
                            XmlWriter& out) = 0;

  // Whether nothing is left to write.
  virtual bool AtEnd() const = 0;

  // The memory that it takes.
  virtual std::size_t Bytes() const = 0;
};

using Cursors = std::vector<std::unique_ptr<Cursor>>;

// One after the other.
std::unique_ptr<Cursor> InSequence(Cursors cursors);

// Whether an object is wanted. It is asked under the library's locks.
using Wanted = std::function<bool(const ObjectView& object)>;

// Every object of a class, or every wanted one, by an element whose rows are the key and these
// properties.
std::unique_ptr<Cursor> ObjectsOf(const ClassRow& type,
                                  const std::vector<ClassProperty>& properties, Element element,
                                  Wanted wanted = nullptr);

// The object of that key, a raw text, when there is one and it is wanted.
std::unique_ptr<Cursor> ObjectOf(const ClassRow& type, const std::vector<ClassProperty>& properties,
                                 Element element, std::string key, Wanted wanted);

// Every link of a concrete association class, by an element for links.
std::unique_ptr<Cursor> LinksOf(const ClassRow& assocClass, Element element);

// The objects of a class that have these keys, or those of them that are wanted: XML texts, each
// followed by a NUL. Without properties and a condition they are not looked up.
std::unique_ptr<Cursor> ObjectsWithKeys(const ClassRow& type,
                                        const std::vector<ClassProperty>& properties,
                                        std::string keys, Element element, Wanted wanted = nullptr);

// The links of one object, whose key is `own`, with these partners: keys as above.
std::unique_ptr<Cursor> LinksWithPartners(std::string own, bool isOrigin, std::string partners,
                                          Element element);

}  // namespace tools::agent

#endif
