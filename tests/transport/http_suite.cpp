#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/server_record.h"
#include "transport/http.h"

// Transfers against a running report server.

namespace ostrell {
namespace {

// Of a ticket request, so that the answers are tickets.
std::string Url(std::string_view fault) {
  return ReportUrlOf("rc2", FreshToken(), fault) + "&o=0";
}

// The server's certificate is made out to 127.0.0.1.
TEST(HttpGet, CertificateMayBeOfAnotherNameAndWithoutALimitTheWholeAnswerArrives) {
  std::string url = Url("big");
  url.replace(url.find("127.0.0.1"), 9, "localhost");
  ByteChain answer;
  int32_t status = -1;
  EXPECT_EQ(GetToChain(url.c_str(), answer, &status), 1);
  EXPECT_EQ(status, 200);
  EXPECT_EQ(answer.Total(), 5u * 1024 * 1024);
}

TEST(HttpGet, AnswerThatDoesNotComeEndsAtTheTimeLimit) {
  int32_t status = -1;
  constexpr TransferLimits kOneSecond{.total = 1, .connect = 1};
  EXPECT_FALSE(HttpGet(Url("slow").c_str(), DiscardBody, &status, kOneSecond));
  EXPECT_EQ(status, -1);
}

TEST(HttpGet, SinkThatRefusesOrThrowsEndsTheTransferAtOnce) {
  int blocks = 0;
  const auto refuse = [&blocks](auto) { return ++blocks < 0; };
  EXPECT_FALSE(HttpGet(Url("big").c_str(), refuse, nullptr));
  EXPECT_EQ(blocks, 1);
  const auto fail = [](auto) -> bool { throw std::runtime_error("no room"); };
  EXPECT_FALSE(HttpGet(Url("big").c_str(), fail, nullptr));
}

}  // namespace
}  // namespace ostrell
