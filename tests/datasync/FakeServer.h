// SPDX-License-Identifier: MIT
//
// Stands in the place of the server: answers calls as a test has scripted them and keeps a record.
//
// A call takes the method's next scripted answer, or else its standing one. "CreateFilter" hands
// out filter-1, filter-2 and so on; "WaitForUpdates" without an answer waits for one and is ended
// by "CancelWaitForUpdates"; anything else answers nothing.
//
// Thread safety: every operation from any thread. Answers run on the caller's thread, unlocked.
#ifndef KECPP_TESTS_DATASYNC_FAKESERVER_H
#define KECPP_TESTS_DATASYNC_FAKESERVER_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "foundation/KEException.h"
#include "http/CallLimits.h"
#include "service/call/KEMethod.h"
#include "xml/KEXmlBuffer.h"

class FakeServer : public KE::Service::KEMethod {
 public:
  using Answer = std::function<std::string()>;
  struct Call {
    std::string method, type, value;
    std::string argument;  // the one argument, or the whole body
    int limit = AnswerLimit();
    std::chrono::steady_clock::time_point time = std::chrono::steady_clock::now();
  };

  // How many milliseconds the caller lets a call stay unanswered; 0: no limit.
  static int AnswerLimit() {
    const auto* scope = KELib::Http::CallLimits::Current();
    return scope != nullptr ? scope->AnswerLimit() : 0;
  }

  static Answer Text(const std::string& text) {
    return [text] { return text; };
  }
  template <typename E>
  static Answer Throw(const E& error) {
    return [error]() -> std::string { throw error; };
  }

  // Scripts a method's next call, every call from now on, and the next wait.
  void Then(const std::string& method, const Answer& answer) {
    std::lock_guard<std::mutex> guard(mutex);
    scripts[method].push_back(answer);
    changed.notify_all();
  }
  void Always(const std::string& method, const Answer& answer) {
    std::lock_guard<std::mutex> guard(mutex);
    standing[method] = answer;
    changed.notify_all();
  }
  void Feed(const std::string& set) { Then("WaitForUpdates", Text(set)); }
  template <typename E>
  void FeedError(const E& error) {
    Then("WaitForUpdates", Throw(error));
  }

  // The calls so far; of every method when none is named.
  std::vector<Call> Calls(const std::string& method) {
    std::lock_guard<std::mutex> guard(mutex);
    std::vector<Call> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const Call& call) { return method.empty() || call.method == method; });
    return found;
  }
  std::size_t Count(const std::string& method) { return Calls(method).size(); }

  // Blocks until at least that many calls were sent.
  void AwaitCalls(const std::string& method, std::size_t number) {
    while (Count(method) < number) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  // Whether at least that many waits were sent, and the last has used up all answers and waits
  // itself: whatever was fed is applied.
  bool IsQuiet(std::size_t waits) {
    if (Count("WaitForUpdates") < waits) return false;
    std::lock_guard<std::mutex> guard(mutex);
    return waiting && !cancelled && scripts["WaitForUpdates"].empty();
  }

  using KEMethod::Invoke;
  void Invoke(const char*, const char* method, KELib::Xml::KEXmlBuffer& body,
              KELib::KEString& result) override {
    Serve({method, "", "", body.Str()}, result);
  }
  void Invoke(const char*, const char* method, const char* type, const char* value,
              KELib::KEString& result) override {
    Serve({method, type, value, ""}, result);
  }
  void Invoke(const char*, const char* method, const char* type, const char* value, const char*,
              const char* argument, KELib::KEString& result) override {
    Serve({method, type, value, argument}, result);
  }

 private:
  void Serve(const Call& call, KELib::KEString& result) {
    std::unique_lock<std::mutex> lock(mutex);
    calls.push_back(call);
    Answer answer = NextAnswer(call.method);
    if (!answer && call.method == "WaitForUpdates") answer = AwaitAnswer(lock);
    if (!answer && call.method == "CreateFilter") {
      answer = Text("<returnval type=\"PropertyFilter\">filter-" + std::to_string(++filters) +
                    "</returnval>");
    }
    lock.unlock();
    if (answer) result = answer().c_str();
    if (call.method != "CancelWaitForUpdates") return;
    lock.lock();
    cancelled = waiting;
    changed.notify_all();
  }

  Answer NextAnswer(const std::string& method) {
    std::deque<Answer>& script = scripts[method];
    if (script.empty()) return standing[method];
    Answer answer = script.front();
    script.pop_front();
    return answer;
  }

  Answer AwaitAnswer(std::unique_lock<std::mutex>& lock) {
    Answer answer;
    waiting = true;
    changed.wait(lock, [&] {
      if (!cancelled) answer = NextAnswer("WaitForUpdates");
      return answer || cancelled;
    });
    waiting = cancelled = false;
    return answer ? answer : Throw(KELib::SystemException("RequestCanceled"));
  }

  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Call> calls;
  std::map<std::string, std::deque<Answer>> scripts;
  std::map<std::string, Answer> standing;
  unsigned int filters = 0;
  bool waiting = false;
  bool cancelled = false;
};

#endif
