// SPDX-License-Identifier: MIT
//
// Requests and answers on the wire: the envelope, checked to the byte, and faults.
#ifndef KECPP_SIMULATOR_SOAP_H
#define KECPP_SIMULATOR_SOAP_H

#include <pugixml.hpp>
#include <string>
#include <vector>

#include "simulator/Fault.h"

namespace sim {

// A request whose envelope was found to be right.
struct SoapCall {
  pugi::xml_document body;  // the method element is its root
  std::string method;

  pugi::xml_node Element() const { return body.document_element(); }
  std::string Argument(const char* name) const;  // throws Fault without it
  std::string ThisType() const;
  std::string ThisValue() const;

  // Throws Fault unless the method element holds exactly these elements, in this order.
  void CheckElements(const std::vector<std::string>& names) const;
};

// Reads a request. Throws Fault that says what is wrong.
void ReadCall(const std::string& request, SoapCall& call);

std::string Escaped(const std::string& text);

// The answer of a method whose element holds `content`, which is XML.
std::string Answer(const std::string& method, const std::string& content);
std::string FaultAnswer(const Fault& fault);
std::string FaultAnswerWithoutDetail(const Fault& fault);

// An envelope around any body.
std::string Envelope(const std::string& body);

}  // namespace sim

#endif
