// SPDX-License-Identifier: MIT
//
// Requests as nobody's client would send them, and what they are answered: a case is a file.
//
//   # what it is about
//   POST /cimom              the request line without the version
//   CIMMethod: GetClass      headers; Host, Connection and Content-Length are added
//                            an empty line
//   @GetClass                the body; this line wraps the rest as the parameters of a call
//   *1000 <a>                this one stands for a thousand times its text
//   =>
//   200                      the status
//   CLASSNAME                what the answer holds, headers included
//   !password                what it does not
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "agent/AgentProcess.h"
#include "agent/RawClient.h"
#include "endtoend/Simulator.h"

namespace agenttest {
namespace {

struct Case {
  std::string request;
  std::vector<std::string> expected;  // lines
};

const std::string CALL =
    "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
    "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"%\"><LOCALNAMESPACEPATH>"
    "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>";
const std::string CALL_END = "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

std::string Repeated(const std::string& line) {
  std::istringstream parts(line.substr(1));
  std::size_t times = 0;
  std::string text, all;
  parts >> times;
  std::getline(parts.ignore(), text);
  while (times-- > 0) all += text;
  return all;
}

std::string ReadBody(std::istream& lines) {
  std::string body, end;
  for (std::string line; std::getline(lines, line) && line != "=>";) {
    if (line[0] == '@') {
      body += std::string(CALL).replace(CALL.find('%'), 1, line.substr(1));
      end = CALL_END;
    } else {
      body += line[0] == '*' ? Repeated(line) : line;
    }
  }
  return body + end;
}

Case ReadCase(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::string line, head;
  while (std::getline(file, line) && line[0] == '#') {
  }
  head = line + " HTTP/1.1\r\nHost: here\r\nConnection: close\r\n";
  while (std::getline(file, line) && !line.empty()) {
    head += (line[0] == '*' ? Repeated(line) : line) + "\r\n";
  }
  const std::string body = ReadBody(file);
  if (head.find("Content-Length") == std::string::npos &&
      head.find("Transfer-Encoding") == std::string::npos) {
    head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  }
  Case read{head + "\r\n" + body, {}};
  while (std::getline(file, line)) read.expected.push_back(line);
  return read;
}

void ExpectAnswer(const Case& test, const std::string& answer) {
  ASSERT_FALSE(test.expected.empty());
  EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + test.expected[0] + " ");
  for (std::size_t i = 1; i < test.expected.size(); ++i) {
    const std::string& line = test.expected[i];
    if (line[0] == '!') {
      EXPECT_THAT(answer, testing::Not(testing::HasSubstr(line.substr(1))));
    } else {
      EXPECT_THAT(answer, testing::HasSubstr(line));
    }
  }
}

TEST(Message, IsAnsweredAsTheCasesSay) {
  endtoend::Simulator simulator({"--hosts", "2", "--machines", "6", "--seed", "7"});
  AgentProcess agent(simulator.Config());
  std::size_t cases = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KECPP_AGENT_CASES)) {
    SCOPED_TRACE(entry.path().filename().string());
    const Case test = ReadCase(entry.path());
    RawClient client(agent.Port());
    client.Send(test.request);
    ExpectAnswer(test, client.Receive());
    ASSERT_TRUE(agent.IsRunning()) << agent.Errors();
    ++cases;
  }
  EXPECT_GT(cases, 30u);
}

}  // namespace
}  // namespace agenttest
