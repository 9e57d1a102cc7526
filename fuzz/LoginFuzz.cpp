// SPDX-License-Identifier: MIT
//
// The service content and the answers to a login, separated by NULs: a session is made, logs in
// with a ticket or with a password, and logs out.
#include <memory>

#include "config/KEConfig.h"
#include "datasync/FakeServer.h"
#include "fuzz/Fuzz.h"
#include "service/entry/KESession.h"
#include "service/entry/ServiceContent.h"
#include "xml/KEXmlBuffer.h"
#include "xml/XmlException.h"

namespace {

using KELib::KEString;

const char kTicket[] =
    "<?xml version=\"1.0\"?><Config><LoginInfo><localTicket>true</localTicket>"
    "<userName>root</userName></LoginInfo></Config>";
const char kPassword[] =
    "<?xml version=\"1.0\"?><Config><LoginInfo><localTicket>false</localTicket>"
    "<userName>r&amp;d</userName><password>a&lt;b</password></LoginInfo></Config>";

// The server names a file with the password; the machine's own files are left alone.
bool NamesForeignFile(const std::string& ticket) {
  KEString content(ticket.c_str()), path;
  try {
    KE::Service::ServiceContent(content).Text("passwordFilePath", path);
  } catch (const KELib::Xml::XmlException&) {
  }
  return fuzz::Contains(path.Cstr(), "/");
}

void CheckContent(const std::string& text) {
  KEString content(text.c_str());
  for (const char* name : {"rootFolder", "about", "apiVersion"}) {
    try {
      KE::Service::ServiceContent reader(content);
      KEString value;
      reader.Text(name, value);
      FUZZ_CHECK(fuzz::Contains(text, value.Cstr()));
      const auto reference = reader.Reference(name);
      FUZZ_CHECK(fuzz::Contains(text, reference->value.Cstr()));
    } catch (const KELib::Xml::XmlException&) {
    }
    FUZZ_CHECK(text == content.Cstr());
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const bool byTicket = input.Byte() % 2 == 1;
  const std::string content = input.Until('\0'), ticket = input.Until('\0');
  const std::string login = input.Until('\0');
  CheckContent(content);
  if (NamesForeignFile(ticket)) return 0;

  FakeServer server;
  server.Always("AcquireLocalTicket", FakeServer::Text(ticket));
  server.Always("Login", FakeServer::Text(login));
  KEString source(byTicket ? kTicket : kPassword), text(content.c_str());
  const std::unique_ptr<KELib::KEConfig> config(KELib::CreateConfig(source, kTicket));
  std::unique_ptr<KE::Service::KESession> session;
  try {
    session.reset(KE::Service::CreateSession(config.get(), &server, text));
  } catch (const KELib::Xml::XmlException&) {
  }
  FUZZ_CHECK(content == text.Cstr());
  if (session == nullptr) return 0;
  FUZZ_CHECK(server.Count("Login") == 1);
  session->Logout();
  session->Logout();
  FUZZ_CHECK(server.Count("Logout") == 1);
  return 0;
}
