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

TEST(HttpGet, StatusDoesNotDecide) {
  ByteChain answer;
  int32_t status = -1;
  EXPECT_EQ(GetToChain(Url("status-404").c_str(), answer, &status), 1);
  EXPECT_EQ(status, 404);
  EXPECT_GT(answer.Total(), 0u);
  EXPECT_EQ(GetToChain(Url("redirect").c_str(), answer, &status), 1);
  EXPECT_EQ(status, 302);
}

TEST(HttpGet, AnswerThatDoesNotComeEndsAtTheTimeLimit) {
  int32_t status = -1;
  constexpr TransferLimits kOneSecond{.total = 1, .connect = 1};
  EXPECT_FALSE(HttpGet(
      Url("slow").c_str(), [](auto) { return true; }, &status, kOneSecond));
  EXPECT_EQ(status, -1);
}

TEST(HttpGet, ChainLimitEndsAnAnswerThatIsTooLong) {
  for (const char* const fault : {"endless", "big"}) {
    ByteChain answer(kMaxAnswerBytes);
    int32_t status = -1;
    EXPECT_EQ(GetToChain(Url(fault).c_str(), answer, &status), 0) << fault;
    EXPECT_EQ(status, -1) << fault;
    EXPECT_LE(answer.Total(), kMaxAnswerBytes) << fault;
    EXPECT_GT(answer.Total(), kMaxAnswerBytes - 65536) << fault;
  }
}

TEST(HttpGet, WithoutALimitTheWholeAnswerArrivesUnlessItIsCut) {
  ByteChain whole;
  EXPECT_EQ(GetToChain(Url("big").c_str(), whole, nullptr), 1);
  EXPECT_EQ(whole.Total(), 5u * 1024 * 1024);
  ByteChain cut;
  EXPECT_EQ(GetToChain(Url("cut").c_str(), cut, nullptr), 0);
  EXPECT_GT(cut.Total(), 0u) << "the cut is after the first bytes";
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
