// SPDX-License-Identifier: MIT
#include "tools/agent/indications/EventText.h"

#include <cstdio>
#include <ctime>

#include "tools/agent/ObjectElements.h"
#include "tools/agent/XmlWriter.h"

namespace tools::agent {
namespace {

constexpr ElementStyle INSTANCE = {Shape::Instance, "", false};

std::string InstanceText(const ClassRow& type, const Rows& rows) {
  const auto columns = PropertiesOf(type);
  const Element element = type.isAssociation ? LinkElement(INSTANCE, type, columns)
                                             : ObjectElement(INSTANCE, type, columns);
  XmlWriter out;
  element.Write(rows, 0, out);
  return out.Take();
}

void WriteInstance(XmlWriter& out, const char* property, const ClassRow& type, const Rows& rows) {
  out.Open("PROPERTY", {{"NAME", property}, {"TYPE", "string"}, {"EmbeddedObject", "object"}});
  out.Open("VALUE");
  out.Text(InstanceText(type, rows));
  out.Close("VALUE");
  out.Close("PROPERTY");
}

void WriteText(XmlWriter& out, const char* property, const std::string& text) {
  out.Open("PROPERTY", {{"NAME", property}, {"TYPE", "string"}});
  out.Open("VALUE");
  out.Text(text);
  out.Close("VALUE");
  out.Close("PROPERTY");
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string ObjectPath(const ClassRow& type, std::string_view xmlKey) {
  return std::string(NAMESPACE_NAME) + ":" + type.name + "." + CREATION_CLASS_NAME + "=" +
         Quoted(type.name) + "," + type.key->name + "=" + Quoted(kecpp::Decode(xmlKey));
}

std::string PathOf(const ClassRow& type, const Rows& rows) {
  const std::string_view first = *rows.At(0, 0);
  if (!type.isAssociation) return ObjectPath(type, first);
  return std::string(NAMESPACE_NAME) + ":" + type.name + "." + type.properties[0].name + "=" +
         Quoted(ObjectPath(OriginOf(type), first)) + "," + type.properties[1].name + "=" +
         Quoted(ObjectPath(ResultOf(type), *rows.At(0, 1)));
}

}  // namespace

std::shared_ptr<const EventText> WriteEvent(const Event& event, const std::string& host) {
  XmlWriter out;
  WriteInstance(out, "SourceInstance", *event.source, *event.now);
  WriteText(out, "SourceInstanceModelPath", PathOf(*event.source, *event.now));
  WriteText(out, "SourceInstanceHost", host);
  if (event.before) WriteInstance(out, "PreviousInstance", *event.source, *event.before);
  return std::make_shared<const EventText>(
      EventText{INDICATION_CLASSES[static_cast<std::size_t>(event.type)],
                CimTime(std::chrono::system_clock::now()), out.Take()});
}

std::string CimTime(std::chrono::system_clock::time_point time) {
  const auto micros =
      std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
  const std::time_t seconds = static_cast<std::time_t>(micros / 1000000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[64];
  std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d.%06d+000", parts.tm_year + 1900,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                static_cast<int>(micros % 1000000));
  return text;
}

std::chrono::system_clock::time_point ReadCimTime(const std::string& text) {
  std::tm parts{};
  const char* rest = strptime(text.c_str(), "%Y%m%d%H%M%S", &parts);
  return std::chrono::system_clock::from_time_t(rest ? timegm(&parts) : 0);
}

}  // namespace tools::agent
