// SPDX-License-Identifier: MIT
//
// Errors as problem details (RFC 9457): a JSON document that says what was wrong.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_API_PROBLEM_H
#define KECPP_TOOLS_AGENT_API_PROBLEM_H

#include <httplib.h>

#include <stdexcept>
#include <string>

namespace tools::agent::api {

// Answered instead of what was asked for.
class Problem : public std::runtime_error {
 public:
  // With `retryAfter`, in seconds, the client may come again.
  Problem(int httpStatus, const std::string& detail, int retrySeconds = 0)
      : std::runtime_error(detail), status(httpStatus), retryAfter(retrySeconds) {}

  const int status;
  const int retryAfter;
};

inline Problem BadRequest(const std::string& detail) {
  return {400, detail};
}

void SetProblem(const Problem& problem, httplib::Response& response);

// Whether requests for this path get their errors in this form.
bool IsOfApi(const std::string& path);

// Gives an error that has no content yet the one that belongs to its status.
void ExplainStatus(httplib::Response& response);

}  // namespace tools::agent::api

#endif
