// SPDX-License-Identifier: MIT
#include "tools/agent/api/Problem.h"

#include "tools/agent/api/Json.h"

namespace tools::agent::api {
namespace {

struct Meaning {
  int status;
  const char* title;
  const char* detail;
};

constexpr Meaning MEANINGS[] = {
    {400, "Bad Request", "the request is not understood"},
    {401, "Unauthorized", "the name and password of a user are needed"},
    {403, "Forbidden", "without users this agent is reached by the name localhost only"},
    {404, "Not Found", "there is nothing under this path"},
    {405, "Method Not Allowed", "this path is for GET and HEAD"},
    {413, "Payload Too Large", "a request for this path has no body"},
    {414, "URI Too Long", "the path and its parameters are too long"},
    {415, "Unsupported Media Type", "a request for this path has no body"},
    {500, "Internal Server Error", "the answer could not be made"},
    {501, "Not Implemented", "the request is not understood"},
    {503, "Service Unavailable", "the answer cannot be made now"},
};

Meaning MeaningOf(int status) {
  for (const Meaning& meaning : MEANINGS) {
    if (meaning.status == status) return meaning;
  }
  return {status, "Error", "the request cannot be answered"};
}

}  // namespace

void SetProblem(const Problem& problem, httplib::Response& response) {
  response.status = problem.status;
  if (problem.retryAfter > 0) {
    response.set_header("Retry-After", std::to_string(problem.retryAfter));
  }
  response.set_content(Dump({{"type", "about:blank"},
                             {"title", MeaningOf(problem.status).title},
                             {"status", problem.status},
                             {"detail", problem.what()}}),
                       "application/problem+json");
}

bool IsOfApi(const std::string& path) {
  return path.compare(0, 5, "/api/") == 0;
}

void ExplainStatus(httplib::Response& response) {
  SetProblem({response.status, MeaningOf(response.status).detail}, response);
}

}  // namespace tools::agent::api
