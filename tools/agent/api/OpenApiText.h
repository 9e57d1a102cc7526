// SPDX-License-Identifier: MIT
//
// The text of openapi.json; the build makes the source.
#ifndef KECPP_TOOLS_AGENT_API_OPENAPITEXT_H
#define KECPP_TOOLS_AGENT_API_OPENAPITEXT_H

namespace tools::agent::api {

extern const char* const OPENAPI_TEXT;

}  // namespace tools::agent::api

#endif
