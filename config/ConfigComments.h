// SPDX-License-Identifier: MIT
//
// Comments of a configuration document. Elements are looked for by name, wherever the name is:
// one that is commented out would take effect.
#ifndef KECPP_CONFIG_CONFIGCOMMENTS_H
#define KECPP_CONFIG_CONFIGCOMMENTS_H

#include "foundation/KEString.h"

namespace KELib {

// Takes the comments out of a document. One that is not closed stays, and so does what is inside a
// CDATA section or a processing instruction. Linear in the length.
void RemoveComments(KEString& text);

}  // namespace KELib

#endif
