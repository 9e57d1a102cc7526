// SPDX-License-Identifier: MIT
//
// Requests as nobody's client would send them, and what they are answered: a case is a file. A line
// "*1000 <a>" stands for a thousand times its text. Sections:
//   POST /cimom     the request line without the version, and headers; Connection is added, and so
//                   are Host, Content-Type and Content-Length where they are missing
//   body            of the request; "$CONTEXT" is the enumeration's that was opened last, "$HOST"
//                   this machine's name
//   call METHOD     a body that is a call with these parameters; "interop METHOD": in that
//   namespace answer STATUS   sends it; the answer holds these lines, headers included, but not
//   those that
//                   begin with "!"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "agent/AgentProcess.h"
#include "agent/RawClient.h"
#include "simulator/driver/Simulator.h"
#include "support/CaseFile.h"
#include "tools/agent/InteropModel.h"

namespace agenttest {
namespace {

using testing::HasSubstr;

std::string Lines(const std::string& text, const std::string& lineEnd) {
  std::istringstream in(text);
  std::string all;
  for (std::string line; std::getline(in, line); all += lineEnd) {
    std::size_t times = 1;
    if (line[0] == '*') {
      times = std::stoul(line.substr(1));
      line.erase(0, line.find(' ') + 1);
    }
    while (times-- > 0) all += line;
  }
  return all;
}

void ExpectAnswer(const Section& expected, const std::string& answer) {
  EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + expected.argument + " ");
  std::istringstream lines(expected.text);
  for (std::string line; std::getline(lines, line);) {
    if (line[0] == '!') {
      EXPECT_THAT(answer, testing::Not(HasSubstr(line.substr(1))));
    } else {
      EXPECT_THAT(answer, HasSubstr(line));
    }
  }
}

void AddMissing(std::string& head, std::size_t bodyLength) {
  const auto lacks = [&](const char* name) { return head.find(name) == std::string::npos; };
  if (lacks("\r\nHost:")) head += "Host: localhost\r\n";
  if (lacks("Content-Type:")) head += "Content-Type: application/xml\r\n";
  if (lacks("Content-Length:") && lacks("Transfer-Encoding:")) {
    head += "Content-Length: " + std::to_string(bodyLength) + "\r\n";
  }
}

std::string Filled(const std::string& text, const std::string& context) {
  const std::string host = tools::agent::LocalHostName();
  return std::regex_replace(std::regex_replace(text, std::regex("\\$CONTEXT"), context),
                            std::regex("\\$HOST"), host);
}

// False when the file expects nothing.
bool RunCase(const std::filesystem::path& file, int port) {
  std::string head, body, context;
  bool answered = false;
  for (const Section& section : ReadCase(file)) {
    if (section.name == "body") {
      body = Lines(Filled(section.text, context), "");
    } else if (section.name == "call") {
      body = CimCall(section.argument, Lines(Filled(section.text, context), ""));
    } else if (section.name == "interop") {
      body = CimCall(section.argument, Lines(section.text, ""), "interop");
    } else if (section.name == "answer") {
      AddMissing(head, body.size());
      RawClient client(port);
      client.Send(head + "\r\n" + body);
      const std::string answer = client.Receive();
      ExpectAnswer(section, answer);
      std::smatch opened;
      if (std::regex_search(answer, opened, std::regex("<VALUE>([0-9a-f]{32})</VALUE>"))) {
        context = opened[1];
      }
      answered = true;
    } else {
      head = section.name + " " + section.argument + " HTTP/1.1\r\nConnection: close\r\n" +
             Lines(section.text, "\r\n");
      body.clear();
    }
  }
  return answered;
}

void RunCases(const std::string& folder, const std::vector<std::string>& options,
              std::size_t least) {
  driver::Simulator simulator({"--hosts", "2", "--machines", "6", "--seed", "7"});
  AgentProcess agent(simulator.Config(), options);
  std::size_t cases = 0;
  for (const auto& file : CaseFiles(KECPP_AGENT_TESTS "/" + folder)) {
    SCOPED_TRACE(file.filename().string());
    EXPECT_TRUE(RunCase(file, agent.Port()));
    ASSERT_TRUE(agent.IsRunning()) << agent.Errors();
    ++cases;
  }
  EXPECT_GE(cases, least);
}

TEST(Message, IsAnsweredAsTheCasesSay) {
  RunCases("cases", {}, 30);
}

TEST(Message, OfAUserIsAnsweredAsTheCasesSay) {
  RunCases("cases-of-users",
           {"--users", KECPP_AGENT_TESTS "/subscribers.txt", "--indications-to",
            "127.0.0.1,listener.example,10.0.0.0/8"},
           2);
}

}  // namespace
}  // namespace agenttest
