// SPDX-License-Identifier: MIT
#include "soap/SoapFaultInfo.h"

#include <utility>

namespace KELib::Soap {

namespace {

// A copy of the text as an array. An empty string hands out a buffer that is shared by all.
char* Take(KEString& text) {
  if (text.Empty()) return new char[1]();
  char* taken = nullptr;
  text.Detach(taken);
  return taken;
}

char* Copy(const char* text) {
  KEString copy(text);
  return Take(copy);
}

void Replace(char*& field, char* text) {
  delete[] field;
  field = text;
}

}  // namespace

SoapFaultDetail::SoapFaultDetail(KEString& xml) : faultTypeName(nullptr), detailXml(nullptr) {
  std::unique_ptr<char[]> name(new char[1]());
  detailXml = Take(xml);
  faultTypeName = name.release();
}

SoapFaultDetail::SoapFaultDetail(const SoapFaultDetail& other)
    : faultTypeName(nullptr), detailXml(nullptr) {
  std::unique_ptr<char[]> name(Copy(other.faultTypeName));
  detailXml = Copy(other.detailXml);
  faultTypeName = name.release();
}

SoapFaultDetail& SoapFaultDetail::operator=(const SoapFaultDetail& other) {
  SoapFaultDetail copy(other);
  std::swap(faultTypeName, copy.faultTypeName);
  std::swap(detailXml, copy.detailXml);
  return *this;
}

SoapFaultDetail::~SoapFaultDetail() {
  delete[] faultTypeName;
  delete[] detailXml;
}

void SoapFaultDetail::SetFaultTypeName(KEString& name) {
  Replace(faultTypeName, Take(name));
}

void SoapFaultDetail::SetDetailXmlString(KEString& xml) {
  Replace(detailXml, Take(xml));
}

SoapFaultInfo::SoapFaultInfo(KEString& code, KEString& string, SoapFaultDetail* faultDetail)
    : faultCode(nullptr), faultString(nullptr), detail(faultDetail) {
  std::unique_ptr<char[]> taken(Take(code));
  faultString = Take(string);
  faultCode = taken.release();
}

SoapFaultInfo::SoapFaultInfo(const SoapFaultInfo& other)
    : faultCode(nullptr),
      faultString(nullptr),
      detail(other.detail ? new SoapFaultDetail(*other.detail) : nullptr) {
  std::unique_ptr<char[]> code(Copy(other.faultCode));
  faultString = Copy(other.faultString);
  faultCode = code.release();
}

SoapFaultInfo& SoapFaultInfo::operator=(const SoapFaultInfo& other) {
  SoapFaultInfo copy(other);
  std::swap(faultCode, copy.faultCode);
  std::swap(faultString, copy.faultString);
  std::swap(detail, copy.detail);
  return *this;
}

SoapFaultInfo::~SoapFaultInfo() {
  delete[] faultCode;
  delete[] faultString;
}

void SoapFaultInfo::SetFaultCode(KEString& code) {
  Replace(faultCode, Take(code));
}

void SoapFaultInfo::SetFaultString(KEString& string) {
  Replace(faultString, Take(string));
}

void SoapFaultInfo::SetSoapFaultDetail(SoapFaultDetail* faultDetail) {
  if (faultDetail != detail.get()) detail.reset(faultDetail);
}

}  // namespace KELib::Soap
