#include "transport/upload_ticket.h"

#include "base/bytes.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

std::optional<UploadTicket> Read(std::string_view answer) {
  ByteChain chain;
  for (const char& byte : answer) {
    EXPECT_TRUE(chain.Append(BytesOf({&byte, 1})));
  }
  return ReadUploadTicket(chain);
}

TEST(UploadTicket, RecordedCases) {
  ExpectRecorded("upload_ticket", [](const std::string& answer, const auto&) {
    const auto ticket = Read(answer);
    std::string text = ticket ? ticket->url : "no ticket";
    for (const std::string& line : ticket.value_or(UploadTicket()).headerLines) {
      text += "|" + line;
    }
    return text;
  });
}

// An answer of so many elements whose one header line is all commas, which are none.
TEST(UploadTicket, ElementsAreBoundedNotBytes) {
  const std::string line(200000, ',');
  std::string answer = R"({"url":"http://h/","header":[")" + line + R"("],"n":[0)";
  for (size_t elements = 5; elements < 16384; ++elements) {
    answer += ",0";
  }
  EXPECT_EQ(Read(answer + "]}").value().headerLines, std::vector{line});
  EXPECT_FALSE(Read(answer + ",0]}"));
}

}  // namespace
}  // namespace ostrell
