// SPDX-License-Identifier: MIT
//
// Stubs and links that count how many of them are alive, so that a test sees each deletion.
#ifndef KECPP_TESTS_STUB_COUNTEDSTUB_H
#define KECPP_TESTS_STUB_COUNTEDSTUB_H

namespace KE::Stub {

template <typename Base>
class Counted : public Base {
 public:
  explicit Counted(int& counter) : alive(counter) { ++alive; }
  ~Counted() override { --alive; }

 private:
  int& alive;
};

}  // namespace KE::Stub

#endif
