// SPDX-License-Identifier: MIT
//
// The configuration that a command line names.
#ifndef KECPP_TOOLS_COMMON_CONFIGARGUMENT_H
#define KECPP_TOOLS_COMMON_CONFIGARGUMENT_H

#include <string>

namespace tools {

// What is wrong with a configuration that a command line names, empty when nothing is: someone who
// names a file wants to hear that it cannot be read, is none or is empty.
std::string CheckConfig(const std::string& config);

}  // namespace tools

#endif
