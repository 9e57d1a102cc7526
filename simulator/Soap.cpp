// SPDX-License-Identifier: MIT
#include "simulator/Soap.h"

#include <cstring>

namespace sim {

namespace {

const char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<soapenv:Envelope xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"\n"
    " xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\"\n"
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"\n"
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
    "<soapenv:Body>\n";
const char kTail[] = "\n</soapenv:Body>\n</soapenv:Envelope>";

[[noreturn]] void Refuse(const std::string& text) {
  throw Fault{"InvalidRequestFault", text};
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

}  // namespace

std::string SoapCall::Argument(const char* name) const {
  const pugi::xml_node node = Element().child(name);
  if (!node) Refuse(method + " lacks " + name);
  return node.text().get();
}

std::string SoapCall::ThisValue() const {
  const pugi::xml_node node = Element().child("_this");
  if (node.attribute("type").empty()) Refuse(method + ": _this lacks its type");
  return Argument("_this");
}

void ReadCall(const std::string& request, SoapCall& call) {
  const std::size_t head = sizeof(kHead) - 1, tail = sizeof(kTail) - 1;
  if (request.size() < head + tail) Refuse("The request is too short for an envelope.");
  if (request.compare(0, head, kHead) != 0) Refuse("The envelope's head is not as agreed.");
  if (request.compare(request.size() - tail, tail, kTail) != 0) {
    Refuse("The envelope's tail is not as agreed.");
  }
  const std::string element = request.substr(head, request.size() - head - tail);
  const pugi::xml_parse_result result = call.body.load_buffer(element.data(), element.size());
  if (!result) Refuse(std::string("The body is not well-formed: ") + result.description());
  call.method = call.Element().name();
  if (std::strcmp(call.Element().attribute("xmlns").value(), "urn:pxa25") != 0) {
    Refuse(call.method + " is not in the namespace urn:pxa25");
  }
}

std::string Envelope(const std::string& body) {
  return std::string(kHead) + body + kTail + "\n";
}

std::string Answer(const std::string& method, const std::string& content) {
  return Envelope("<" + method + "Response xmlns=\"urn:pxa25\">" + content + "</" + method +
                  "Response>");
}

std::string FaultAnswer(const Fault& fault) {
  return Envelope("<soapenv:Fault>\n<faultcode>ServerFaultCode</faultcode>\n<faultstring>" +
                  Escaped(fault.text) + "</faultstring>\n<detail><" + fault.type +
                  " xmlns=\"urn:pxa25\"/>" + "</detail>\n</soapenv:Fault>");
}

}  // namespace sim
