// SPDX-License-Identifier: MIT
#include "tools/agent/Content.h"

#include <algorithm>
#include <utility>

namespace tools::agent {
namespace {

constexpr std::size_t FIRST_OBJECTS = 32;
constexpr std::size_t WANTED_BYTES = 65536;

// How many objects the next piece takes, after one of `objects` that had so many bytes: so that a
// few objects with huge texts do not make a huge piece.
std::size_t NextObjects(std::size_t objects, std::size_t bytes) {
  if (bytes == 0) return objects;
  return std::clamp<std::size_t>(objects * WANTED_BYTES / bytes, 1, MOST_AT_ONCE);
}

}  // namespace

Content::Content(std::unique_ptr<Cursor> objectCursor, const InventoryGate::Visit& inventoryVisit)
    : cursor(std::move(objectCursor)), visit(inventoryVisit), objects(FIRST_OBJECTS) {}

Content::Content(std::unique_ptr<Cursor> storedCursor)
    : cursor(std::move(storedCursor)), objects(FIRST_OBJECTS) {}

bool Content::WriteNext(XmlWriter& out) {
  if (!cursor) {
    whole(out);
    return false;
  }
  const std::size_t before = out.Written().size();
  const std::size_t written = cursor->Write(visit ? &visit->Inventory() : nullptr, objects, out);
  if (visit) visit->Confirm();
  if (written > 0) objects = NextObjects(written, out.Written().size() - before);
  return !cursor->AtEnd();
}

}  // namespace tools::agent
