#include "transport/upload_ticket.h"

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

std::optional<UploadTicket> Read(std::string_view answer) {
  ByteChain chain;
  for (const char& byte : answer) {
    EXPECT_TRUE(chain.Append(BytesOf({&byte, 1})));
  }
  return ReadUploadTicket(chain);
}

// An answer of so many elements whose one header line is all commas, which are none.
std::string AnswerOf(size_t elements) {
  std::string answer = R"({"url":"http://h/","header":[")" + std::string(200000, ',');
  answer += R"("],"n":[0)";
  for (size_t i = 5; i < elements; ++i) {
    answer += ",0";
  }
  return answer + "]}";
}

// A case without a URL is of answers that are no tickets.
TEST(UploadTicket, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("upload_ticket")) {
    for (const std::string& answer : recorded.All("input")) {
      SCOPED_TRACE(recorded.Name() + ": " + answer);
      const auto ticket = Read(answer);
      ASSERT_EQ(ticket.has_value(), recorded.Has("url"));
      if (ticket) {
        EXPECT_EQ(ticket->url, recorded["url"]);
        EXPECT_EQ(ticket->headerLines, recorded.All("line"));
      }
    }
  }
}

TEST(UploadTicket, ElementsAreBoundedNotBytes) {
  const auto ticket = Read(AnswerOf(16384));
  ASSERT_TRUE(ticket);
  EXPECT_EQ(ticket->headerLines.front().size(), 200000u);
  EXPECT_FALSE(Read(AnswerOf(16385)));
}

}  // namespace
}  // namespace ostrell
