// SPDX-License-Identifier: MIT
#include "simulator/Misbehaviour.h"

#include <chrono>

#include "simulator/Soap.h"

namespace sim {

const char* const kXmlContent = "text/xml; charset=utf-8";

namespace {

const char kOtherPid[] = "4711";
constexpr unsigned int kRefuseMs = 1000;
constexpr unsigned int kHangMs = 600000;
constexpr std::size_t kHuge = 100000000;

bool ConcernsConnection(const std::string& kind) {
  return kind == "refuse" || kind == "close-before" || kind == "hang" || kind == "lost-reply" ||
         kind == "close-middle" || kind == "truncate-wrong-length" || kind == "drip" ||
         kind == "restart" || kind == "pid-gone";
}

std::string HeadFor(const std::string& answer) {
  return std::string("HTTP/1.1 200 OK\r\nContent-Type: ") + kXmlContent +
         "\r\nContent-Length: " + std::to_string(answer.size()) + "\r\n\r\n";
}

bool WriteAll(Connection& connection, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = connection.write(text.data() + done, text.size() - done);
    if (written <= 0) return false;
    done += static_cast<std::size_t>(written);
  }
  return true;
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

}  // namespace

void Misbehaviour::Strike(const FaultOrder& order) {
  if (order.kind == "session-lost") restarts.LoseSessions();
  if (order.kind == "restart") restarts.Restart(kOtherPid);
  if (order.kind == "pid-gone") restarts.RemovePid();
}

void Misbehaviour::Spoil(const FaultOrder& order, std::string answer, httplib::Response& response) {
  if (ConcernsConnection(order.kind)) {
    SpoilConnection(order, answer);
  } else {
    SpoilText(order.kind, std::move(answer), response);
  }
}

void Misbehaviour::SpoilConnection(const FaultOrder& order, const std::string& answer) {
  Connection& connection = *Connection::Current();
  const std::string& kind = order.kind;
  const std::string half = HeadFor(answer) + answer.substr(0, answer.size() / 2);
  if (kind == "hang") Pause(order.delayMs > 0 ? order.delayMs : kHangMs);
  if (kind == "close-middle" || kind == "truncate-wrong-length") WriteAll(connection, half);
  if (kind == "refuse") {
    connection.Reset();
    server.Refuse(std::chrono::milliseconds(order.delayMs > 0 ? order.delayMs : kRefuseMs));
  } else if (kind == "close-middle") {
    connection.Reset();
  } else if (kind == "drip") {
    Drip(answer, order.delayMs, connection);
  } else {
    connection.End();
  }
}

// The HTTP library would send an answer as well if the connection stayed open.
void Misbehaviour::Drip(const std::string& answer, unsigned int delayMs, Connection& connection) {
  bool sent = WriteAll(connection, HeadFor(answer));
  for (std::size_t i = 0; sent && i < answer.size(); ++i) {
    sent = Pause(delayMs) && connection.write(answer.data() + i, 1) == 1;
  }
  connection.End();
}

void Misbehaviour::SpoilText(const std::string& kind, std::string answer,
                             httplib::Response& response) {
  const char* type = kXmlContent;
  if (kind == "truncate") {
    answer.resize(answer.size() / 2);
  } else if (kind == "garbage") {
    answer.assign("\x01\xff<<>&;\0]]>\"'<a b=c", 20);
    type = "text/plain";
  } else if (kind == "empty") {
    answer.clear();
  } else if (kind == "http500") {
    response.status = 500;
    answer = "<html><body><h1>500</h1></body></html>";
    type = "text/html";
  } else if (kind == "wrong-prefix") {
    ReplaceAll(answer, "soapenv:", "env:");
    ReplaceAll(answer, "xmlns:soapenv", "xmlns:env");
  } else if (kind == "no-body") {
    answer = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<soapenv:Envelope/>\n";
  } else if (kind == "malformed-set") {
    const std::size_t at = answer.rfind("</objectSet>");
    if (at != std::string::npos) answer.insert(at, "<changeSet><name>name</wrong>");
  } else if (kind == "huge") {
    answer = Answer("R", "<returnval>" + std::string(kHuge, 'x') + "</returnval>");
  }
  response.body = std::move(answer);
  response.set_header("Content-Type", type);
}

bool Misbehaviour::Pause(unsigned int milliseconds) {
  std::unique_lock<std::mutex> lock(mutex);
  return !woken.wait_for(lock, std::chrono::milliseconds(milliseconds),
                         [this] { return shutdown; });
}

void Misbehaviour::Shutdown() {
  const std::lock_guard<std::mutex> lock(mutex);
  shutdown = true;
  woken.notify_all();
}

}  // namespace sim
