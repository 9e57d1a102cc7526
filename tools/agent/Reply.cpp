// SPDX-License-Identifier: MIT
#include "tools/agent/Reply.h"

#include <algorithm>
#include <utility>

namespace tools::agent {
namespace {

// An answer that has less is one piece.
constexpr std::size_t PIECE_BYTES = std::size_t{128} << 10;

// A piece ends with the portion of objects that makes it large enough, and its room grows by
// doubling.
constexpr std::size_t MOST_PIECE_BYTES = 2 * PIECE_BYTES;

}  // namespace

Reply::Reply(const Request& request, Content returned, Turns& makersTurns)
    : messageId(request.messageId),
      protocolVersion(request.protocolVersion),
      method(request.method),
      response(request.isExtrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE"),
      content(std::move(returned)),
      turns(makersTurns) {}

bool Reply::Next() {
  if (isDone) return false;
  if (content.ReadsInventory()) {
    const Turns::Turn turn(turns);
    MakePiece();
  } else {
    MakePiece();
  }
  if (share) share->Resize(Bytes());
  return true;
}

void Reply::MakePiece() {
  out.Clear();
  if (!hasBegun) Begin();
  hasBegun = true;
  while (!isDone && out.Written().size() < PIECE_BYTES) isDone = !content.WriteNext(out);
  if (isDone) End();
}

void Reply::Begin() {
  out.Declare();
  out.Open("CIM", {{"CIMVERSION", "2.0"}, {"DTDVERSION", "2.0"}});
  out.Open("MESSAGE", {{"ID", messageId}, {"PROTOCOLVERSION", protocolVersion}});
  out.Open("SIMPLERSP");
  out.Open(response, {{"NAME", method}});
  if (content.IsReturnValue()) out.Open("IRETURNVALUE");
}

void Reply::End() {
  if (content.IsReturnValue()) out.Close("IRETURNVALUE");
  out.Close(response);
  out.Close("SIMPLERSP");
  out.Close("MESSAGE");
  out.Close("CIM");
}

std::size_t Reply::Bytes() const {
  return isDone ? out.Bytes() : std::max(out.Bytes(), MOST_PIECE_BYTES) + content.Bytes();
}

}  // namespace tools::agent
