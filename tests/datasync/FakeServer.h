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

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "service/call/KEMethod.h"

class FakeServer : public KE::Service::KEMethod {
 public:
  using Answer = std::function<std::string()>;
  struct Call {
    std::string method, type, value;
    std::string argument;  // the one argument, or the whole body
    std::chrono::steady_clock::time_point time = std::chrono::steady_clock::now();
  };

  static Answer Text(const std::string& text) {
    return [text] { return text; };
  }
  template <typename E>
  static Answer Throw(const E& error) {
    return [error]() -> std::string { throw error; };
  }

  // Scripts a method's next call, every call from now on, and the next wait.
  void Then(const std::string& method, const Answer& answer);
  void Always(const std::string& method, const Answer& answer);
  void Feed(const std::string& set) { Then("WaitForUpdates", Text(set)); }
  template <typename E>
  void FeedError(const E& error) {
    Then("WaitForUpdates", Throw(error));
  }

  // Blocks until at least that many calls were sent.
  void AwaitCalls(const std::string& method, std::size_t number);

  // Whether at least that many waits were sent, and the last has used up all answers and waits
  // itself: whatever was fed is applied.
  bool IsQuiet(std::size_t waits);

  // The calls so far; of every method when none is named.
  std::vector<Call> Calls(const std::string& method);
  std::size_t Count(const std::string& method) { return Calls(method).size(); }

  using KEMethod::Invoke;
  void Invoke(const char* ns, const char* method, KELib::Xml::KEXmlBuffer& body,
              KELib::KEString& result) override;
  void Invoke(const char* ns, const char* method, const char* type, const char* value,
              KELib::KEString& result) override;
  void Invoke(const char* ns, const char* method, const char* type, const char* value,
              const char* argName, const char* argValue, KELib::KEString& result) override;

 private:
  void Serve(const Call& call, KELib::KEString& result);
  Answer NextAnswer(const std::string& method);
  Answer WaitForAnswer(std::unique_lock<std::mutex>& lock);
  void Cancel();
  std::size_t CountNoLock(const std::string& method) const;

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
