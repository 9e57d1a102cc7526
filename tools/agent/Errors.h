// SPDX-License-Identifier: MIT
//
// How a request fails: an operation that answers a CIM status, and a message that is refused as a
// whole.
#ifndef KECPP_TOOLS_AGENT_ERRORS_H
#define KECPP_TOOLS_AGENT_ERRORS_H

#include <stdexcept>
#include <string>

namespace tools::agent {

// The CIM status codes that this agent gives.
enum class Status {
  Failed = 1,
  AccessDenied = 2,
  InvalidNamespace = 3,
  InvalidParameter = 4,
  InvalidClass = 5,
  NotFound = 6,
  NotSupported = 7,
  AlreadyExists = 11,
  QueryLanguageNotSupported = 14,
  InvalidQuery = 15,
  MethodNotFound = 17,
  InvalidEnumerationContext = 21,
  InvalidOperationTimeout = 22,
  ContinuationOnErrorNotSupported = 26,
  ServerLimitsExceeded = 27,
};

// As the standard writes it.
const char* StatusName(Status status);

// Answered in the reply's ERROR element.
class OperationError : public std::runtime_error {
 public:
  OperationError(Status errorStatus, const std::string& text)
      : std::runtime_error(text), status(errorStatus) {}

  const Status status;
};

// Answered by an HTTP status and the header "CIMError", without a body.
class MessageError : public std::runtime_error {
 public:
  MessageError(int status, const char* cimError)
      : std::runtime_error(cimError), httpStatus(status) {}

  const int httpStatus;
};

// Cannot be answered now: there is no inventory yet, or too many answers wait for their clients.
class NotReady : public std::runtime_error {
 public:
  explicit NotReady(const char* why = "the inventory was not read yet") : std::runtime_error(why) {}
};

}  // namespace tools::agent

#endif
