// SPDX-License-Identifier: MIT
#include "soap/SoapMessage.h"

#include "http/HttpResponse.h"
#include "soap/ReplyLength.h"
#include "soap/SoapResponse.h"
#include "support/Answers.h"

namespace KELib::Soap {
namespace {

std::string Enveloped(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- soapenv:Body <a -->\r\n"
         "<soapenv:Envelope xmlns:xsd=\"a>b\" xmlns:soapenv='http://x/'>\r\n"
         "<soapenv:Header><s:id xmlns:s=\"s\">soapenv:Body</s:id><s:none/></soapenv:Header>\r\n"
         "<soapenv:Body id=\"1\">" +
         body + "</soapenv:Body>\r\n</soapenv:Envelope>\r\n";
}

// The parts that were cut out of a whole reply, without copying it.
std::string Extracted(const std::string& reply) {
  KEString content(reply.c_str());
  const char* const buffer = content.Cstr();
  SoapResponse response;
  const ReplyLength length;
  ExtractMessageContent(content, response);
  EXPECT_EQ(response.content.Length(), length.Of(response.content));
  EXPECT_EQ(buffer, response.content.Cstr()) << "the reply was copied";
  return std::string("[") + response.ns.Cstr() + "] [" + response.name.Cstr() + "] [" +
         response.content.Cstr() + "]";
}

TEST(SoapMessage, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/replies.txt",
                {{"body", [](const Row& row) { return Extracted(Enveloped(row[1])); }},
                 {"reply", [](const Row& row) { return Extracted(row[1]); }}});
}

TEST(SoapMessage, ALengthIsThatOfItsReplyOnly) {
  KEString reply(std::string(100000, 'x').c_str()), other("other");
  const ReplyLength outer;
  {
    const ReplyLength length;
    ReplyLength::Note(reply, 100000);
    reply.Str()[1] = '\0';  // nobody does that to a reply: only a look at all of it would show it
    EXPECT_EQ(100000U, length.Of(reply));
    EXPECT_EQ(5U, length.Of(other));
    ReplyLength::Note(other, 3);
    EXPECT_EQ(5U, length.Of(other)) << "it does not end there";
    ReplyLength::Note(reply, 100000);
    ReplyLength::Forget();
    EXPECT_EQ(1U, length.Of(reply));
    ReplyLength::Note(reply, 100000);
  }
  EXPECT_EQ(1U, outer.Of(reply));
}

TEST(SoapMessage, IsRefusedWhereverItBreaksOff) {
  const std::string whole = Enveloped("<AResponse xmlns=\"u\"><r>1</r></AResponse>");
  const std::size_t end = whole.find("</soapenv:Body>");
  for (std::size_t size = whole.find("<soapenv:Body id") + 13; size < end; ++size) {
    const std::string cut = whole.substr(0, size);
    EXPECT_EQ("SoapException: Malformed XML. Missing element end.", Thrown([&] { Extracted(cut); }))
        << cut;
  }
  EXPECT_EQ("[u] [A] [<r>1</r>]", Extracted(whole.substr(0, end)));
}

TEST(SoapMessage, ATransfersErrorComesBeforeItsContent) {
  Http::HttpResponse response;
  response.SetErrorCode(56);
  response.SetErrorString("100%s lost");
  response.AddContent("<part", 5);
  EXPECT_EQ("SoapException: HTTP Request Error. Code: 56 Message: 100%s lost",
            Thrown([&] { ThrowExceptionOnRequestError(response); }));
}

}  // namespace
}  // namespace KELib::Soap
