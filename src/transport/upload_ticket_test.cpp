#include "transport/upload_ticket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/bytes.h"

namespace ostrell {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::optional<UploadTicket> Read(std::string_view answer) {
  ByteChain chain;
  for (const char& byte : answer) {
    EXPECT_TRUE(chain.Append(BytesOf({&byte, 1})));
  }
  return ReadUploadTicket(chain);
}

std::string Repeated(std::string_view text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

TEST(UploadTicket, HoldsUrlAndHeaderLines) {
  const auto ticket =
      Read(R"({"id":7,"header":["X-A: b","Content-Type: \u00e4"],"url":"https://h/p?q=1"})");
  ASSERT_TRUE(ticket);
  EXPECT_EQ(ticket->url, "https://h/p?q=1");
  EXPECT_THAT(ticket->headerLines, ElementsAre("X-A: b", "Content-Type: \xC3\xA4"));
}

TEST(UploadTicket, HeaderThatIsNoArrayHoldsNoLines) {
  for (const char* const header : {"[]", "{}", R"({"0":"X-A: b"})", "7", "null", R"("X-A: b")"}) {
    const auto ticket = Read(R"({"url":"http://h/","header":)" + std::string(header) + "}");
    ASSERT_TRUE(ticket) << header;
    EXPECT_THAT(ticket->headerLines, IsEmpty()) << header;
  }
}

TEST(UploadTicket, LargeAnswerOfFewElements) {
  const auto ticket = Read(R"({"url":"http://h/","header":["X: )" + std::string(200000, ',') +
                           R"("],"n":[)" + Repeated("{},", 8189) + "{}]}");
  ASSERT_TRUE(ticket);
  EXPECT_EQ(ticket->headerLines.front().size(), 200003u);
}

TEST(UploadTicket, Damage) {
  const struct {
    const char* name;
    std::string answer;
  } kCases[] = {
      {"empty", ""},
      {"no JSON", "<html></html>"},
      {"cut", R"({"url":"http://h/","header":[)"},
      {"text behind the object", R"({"url":"http://h/","header":[]} x)"},
      {"array", R"(["http://h/",[]])"},
      {"no url", R"({"header":[]})"},
      {"no header", R"({"url":"http://h/"})"},
      {"url is null", R"({"url":null,"header":[]})"},
      {"header line is a number", R"({"url":"http://h/","header":["X-A: b",7]})"},
      {"header line with CR", R"({"url":"http://h/","header":["X-A: b\rX-B: c"]})"},
      {"header line ends with LF", R"({"url":"http://h/","header":["X-A: b\n"]})"},
      {"header line with NUL", R"({"url":"http://h/","header":["X-A: b\u0000"]})"},
      {"url with NUL", R"({"url":"http://h/\u0000","header":[]})"},
      {"bytes that are no UTF-8", "{\"url\":\"http://h/\",\"header\":[\"X: \xFF\"]}"},
      {"integer past 64 bits", R"({"url":"http://h/","header":[],"n":9223372036854775808})"},
      {"nesting", R"({"url":"http://h/","header":[],"n":)" + std::string(3000, '[')},
      {"more elements than a ticket has",
       R"({"url":"http://h/","header":[],"n":[)" + Repeated("{},", 8191) + "{}]}"},
      {"url of another scheme", R"({"url":"file:///tmp/x","header":[]})"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_FALSE(Read(testCase.answer)) << testCase.name;
  }
}

}  // namespace
}  // namespace ostrell
