#include "unified/log_stats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_run.h"

// Whole collections are recorded cases of tests/jobs.

namespace ostrell {
namespace {

TEST(LogStats, WhatLimitsLeaveOutIsLogged) {
  FakeRun fake;
  std::string& content = fake.files.At(L"protsvc.log").content;
  const std::string line = "[2025-03-01 12:00:00] 0 failed\n";
  std::string log = "0 failed\n[2025-03-01 12:00:00] 0 failed, first\n";
  for (int i = 0; i < 65535; ++i) {
    log += line;
  }
  content = log + line + "[2025-03-01 12:00:00] 1 failed\n" + line;
  std::vector<LogMatch> matches;
  EXPECT_EQ(collect_matching_entries(fake.Get(), L"protsvc.log", "0 Failed", 0, matches), 65536);
  EXPECT_EQ(matches.size(), 65536u);
  EXPECT_EQ(matches.at(0).line, "[2025-03-01 12:00:00] 0 failed, first");
  content = line.substr(0, 30) + std::string(size_t{16} << 20, '.');
  EXPECT_EQ(collect_matching_entries(fake.Get(), L"protsvc.log", "0 Failed", 0, matches), 1);
  EXPECT_THAT(fake.messages,
              testing::ElementsAre(
                  "collect_matching_entries Limits of file protsvc.log: left out 2 matches, the "
                  "rest of 0 lines",
                  "collect_matching_entries File protsvc.log processed, found 65536 matches",
                  "collect_matching_entries Limits of file protsvc.log: left out 0 matches, the "
                  "rest of 1 lines",
                  "collect_matching_entries File protsvc.log processed, found 1 matches"));
  EXPECT_EQ(collect_matching_entries(fake.Get(), L"gone.log", "0 failed", 0, matches), 0);
  EXPECT_EQ(fake.messages.back(), "collect_matching_entries Failed to open file: gone.log");
}

}  // namespace
}  // namespace ostrell
