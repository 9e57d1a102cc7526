// SPDX-License-Identifier: MIT
#include "datasync/FakeServer.h"

#include <algorithm>

#include "foundation/KEException.h"
#include "xml/KEXmlBuffer.h"

void FakeServer::Then(const std::string& method, const Answer& answer) {
  std::lock_guard<std::mutex> guard(mutex);
  scripts[method].push_back(answer);
  changed.notify_all();
}

void FakeServer::Always(const std::string& method, const Answer& answer) {
  std::lock_guard<std::mutex> guard(mutex);
  standing[method] = answer;
  changed.notify_all();
}

std::vector<FakeServer::Call> FakeServer::Calls(const std::string& method) {
  std::lock_guard<std::mutex> guard(mutex);
  std::vector<Call> found;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
               [&](const Call& call) { return method.empty() || call.method == method; });
  return found;
}

void FakeServer::AwaitCalls(const std::string& method, std::size_t number) {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait(lock, [&] { return CountNoLock(method) >= number; });
}

bool FakeServer::IsQuiet(std::size_t waits) {
  std::lock_guard<std::mutex> guard(mutex);
  return waiting && !cancelled && scripts["WaitForUpdates"].empty() &&
         CountNoLock("WaitForUpdates") >= waits;
}

std::size_t FakeServer::CountNoLock(const std::string& method) const {
  return static_cast<std::size_t>(
      std::count_if(calls.begin(), calls.end(), [&](const Call& c) { return c.method == method; }));
}

void FakeServer::Invoke(const char*, const char* method, KELib::Xml::KEXmlBuffer& body,
                        KELib::KEString& result) {
  Serve({method, "", "", body.Str()}, result);
}

void FakeServer::Invoke(const char*, const char* method, const char* type, const char* value,
                        KELib::KEString& result) {
  Serve({method, type, value, ""}, result);
}

void FakeServer::Invoke(const char*, const char* method, const char* type, const char* value,
                        const char*, const char* argValue, KELib::KEString& result) {
  Serve({method, type, value, argValue}, result);
}

void FakeServer::Serve(const Call& call, KELib::KEString& result) {
  std::unique_lock<std::mutex> lock(mutex);
  calls.push_back(call);
  changed.notify_all();
  Answer answer = call.method == "WaitForUpdates" ? WaitForAnswer(lock) : NextAnswer(call.method);
  if (!answer && call.method == "CreateFilter") {
    answer = Text("<returnval type=\"PropertyFilter\">filter-" + std::to_string(++filters) +
                  "</returnval>");
  }
  lock.unlock();
  if (answer) result = answer().c_str();
  if (call.method == "CancelWaitForUpdates") Cancel();
}

FakeServer::Answer FakeServer::NextAnswer(const std::string& method) {
  std::deque<Answer>& script = scripts[method];
  if (script.empty()) return standing[method];
  Answer answer = script.front();
  script.pop_front();
  return answer;
}

FakeServer::Answer FakeServer::WaitForAnswer(std::unique_lock<std::mutex>& lock) {
  Answer answer;
  waiting = true;
  changed.notify_all();
  changed.wait(lock, [&] {
    if (!cancelled) answer = NextAnswer("WaitForUpdates");
    return answer || cancelled;
  });
  waiting = cancelled = false;
  return answer ? answer : Throw(KELib::SystemException("RequestCanceled"));
}

void FakeServer::Cancel() {
  std::lock_guard<std::mutex> guard(mutex);
  cancelled = waiting;
  changed.notify_all();
}
