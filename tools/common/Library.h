// SPDX-License-Identifier: MIT
//
// The library as a program uses it, from its first call to its last.
#ifndef KECPP_TOOLS_COMMON_LIBRARY_H
#define KECPP_TOOLS_COMMON_LIBRARY_H

#include <kecpp.h>

#include <string>

namespace tools {

// At most one in a process. Threads use the library only while it exists.
class Library {
 public:
  Library() : manager(*KE::Service::GetServiceManagerInstance()) {}
  ~Library() { KE::Service::FreeServiceManagerInstance(); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  KE::Service::KEServiceInstManager& manager;
};

// Logs as much as `level` says or, when it is empty, as the configuration says: the library reads
// the configured level but leaves applying it to its user.
void ApplyLogLevel(const std::string& config, const std::string& level);

}  // namespace tools

#endif
