// SPDX-License-Identifier: MIT
#include "soap/SoapException.h"

namespace KELib::Soap {

SoapException::SoapException(const SoapException& other) : Exception() {
  *this = other;
}

SoapException& SoapException::operator=(const SoapException& other) {
  if (this == &other) return *this;
  std::unique_ptr<SoapFaultInfo> copy(other.faultInfo ? new SoapFaultInfo(*other.faultInfo)
                                                      : nullptr);
  Exception::operator=(other);
  // A message that was borrowed from the other's fault must not die with it.
  if (copy && What() == other.faultInfo->GetFaultString()) Borrow(copy->GetFaultString());
  faultInfo = std::move(copy);
  return *this;
}

SoapException::~SoapException() = default;

void SoapException::SetFaultInfo(SoapFaultInfo* info) {
  if (info == nullptr) return;
  Borrow(info->GetFaultString());
  if (info != faultInfo.get()) faultInfo.reset(info);
}

}  // namespace KELib::Soap
