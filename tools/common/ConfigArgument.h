// SPDX-License-Identifier: MIT
//
// The configuration that a command line names.
#ifndef KECPP_TOOLS_COMMON_CONFIGARGUMENT_H
#define KECPP_TOOLS_COMMON_CONFIGARGUMENT_H

#include <string>

namespace tools {

// What is wrong with a configuration that a command line names: a file that cannot be read, is no
// file or is empty. Empty when nothing is wrong.
std::string CheckConfig(const std::string& config);

}  // namespace tools

#endif
