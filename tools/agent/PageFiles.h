// SPDX-License-Identifier: MIT
//
// The files of tools/agent/page; the build makes the source. All but the page itself are in a
// folder that is named by their contents.
#ifndef KECPP_TOOLS_AGENT_PAGEFILES_H
#define KECPP_TOOLS_AGENT_PAGEFILES_H

#include <vector>

namespace tools::agent {

struct PageFile {
  const char* path;  // as it is asked for
  const char* type;  // the content type
  const char* text;
};

extern const std::vector<PageFile> PAGE_FILES;

}  // namespace tools::agent

#endif
