// SPDX-License-Identifier: MIT
#include "soap/SoapMessage.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "foundation/KEStringBuffer.h"
#include "http/HttpRequest.h"
#include "http/HttpResponse.h"
#include "soap/ReplyLength.h"
#include "soap/SoapConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KELib::Soap {

namespace {

using Xml::KEXmlCursor;
using Xml::KEXmlReader;
using Xml::XmlSlice;

// --- end tags, sought from behind ----------------------------------------------------------------

bool IsBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

std::size_t Distance(const char* from, const char* to) {
  return static_cast<std::size_t>(to - from);
}

bool IsEndTag(const char* at, const char* end, const XmlSlice& name) {
  if (Distance(at, end) < std::size_t{3} + name.length) return false;
  if (at[1] != '/' || std::memcmp(at + 2, name.text, name.length) != 0) return false;
  const char behind = at[2 + name.length];
  return behind == '>' || IsBlank(behind);
}

// The last end tag of `name`, null when there is none. What follows a reply's element is
// short, while its content may be the whole inventory: so the search runs backwards.
const char* FindLastEndTag(const char* begin, const char* end, const XmlSlice& name) {
  const char* before = end;
  while (const void* found = memrchr(begin, '<', Distance(begin, before))) {
    before = static_cast<const char*>(found);
    if (IsEndTag(before, end, name)) return before;
  }
  return nullptr;
}

// The content of an element; nothing but white space counts as nothing.
XmlSlice Content(const char* begin, const char* end) {
  if (std::all_of(begin, end, IsBlank)) return XmlSlice();
  return {begin, static_cast<unsigned int>(end - begin)};
}

// Runs a step that reads XML; malformed XML is a failure of the SOAP call.
template <typename Step>
void AsSoapException(Step step) {
  try {
    step();
  } catch (const Xml::XmlException& e) {
    KEString text(e.What());
    throw SoapException(text.Str(), text.Length());
  }
}

// --- the reply's first element -------------------------------------------------------------------

// Moves into the body, over whatever comes before it.
void EnterBody(KEXmlReader& reader, KEXmlCursor& cursor) {
  // A page of a web server is not well-formed, and it is not what the walk should complain about.
  if (std::strstr(reader.Str(), SOAP_BODY_TAG) == nullptr) throw SoapException(ERR_NO_SOAPBODY);
  XmlSlice name;
  for (;;) {
    if (cursor.NextChild(name)) {
      const bool hasContent = cursor.Enter();
      if (!name.Is(SOAP_BODY_TAG, SOAP_BODY_TAG_LEN)) continue;
      if (!hasContent) throw SoapException(ERR_NO_CONTENT);
      return;
    }
    if (!cursor.PassEndTag(name)) throw SoapException(ERR_NO_SOAPBODY);
  }
}

void NextReplyElement(KEXmlCursor& cursor, XmlSlice& name) {
  if (cursor.NextChild(name)) return;
  if (cursor.AtEnd()) throw Xml::XmlException(Xml::ERR_BAD_ELEM);
  throw SoapException(ERR_NO_CONTENT);
}

// Reads the element's name and namespace into `response` and returns its inner XML.
XmlSlice ReadReplyElement(KEXmlReader& reader, SoapResponse& response) {
  KEXmlCursor cursor(reader);
  EnterBody(reader, cursor);
  XmlSlice name;
  NextReplyElement(cursor, name);
  name.CopyTo(response.name);
  XmlSlice attribute, ns;
  if (!IsResponseFault(response) && cursor.NextAttribute(attribute, ns)) ns.CopyTo(response.ns);
  if (!cursor.Enter()) return XmlSlice();

  const char* begin = cursor.Position();
  const char* end = reader.Str() + reader.GetInputLength();
  const XmlSlice body{SOAP_BODY_TAG, SOAP_BODY_TAG_LEN};
  const char* bodyEnd = FindLastEndTag(begin, end, body);
  const char* stop = FindLastEndTag(begin, bodyEnd != nullptr ? bodyEnd : end, name);
  if (stop == nullptr) throw Xml::XmlException(Xml::ERR_BAD_ELEM);
  return Content(begin, stop);
}

// Makes a part of the text all of it, in place.
void CutOut(unsigned int offset, unsigned int length, KEString& text) {
  std::memmove(text.Str(), text.Str() + offset, length);
  text.Str()[length] = '\0';
}

// --- faults --------------------------------------------------------------------------------------

std::unique_ptr<SoapFaultInfo> NewFaultInfo(SoapResponse& response) {
  if (response.content.Empty()) throw SoapException(ERR_SERVER_FAULT_NO_CONTENT);
  KEString code, text, xml;
  return std::make_unique<SoapFaultInfo>(code, text, new SoapFaultDetail(xml));
}

// The cursor is in the start tag of the detail.
void ReadDetail(const XmlSlice& name, KEXmlCursor& cursor, SoapFaultDetail& detail) {
  if (!cursor.Enter()) return;
  const char* begin = cursor.Position();
  KEString typeName, xml;
  XmlSlice first;
  if (cursor.NextChild(first)) {
    first.CopyTo(typeName);
    cursor.SkipElement(first);
  }
  cursor.LeaveContent(name);
  Content(begin, cursor.Position()).CopyTo(xml);
  cursor.Leave(name);
  StripFaultSuffix(typeName);
  detail.SetFaultTypeName(typeName);
  detail.SetDetailXmlString(xml);
}

void ReadFault(SoapResponse& response, SoapFaultInfo& info) {
  KEXmlReader reader(response.content, true, 0);
  KEXmlCursor cursor(reader);
  XmlSlice name;
  KEStringBuffer joined;
  KEString text;
  while (cursor.NextChild(name)) {
    if (name.Is(FAULT_CODE_TAG, std::strlen(FAULT_CODE_TAG))) {
      cursor.Text(name, joined).CopyTo(text);
      info.SetFaultCode(text);
    } else if (name.Is(FAULT_STRING_TAG, std::strlen(FAULT_STRING_TAG))) {
      cursor.Text(name, joined).CopyTo(text);
      info.SetFaultString(text);
    } else if (name.Is(FAULT_DETAIL_TAG, std::strlen(FAULT_DETAIL_TAG))) {
      ReadDetail(name, cursor, *info.detail);
    } else {
      cursor.SkipElement(name);
    }
  }
}

}  // namespace

// --- requests and replies ------------------------------------------------------------------------

void EncloseMessageContent(SoapRequest& request, Http::HttpRequest& httpRequest) {
  const std::size_t around = std::strlen(SOAP_START) + std::strlen(SOAP_END);
  KEStringBuffer text(static_cast<unsigned int>(around) + request.content.Length());
  text.Append(SOAP_START);
  text.Append(request.content);
  text.Append(SOAP_END);
  httpRequest.SetContent(text);
}

void ExtractMessageContent(KEString& content, SoapResponse& response) {
  if (content.Empty()) throw SoapException(ERR_NO_CONTENT);
  KEXmlReader reader(content, false, 0);
  XmlSlice inner;
  AsSoapException([&] { inner = ReadReplyElement(reader, response); });
  const bool empty = inner.length == 0;
  const unsigned int offset = empty ? 0 : static_cast<unsigned int>(inner.text - reader.Str());
  KEString text;
  reader.MoveContentTo(text);
  CutOut(offset, inner.length, text);
  ReplyLength::Note(text, inner.length);
  response.SetContent(text);
  StripResponseSuffix(response.name);
}

void ThrowExceptionOnRequestError(Http::HttpResponse& httpResponse) {
  if (httpResponse.IsRequestError()) {
    KEString text(ERR_REQUEST);
    text.Append(httpResponse.GetErrorCode());
    text.Append(ERR_REQUEST_STR);
    text.Append(httpResponse.GetErrorString());
    throw SoapException(text.Str(), text.Length());
  }
  if (httpResponse.GetContent().Empty()) throw SoapException(ERR_NO_RESPONSE);
}

// Also where the suffix is in the middle: names are cut at its first occurrence.
void StripSuffix(const char* suffix, KEString& text) {
  const unsigned int at = text.Find(suffix, 0);
  if (at != KEString::NPos) text.Erase(at, text.Length());
}

void StripResponseSuffix(KEString& text) {
  StripSuffix(SOAP_RESPONSE_SUFFIX, text);
}

void StripFaultSuffix(KEString& text) {
  StripSuffix(FAULT_TAG_SUFFIX, text);
}

// --- faults --------------------------------------------------------------------------------------

bool IsResponseFault(SoapResponse& response) {
  return response.name.Find(FAULT_TAG, 0) != KEString::NPos;
}

void ExtractFaultInfo(SoapResponse& response, SoapFaultInfo*& info) {
  info = NewFaultInfo(response).release();
  AsSoapException([&] { ReadFault(response, *info); });
}

void ThrowExceptionIfFault(SoapResponse& response) {
  if (!IsResponseFault(response)) return;
  std::unique_ptr<SoapFaultInfo> info = NewFaultInfo(response);
  AsSoapException([&] { ReadFault(response, *info); });
  SoapException fault;
  const char* typeName = info->detail->GetFaultTypeName();
  fault.SetFaultInfo(info.release());
  fault.Init(typeName, 0);
  throw fault;
}

}  // namespace KELib::Soap
