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

}  // namespace

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string SoapCall::Argument(const char* name) const {
  const pugi::xml_node node = Element().child(name);
  if (!node) Refuse(method + " lacks " + name);
  return node.text().get();
}

std::string SoapCall::ThisType() const {
  return Element().child("_this").attribute("type").value();
}

std::string SoapCall::ThisValue() const {
  if (ThisType().empty()) Refuse(method + ": _this lacks its type");
  return Argument("_this");
}

void SoapCall::CheckElements(const std::vector<std::string>& names) const {
  std::vector<std::string> found;
  for (const pugi::xml_node& node : Element().children()) {
    if (node.type() == pugi::node_element) found.emplace_back(node.name());
  }
  if (found == names) return;
  std::string list;
  for (const std::string& name : found) list += " " + name;
  Refuse(method + " has these elements:" + list);
}

void ReadCall(const std::string& request, SoapCall& call) {
  const std::size_t head = sizeof(kHead) - 1, tail = sizeof(kTail) - 1;
  if (request.size() < head + tail) Refuse("The request is too short for an envelope.");
  if (request.compare(0, head, kHead) != 0) Refuse("The envelope's head is not as agreed.");
  if (request.compare(request.size() - tail, tail, kTail) != 0) {
    Refuse("The envelope's tail is not as agreed.");
  }
  const std::string body = request.substr(head, request.size() - head - tail);
  const pugi::xml_parse_result result = call.body.load_buffer(body.data(), body.size());
  if (!result) Refuse(std::string("The body is not well-formed: ") + result.description());
  call.method = call.Element().name();
  if (call.Element().next_sibling()) Refuse("There is more than one element in the body.");
  if (std::strcmp(call.Element().attribute("xmlns").value(), "urn:pxa25") != 0) {
    Refuse(call.method + " is not in the namespace urn:pxa25");
  }
}

std::string Envelope(const std::string& body) {
  std::string text;
  text.reserve(sizeof(kHead) + body.size() + sizeof(kTail));
  return text.append(kHead).append(body).append(kTail).append("\n");
}

std::string Answer(const std::string& method, const std::string& content) {
  std::string text;
  text.reserve(sizeof(kHead) + content.size() + 2 * method.size() + sizeof(kTail) + 64);
  text.append(kHead).append("<").append(method).append("Response xmlns=\"urn:pxa25\">");
  text.append(content).append("</").append(method).append("Response>").append(kTail);
  return text.append("\n");
}

std::string FaultAnswer(const Fault& fault) {
  return Envelope("<soapenv:Fault>\n<faultcode>ServerFaultCode</faultcode>\n<faultstring>" +
                  Escaped(fault.text) + "</faultstring>\n<detail><" + fault.type +
                  " xmlns=\"urn:pxa25\"/></detail>\n</soapenv:Fault>");
}

std::string FaultAnswerWithoutDetail(const Fault& fault) {
  return Envelope("<soapenv:Fault><faultcode>ServerFaultCode</faultcode><faultstring>" +
                  Escaped(fault.text) + "</faultstring></soapenv:Fault>");
}

}  // namespace sim
