// SPDX-License-Identifier: MIT
#include "tools/agent/StatusPage.h"

#include <cstring>

#include "tools/agent/PageFiles.h"
#include "tools/agent/api/EntityTag.h"

namespace tools::agent {
namespace {

constexpr int NOT_MODIFIED = 304;

// Only the agent's own files run, load and are asked, even if other text gets into the page, and no
// text becomes markup.
constexpr const char* POLICY =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
    "require-trusted-types-for 'script'; trusted-types 'none'";

void SetPolicy(httplib::Response& response) {
  response.set_header("Content-Security-Policy", POLICY);
  response.set_header("X-Content-Type-Options", "nosniff");
  response.set_header("Cross-Origin-Resource-Policy", "same-origin");
  response.set_header("Referrer-Policy", "no-referrer");
}

void AnswerPage(const PageFile& file, const std::string& tag, const httplib::Request& request,
                httplib::Response& response) {
  SetPolicy(response);
  response.set_header("Cache-Control", "no-cache");
  response.set_header("ETag", tag);
  if (api::HasTag(request.get_header_value("If-None-Match"), tag)) {
    response.status = NOT_MODIFIED;
  } else {
    response.set_content(file.text, file.type);
  }
}

// The folder's name changes with the contents.
void AnswerPart(const PageFile& file, httplib::Response& response) {
  SetPolicy(response);
  response.set_header("Cache-Control", "private, max-age=31536000, immutable");
  response.set_content(file.text, file.type);
}

}  // namespace

void AddStatusPage(AgentServer& server, const std::function<void()>& whenOpened) {
  for (const PageFile& file : PAGE_FILES) {
    if (std::strcmp(file.path, "/") != 0) {
      server.Get(file.path, [&file](const httplib::Request&, httplib::Response& response) {
        AnswerPart(file, response);
      });
    } else {
      server.Get("/", [&file, tag = api::EntityTagOf(file.text), whenOpened](
                          const httplib::Request& request, httplib::Response& response) {
        whenOpened();
        AnswerPage(file, tag, request, response);
      });
    }
  }
}

}  // namespace tools::agent
