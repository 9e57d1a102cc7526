// SPDX-License-Identifier: MIT
//
// The text of StatusPage.html; the build makes the source.
#ifndef KECPP_TOOLS_AGENT_STATUSPAGETEXT_H
#define KECPP_TOOLS_AGENT_STATUSPAGETEXT_H

namespace tools::agent {

extern const char* const STATUS_PAGE;

}  // namespace tools::agent

#endif
