// SPDX-License-Identifier: MIT
//
// Requests and answers on the wire: the envelope, checked to the byte, and faults.
#pragma once

#include <pugixml.hpp>
#include <string>

#include "simulator/PropertyCollector.h"

namespace sim {

// A request whose envelope was found to be right.
struct SoapCall {
  pugi::xml_document body;  // the method element is its root
  std::string method;
  pugi::xml_node Element() const { return body.document_element(); }
  std::string Argument(const char* name) const;
  std::string ThisValue() const;
};

// Reads a request. Throws Fault that says what is wrong.
void ReadCall(const std::string& request, SoapCall& call);

// The answer of a method whose element holds `content`.
std::string Answer(const std::string& method, const std::string& content);
std::string FaultAnswer(const Fault& fault);

// An envelope around any body.
std::string Envelope(const std::string& body);

}  // namespace sim
