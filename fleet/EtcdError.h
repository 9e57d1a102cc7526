// SPDX-License-Identifier: MIT
//
// Why the cluster did not do what it was asked to.
#ifndef KECPP_FLEET_ETCDERROR_H
#define KECPP_FLEET_ETCDERROR_H

#include <stdexcept>
#include <string>

namespace kecpp::fleet {

class EtcdError : public std::runtime_error {
 public:
  enum class Kind {
    notDone,    // it was not carried out and never will be: no connection, or a clear refusal
    uncertain,  // it may have been carried out, or may yet be
  };

  // `code` is gRPC's number of a refusal; 0 when the cluster did not answer.
  EtcdError(Kind errorKind, int errorCode, const std::string& text)
      : std::runtime_error(text), kind(errorKind), code(errorCode) {}

  bool IsUncertain() const { return kind == Kind::uncertain; }

  // The login has ended, or none was made.
  bool IsLogin() const {
    return code == kUnauthenticated || Says("user name is empty") ||
           Says("revision of auth store is old");
  }
  // What was asked for is older than what the cluster keeps.
  bool IsCompacted() const { return code == kOutOfRange && Says("compacted"); }
  bool IsTooLarge() const { return Says("request is too large"); }
  bool IsWithoutAuthentication() const { return Says("authentication is not enabled"); }
  // The member has answered; another one would say the same.
  bool IsAnswer() const { return code != 0 && kind == Kind::notDone; }

 private:
  static constexpr int kOutOfRange = 11;
  static constexpr int kUnauthenticated = 16;

  bool Says(const char* text) const { return std::string(what()).find(text) != std::string::npos; }

  Kind kind;
  int code;
};

}  // namespace kecpp::fleet

#endif
