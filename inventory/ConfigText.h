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

// What a program needs of the document besides the connection.
struct ConfigFacts {
  std::string url;       // for messages, without credentials and query; empty without one
  std::string logLevel;  // likewise
};
ConfigFacts FactsOf(const std::string& text);

}  // namespace kecpp

#endif
