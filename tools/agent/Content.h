// SPDX-License-Identifier: MIT
//
// The content of a return value, which is written a piece at a time.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_AGENT_CONTENT_H
#define KECPP_TOOLS_AGENT_CONTENT_H

#include <functional>
#include <memory>
#include <optional>

#include "tools/agent/Cursor.h"
#include "tools/agent/InventoryGate.h"
#include "tools/agent/XmlWriter.h"

namespace tools::agent {

class Content {
 public:
  // What `write` writes into an XmlWriter, from copies and all in one piece: before the request
  // goes, to which it may refer.
  template <class Write>
  Content(Write write) : whole(std::move(write)) {}

  // What a cursor gives, of the inventory that is visited.
  Content(std::unique_ptr<Cursor> cursor, const InventoryGate::Visit& visit);

  // Writes the next piece, objects of some ten kilobytes; false when it was the last one. Throws
  // NotReady when the visit is over, and the answer then lacks something.
  bool WriteNext(XmlWriter& out);

  // Whether it reads the inventory while it is written.
  bool ReadsInventory() const { return cursor != nullptr; }

  // The memory that is kept between two pieces.
  std::size_t Bytes() const { return cursor ? cursor->Bytes() : 0; }

 private:
  std::function<void(XmlWriter& out)> whole;
  std::unique_ptr<Cursor> cursor;
  std::optional<InventoryGate::Visit> visit;
  std::size_t objects;  // in the next piece
};

}  // namespace tools::agent

#endif
