// SPDX-License-Identifier: MIT
#include "torture/Expectation.h"

#include <curl/curl.h>

namespace torture {
namespace {

const char* const SETUP = "Unable to setup HTTP. ";
const char* const CONNECT = "Unable to initialize HTTP connection. ";
const char* const SSL = "Unable to initialize SSL. ";
const char* const POST = "Error sending HTTP request.";

constexpr long ANY = -1, SOME = -2;  // a value that matters not; any but 0

struct Rule {
  int option;
  long value;
  const char* message;
  const char* code;
};

// Options that are not here, or with another value, are not examined when they are set.
const Rule RULES[] = {
    {CURLOPT_SHARE, SOME, SETUP, "0012"},       {CURLOPT_VERBOSE, 0, SETUP, "0013"},
    {CURLOPT_NOPROGRESS, 1, SETUP, "0014"},     {CURLOPT_NOSIGNAL, ANY, SETUP, "0015"},
    {CURLOPT_HTTPHEADER, ANY, CONNECT, "0020"}, {CURLOPT_NOPROXY, ANY, CONNECT, "0021"},
    {CURLOPT_PROXY, ANY, CONNECT, "0021"},      {CURLOPT_PROXYPORT, ANY, CONNECT, "0022"},
    {CURLOPT_VERBOSE, 1, SETUP, "0023"},        {CURLOPT_NOPROGRESS, 0, SETUP, "0024"},
    {CURLOPT_COOKIEFILE, ANY, CONNECT, "0025"}, {CURLOPT_WRITEFUNCTION, ANY, CONNECT, "0028"},
    {CURLOPT_SSLCERTTYPE, ANY, SSL, "0030"},    {CURLOPT_SSLCERT, ANY, SSL, "0031"},
    {CURLOPT_KEYPASSWD, ANY, SSL, "0032"},      {CURLOPT_SSLKEYTYPE, ANY, SSL, "0033"},
    {CURLOPT_SSLKEY, ANY, SSL, "0034"},         {CURLOPT_CAINFO, ANY, SSL, "0035"},
    {CURLOPT_SSL_VERIFYPEER, ANY, SSL, "0036"}, {CURLOPT_SSL_VERIFYHOST, ANY, SSL, "0037"},
    {CURLOPT_POSTFIELDS, SOME, POST, "0040"},   {CURLOPT_POSTFIELDSIZE, ANY, POST, "0041"},
    {CURLOPT_WRITEDATA, SOME, POST, "0042"},    {CURLOPT_ERRORBUFFER, SOME, POST, "0043"},
    {CURLOPT_URL, ANY, POST, "0044"},
};

std::string Coded(const char* message, const char* code) {
  return std::string(message) + code + "\n";
}

// The same option with the same value at three places: which one, tells the option before.
std::string OfTimeout(int previousOption) {
  if (previousOption == CURLOPT_NOSIGNAL) return Coded(SETUP, "0016");
  if (previousOption == CURLOPT_COOKIEFILE) return Coded(CONNECT, "0026");
  return {};  // while a handle is given back: it is prepared anew for its next use
}

std::string OfOption(const Refusal& refusal) {
  if (refusal.option == CURLOPT_TIMEOUT) return OfTimeout(refusal.previousOption);
  if (refusal.option == CURLOPT_TIMEOUT_MS) return "Unable to set request timeout.";
  for (const Rule& rule : RULES) {
    if (rule.option != refusal.option) continue;
    const bool matches = rule.value == ANY || (rule.value == SOME && refusal.value != 0) ||
                         rule.value == refusal.value;
    if (matches) return Coded(rule.message, rule.code);
  }
  return {};
}

}  // namespace

std::string ExpectedText(const Refusal& refusal) {
  switch (refusal.call) {
    case Call::setOption:
      return OfOption(refusal);
    case Call::easyInit:
      return Coded(SETUP, "0011");
    case Call::share:
      return Coded(SETUP, refusal.shareExists ? "0001" : "0000");
    case Call::startThread:
      return "Unable to create thread";
    case Call::open:
    case Call::read:
      // Without the ticket there is no login. Without the configuration's file its default counts,
      // without the process id none is remembered.
      return refusal.isTicket ? "No Session in Progress" : "";
    case Call::allocate:   // overcome at some places; what remains is compared at the end
    case Call::timeOfDay:  // a failure is noted without its time
      return {};
  }
  return {};
}

std::string SetupCode(const std::string& text) {
  const std::size_t digits = text.find("00");
  return digits == std::string::npos ? std::string() : text.substr(digits, 4);
}

const std::set<std::string>& AllSetupCodes() {
  static const std::set<std::string> all = [] {
    std::set<std::string> codes = {"0000", "0001", "0011", "0016", "0026"};
    for (const Rule& rule : RULES) codes.insert(rule.code);
    return codes;
  }();
  return all;
}

}  // namespace torture
