// SPDX-License-Identifier: MIT
#include "stub/base/KEAssocStubBase.h"

namespace KELib::Stub {

namespace {

// A string around somebody else's characters, which it gives back in every case.
class BorrowedText {
 public:
  explicit BorrowedText(const char* text) { string.Attach(const_cast<char*>(text)); }
  ~BorrowedText() {
    char* given = nullptr;
    string.Detach(given);
  }
  BorrowedText(const BorrowedText&) = delete;
  BorrowedText& operator=(const BorrowedText&) = delete;

  KEString string;
};

}  // namespace

KEAssocStubBase::~KEAssocStubBase() = default;

const char* KEAssocStubBase::GetOriginRole() {
  return "";
}
const char* KEAssocStubBase::GetResultRole() {
  return "";
}
const char* KEAssocStubBase::GetOriginClassName() {
  return "";
}
const char* KEAssocStubBase::GetResultClassName() {
  return "";
}
const char* KEAssocStubBase::GetKey(KEString&) {
  return "";
}
bool KEAssocStubBase::KeyEquals(const char*, const char*) {
  return false;
}
KEStubBase* KEAssocStubBase::GetAssocInstance(KEString&) {
  return nullptr;
}
KEStubBase* KEAssocStubBase::GetAssocInstance(const char*) {
  return nullptr;
}

const char* KEAssocStubBase::GetKey(const char* endClassName) {
  BorrowedText name(endClassName);
  return GetKey(name.string);
}

}  // namespace KELib::Stub
