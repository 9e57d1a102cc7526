// SPDX-License-Identifier: MIT
//
// Any bytes as a request, read and answered from the inventory of a simulated daemon. Nothing
// crashes, and every answer is XML again.
#include <cstdint>
#include <cstdlib>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "simulator/driver/Simulator.h"
#include "tools/agent/Errors.h"
#include "tools/agent/InteropModel.h"
#include "tools/agent/Operations.h"

namespace {

class Agent {
 public:
  tools::agent::Operations& Ready() {
    gate.AwaitOpen();
    return operations;
  }

 private:
  // One of everything; in a name what must not be written to XML, in a key what needs decoding.
  static std::string Prepare(driver::Simulator& simulator) {
    simulator.SetMachine("vm-1", "name", "\x01&#1;&#xD800;&lt;>");
    simulator.Control("privilege", {{"do", "set"}, {"id", "a&amp;b"}, {"name", "&#xFFFE;"}});
    simulator.Control("role", {{"do", "set"}, {"id", "7"}, {"privileges", {"a&amp;b"}}});
    return simulator.Config();
  }

  driver::Simulator simulator{{"--hosts", "1", "--machines", "1"}};
  kecpp::Inventory inventory{{Prepare(simulator)}};
  tools::agent::InventoryGate gate{inventory, std::chrono::seconds(10)};
  tools::agent::InteropModel interop{"host.example", true};
  tools::agent::Operations operations{gate, interop};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Agent agent;
  try {
    const auto request = tools::agent::ParseRequest({reinterpret_cast<const char*>(data), size});
    std::string answer;
    const auto reply = agent.Ready().Answer(request, "host");
    do answer += reply->Piece();
    while (reply->Next());
    pugi::xml_document document;
    if (!document.load_string(answer.c_str()) || !document.child("CIM")) std::abort();
  } catch (const tools::agent::MessageError&) {
  }
  return 0;
}
