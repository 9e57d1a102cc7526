// SPDX-License-Identifier: MIT
#include "simulator/Endpoint.h"

#include <chrono>
#include <thread>

namespace sim {

namespace {

const char kXml[] = "text/xml; charset=utf-8";
const char kCookie[] = "pxa_session=";

std::string SessionOf(const httplib::Request& request) {
  const std::string cookies = request.get_header_value("Cookie");
  const std::size_t at = cookies.find(kCookie);
  if (at == std::string::npos) return "";
  const std::size_t start = at + sizeof(kCookie) - 1;
  return cookies.substr(start, cookies.find_first_of("; ", start) - start);
}

void CheckHeader(const httplib::Request& request, const char* name, const std::string& wanted) {
  if (!request.has_header(name))
    throw Fault{"InvalidRequestFault", std::string("No header ") + name};
  const std::string value = request.get_header_value(name);
  if (value != wanted) {
    throw Fault{"InvalidRequestFault", std::string("Header ") + name + " is " + value};
  }
}

void CheckHeaders(const httplib::Request& request) {
  CheckHeader(request, "UserAgent", "mpxa/0.1");
  CheckHeader(request, "Cache-Control", "no-cache");
  CheckHeader(request, "Content-Type", kXml);
  // A header without a value is dropped by the HTTP library: only a wrong value can be told.
  if (request.has_header("SOAPAction")) CheckHeader(request, "SOAPAction", "");
}

// Writes the first `bytes` bytes of an answer of which `announced` bytes were promised.
void SendPart(httplib::Response& response, const std::string& answer, std::size_t bytes,
              std::size_t announced) {
  response.set_content_provider(
      announced, kXml, [answer, bytes](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        if (offset >= bytes) return false;  // the connection is closed
        sink.write(answer.data() + offset, bytes - offset);
        return true;
      });
}

}  // namespace

void Endpoint::AddTo(httplib::Server& server) {
  server.Post("/[sS][dD][kK]/[pP][xX][aA][sS][eE][rR][vV][iI][cC][eE]",
              [this](const httplib::Request& request, httplib::Response& response) {
                Post(request, response);
              });
}

void Endpoint::Post(const httplib::Request& request, httplib::Response& response) {
  SoapCall call;
  std::string answer, session = SessionOf(request);
  const std::string before = session;
  FaultOrder order;
  bool misbehave = false;
  try {
    CheckHeaders(request);
    ReadCall(request.body, call);
    statistics.CountCall(call.method);
    misbehave = faults.Take(call.method, order);
    if (misbehave && (order.kind == "soap-fault" || order.kind == "soap-fault-no-detail")) {
      throw Fault{order.fault + "Fault", "Ordered fault."};
    }
    const bool lost = misbehave && order.kind != "drip" && order.kind != "malformed-set";
    answer = Answer(call.method, lost ? "<returnval/>" : daemon.Call(call, session));
  } catch (const Fault& fault) {
    statistics.CountFault(call.method + ": " + fault.text);
    response.status = 500;
    answer = FaultAnswer(fault);
    if (misbehave && order.kind == "soap-fault-no-detail") {
      answer = Envelope("<soapenv:Fault><faultcode>ServerFaultCode</faultcode><faultstring>" +
                        fault.text + "</faultstring></soapenv:Fault>");
    }
  }
  if (session != before) response.set_header("Set-Cookie", kCookie + session + "; Path=/");
  if (misbehave) {
    Misbehave(order, answer, request, response);
  } else {
    response.set_content(answer, kXml);
  }
}

void Endpoint::Misbehave(const FaultOrder& order, const std::string& answer,
                         const httplib::Request& request, httplib::Response& response) {
  const std::size_t half = answer.size() / 2;
  if (order.kind == "close-before") {
    CloseConnectionFrom(request.remote_port);
  } else if (order.kind == "close-middle" || order.kind == "truncate-wrong-length") {
    SendPart(response, answer, half, answer.size());
  } else if (order.kind == "truncate") {
    response.set_content(answer.substr(0, half), kXml);
  } else if (order.kind == "garbage") {
    response.set_content(std::string("\x01\xff<<>&;\0]]>\"'<a b=c", 20), "text/plain");
  } else if (order.kind == "empty") {
    response.set_content("", kXml);
  } else if (order.kind == "http500") {
    response.status = 500;
    response.set_content("<html><body><h1>500</h1></body></html>", "text/html");
  } else if (order.kind == "wrong-prefix") {
    std::string other = answer;
    for (std::size_t at; (at = other.find("soapenv:")) != std::string::npos;) {
      other.replace(at, 8, "env:");
    }
    response.set_content(other, kXml);
  } else if (order.kind == "no-body") {
    response.set_content(Envelope("").substr(0, 60) + "/>", kXml);
  } else if (order.kind == "malformed-set") {
    std::string broken = answer;
    const std::size_t at = broken.rfind("</objectSet>");
    if (at != std::string::npos) broken.insert(at, "<changeSet><name>name</wrong>");
    response.set_content(broken, kXml);
  } else if (order.kind == "hang") {
    Pause(order.delayMs > 0 ? order.delayMs : 600000);
    CloseConnectionFrom(request.remote_port);
  } else if (order.kind == "drip") {
    Drip(answer, order.delayMs, response);
  } else if (order.kind == "huge") {
    const std::string filler(100 * 1000 * 1000, 'x');
    response.set_content(
        Envelope("<R xmlns=\"urn:pxa25\"><returnval>" + filler + "</returnval></R>"), kXml);
  } else {
    response.set_content(answer, kXml);
  }
}

void Endpoint::Drip(const std::string& answer, unsigned int delayMs, httplib::Response& response) {
  response.set_content_provider(
      answer.size(), kXml,
      [this, answer, delayMs](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        Pause(delayMs);
        return !shutdown && sink.write(answer.data() + offset, 1);
      });
}

void Endpoint::Pause(unsigned int milliseconds) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!shutdown && std::chrono::steady_clock::now() < until) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds < 20 ? milliseconds : 20));
  }
}

}  // namespace sim
