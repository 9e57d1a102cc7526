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

  // What a cursor gives that reads no inventory.
  explicit Content(std::unique_ptr<Cursor> cursor);

  // All that the response holds, instead of what its return value holds.
  template <class Write>
  static Content OfResponse(Write write) {
    Content content(std::move(write));
    content.isReturnValue = false;
    return content;
  }
  bool IsReturnValue() const { return isReturnValue; }

  // Takes the cursor, which must be there, and the visit, which is not when it reads no inventory.
  std::unique_ptr<Cursor> TakeCursor() { return std::move(cursor); }
  const std::optional<InventoryGate::Visit>& Visit() const { return visit; }

  // Writes the next piece, objects of some ten kilobytes; false when it was the last one. Throws
  // NotReady when the visit is over, and the answer then lacks something.
  bool WriteNext(XmlWriter& out);

  // Whether it reads the inventory while it is written.
  bool ReadsInventory() const { return visit.has_value(); }

  // The memory that is kept between two pieces.
  std::size_t Bytes() const { return cursor ? cursor->Bytes() : 0; }

 private:
  std::function<void(XmlWriter& out)> whole;
  std::unique_ptr<Cursor> cursor;
  std::optional<InventoryGate::Visit> visit;
  std::size_t objects = 0;  // in the next piece
  bool isReturnValue = true;
};

}  // namespace tools::agent

#endif
