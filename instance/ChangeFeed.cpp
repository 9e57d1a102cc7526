// SPDX-License-Identifier: MIT
#include "instance/ChangeFeed.h"

#include <utility>

namespace KE::Instance {

KEChangeFeed::~KEChangeFeed() = default;

ChangeFeed::ChangeFeed(std::shared_ptr<ChangeHub> whose, KETypeCache& types)
    : hub(std::move(whose)), reader(hub->Open(types)) {}

ChangeFeed::~ChangeFeed() {
  hub->Free(reader);
}

int ChangeFeed::Take(KEChange* changes, int max, int milliseconds) {
  return hub->Take(reader, changes, max, milliseconds);
}

int ChangeFeed::Wait(int milliseconds) {
  return hub->Wait(reader, milliseconds);
}

void ChangeFeed::Close() {
  hub->Close(reader);
}

}  // namespace KE::Instance
