// SPDX-License-Identifier: MIT
#include "tools/agent/Errors.h"

namespace tools::agent {

const char* StatusName(Status status) {
  switch (status) {
    case Status::AccessDenied:
      return "CIM_ERR_ACCESS_DENIED";
    case Status::InvalidNamespace:
      return "CIM_ERR_INVALID_NAMESPACE";
    case Status::InvalidParameter:
      return "CIM_ERR_INVALID_PARAMETER";
    case Status::InvalidClass:
      return "CIM_ERR_INVALID_CLASS";
    case Status::NotFound:
      return "CIM_ERR_NOT_FOUND";
    case Status::NotSupported:
      return "CIM_ERR_NOT_SUPPORTED";
    case Status::AlreadyExists:
      return "CIM_ERR_ALREADY_EXISTS";
    case Status::QueryLanguageNotSupported:
      return "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED";
    case Status::InvalidQuery:
      return "CIM_ERR_INVALID_QUERY";
    case Status::MethodNotFound:
      return "CIM_ERR_METHOD_NOT_FOUND";
    case Status::InvalidEnumerationContext:
      return "CIM_ERR_INVALID_ENUMERATION_CONTEXT";
    case Status::InvalidOperationTimeout:
      return "CIM_ERR_INVALID_OPERATION_TIMEOUT";
    case Status::ContinuationOnErrorNotSupported:
      return "CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED";
    case Status::ServerLimitsExceeded:
      return "CIM_ERR_SERVER_LIMITS_EXCEEDED";
    default:
      return "CIM_ERR_FAILED";
  }
}

}  // namespace tools::agent
