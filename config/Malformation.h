// SPDX-License-Identifier: MIT
//
// Where a configuration document is not well-formed. Reading needs no well-formed document; what
// the reader made of one that is not surprises its author, who wants to know the line.
//
// Thread safety: any thread.
#ifndef KECPP_CONFIG_MALFORMATION_H
#define KECPP_CONFIG_MALFORMATION_H

#include "foundation/KEString.h"

namespace KELib {

struct Malformation {
  unsigned int line = 0;  // from 1
  KEString what;          // such as "<url> is not closed"
};

// Finds the first place at which the elements of `document` (not changed) do not nest, and one
// without an element. False when there is none. Linear in the document's length.
bool FindMalformation(const KEString& document, Malformation& found);

}  // namespace KELib

#endif
