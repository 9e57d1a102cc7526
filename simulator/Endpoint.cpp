// SPDX-License-Identifier: MIT
#include "simulator/Endpoint.h"

#include <algorithm>
#include <cctype>

#include "simulator/Connection.h"

namespace sim {

namespace {

const char kCookie[] = "pxa_session=";

std::string CookieOf(const httplib::Request& request) {
  const std::string cookies = request.get_header_value("Cookie");
  const std::size_t at = cookies.find(kCookie);
  if (at == std::string::npos) return "";
  const std::size_t start = at + sizeof(kCookie) - 1;
  return cookies.substr(start, cookies.find_first_of("; ", start) - start);
}

void CheckHeader(const httplib::Request& request, const char* name, const std::string& wanted) {
  const std::size_t count = request.get_header_value_count(name);
  if (count != 1) Refuse("There are " + std::to_string(count) + " headers " + name);
  const std::string value = request.get_header_value(name);
  if (value != wanted) Refuse(std::string("The header ") + name + " is " + value);
}

// The HTTP library may drop headers without a value, so this one is looked for in the request's
// head.
void CheckEmptyAction(const httplib::Request& request, std::string head) {
  const bool isEmpty = request.get_header_value("SOAPAction").empty();
  if (!isEmpty) Refuse("The header SOAPAction is not empty.");
  std::transform(head.begin(), head.end(), head.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const std::size_t at = head.find("\r\nsoapaction:");
  if (at == std::string::npos) Refuse("There is no header SOAPAction.");
}

void CheckHeaders(const httplib::Request& request) {
  CheckHeader(request, "UserAgent", "mpxa/0.1");
  CheckHeader(request, "Cache-Control", "no-cache");
  CheckHeader(request, "Content-Type", kXmlContent);
  CheckEmptyAction(request, Connection::Current()->Head());
}

}  // namespace

Endpoint::Endpoint(Daemon& served, Faults& ordered, Misbehaviour& spoiling, Statistics& counted)
    : daemon(served), faults(ordered), misbehaviour(spoiling), statistics(counted) {}

void Endpoint::AddTo(HttpServer& server) {
  server.Post("/[sS][dD][kK]/[pP][xX][aA][sS][eE][rR][vV][iI][cC][eE]",
              [this](const httplib::Request& request, httplib::Response& response) {
                Post(request, response);
              });
}

std::string Endpoint::CarryOut(const SoapCall& call, std::string& cookie, const FaultOrder* order) {
  if (order != nullptr && order->kind.compare(0, 10, "soap-fault") == 0) {
    throw Fault{order->fault + "Fault", "Ordered fault."};
  }
  if (order != nullptr && !Faults::CarriesOut(order->kind)) return "";
  const Connection* connection = Connection::Current();
  return Answer(call.method,
                daemon.Call(call, cookie, [connection] { return connection->PeerIsGone(); }));
}

void Endpoint::Post(const httplib::Request& request, httplib::Response& response) {
  SoapCall call;
  FaultOrder order;
  bool spoil = false;
  std::string answer, cookie = CookieOf(request);
  const std::string before = cookie;
  try {
    CheckHeaders(request);
    ReadCall(request.body, call);
    statistics.CountCall(call.method);
    spoil = faults.Take(call.method, order);
    if (spoil) misbehaviour.Strike(order);
    answer = CarryOut(call, cookie, spoil ? &order : nullptr);
  } catch (const Fault& fault) {
    statistics.CountFault(call.method + ": " + fault.text);
    response.status = 500;
    const bool bare = spoil && order.kind == "soap-fault-no-detail";
    answer = bare ? FaultAnswerWithoutDetail(fault) : FaultAnswer(fault);
  }
  if (cookie != before) response.set_header("Set-Cookie", kCookie + cookie + "; Path=/");
  if (spoil) return misbehaviour.Spoil(order, std::move(answer), response);
  response.body = std::move(answer);
  response.set_header("Content-Type", kXmlContent);
}

}  // namespace sim
