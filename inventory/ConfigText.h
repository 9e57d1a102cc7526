// SPDX-License-Identifier: MIT
//
// The configuration document of an Inventory.
#ifndef KECPP_INVENTORY_CONFIGTEXT_H
#define KECPP_INVENTORY_CONFIGTEXT_H

#include <string>

namespace kecpp {

// The text of the document that `config` names (Options::config), unlike that of any other call in
// this process: the library hands out one connection for equal texts, and a connection that
// replaces a lost one must be another. Throws Error for a file that cannot be read or is empty.
std::string UniqueConfigText(const std::string& config);

// The URL in the document, for messages; empty without one. Credentials in it are left out.
std::string UrlOf(const std::string& text);

// Logs as much as the document says: the library leaves that to its user.
void ApplyLogLevel(const std::string& text);

}  // namespace kecpp

#endif
