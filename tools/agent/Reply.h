// SPDX-License-Identifier: MIT
//
// The answer to one request, made a piece at a time: what was not sent yet takes no memory,
// whatever the size of the whole.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_AGENT_REPLY_H
#define KECPP_TOOLS_AGENT_REPLY_H

#include <memory>
#include <string>
#include <string_view>

#include "tools/agent/Backlog.h"
#include "tools/agent/Content.h"
#include "tools/agent/Request.h"
#include "tools/agent/Turns.h"
#include "tools/agent/XmlWriter.h"

namespace tools::agent {

class Reply {
 public:
  // The turns outlive the object.
  Reply(const Request& request, Content content, Turns& turns);

  // Makes the next piece, which takes the place of the one before; false when there is none. For
  // many objects it waits for a turn, which it gives back: none is held while a client reads.
  // Throws NotReady when the rest cannot be made; the client must then see that the answer was cut.
  bool Next();

  std::string_view Piece() const { return out.Written(); }
  std::string TakePiece() { return out.Take(); }

  // Whether there is nothing after the present piece.
  bool IsLast() const { return isDone; }

  // "ok", or the name of the CIM status that it answers.
  const char* Outcome() const { return outcome; }
  void SetOutcome(const char* statusName) { outcome = statusName; }

  // The memory that it takes, with what the pieces to come may take.
  std::size_t Bytes() const;

  // Keeps the room that was reserved for it, which follows what it takes from then on.
  void Keep(std::unique_ptr<Backlog::Share> reserved) { share = std::move(reserved); }

 private:
  void MakePiece();
  void Begin();
  void End();

  const std::string messageId;
  const std::string protocolVersion;
  const std::string method;
  const char* const response;  // the element around the answer
  const char* outcome = "ok";
  Content content;
  Turns& turns;
  XmlWriter out;
  bool hasBegun = false;
  bool isDone = false;
  std::unique_ptr<Backlog::Share> share;
};

}  // namespace tools::agent

#endif
