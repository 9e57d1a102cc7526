// SPDX-License-Identifier: MIT
//
// Objects, or stubs and links, that count how many of them are alive, so that a test sees each
// deletion.
#ifndef KECPP_TESTS_SUPPORT_COUNTED_H
#define KECPP_TESTS_SUPPORT_COUNTED_H

struct PlainObject {
  virtual ~PlainObject() = default;
};

template <typename Base = PlainObject>
class Counted : public Base {
 public:
  explicit Counted(int& counter) : alive(counter) { ++alive; }
  ~Counted() override { --alive; }

 private:
  int& alive;
};

#endif
