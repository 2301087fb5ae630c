#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "devkit/report_server/report_server.h"

namespace ostrell {
namespace {

using testing::ElementsAreArray;

constexpr auto kKnown = "A9993E364706816ABA3E25717850C26C9CD0D89D";

using Names = std::vector<std::string>;

// The checks that a server does not pass, by the program's lines; its exit code has to say the
// same.
Names WrongAt(const std::string& url) {
  const std::string command =
      std::string(OSTRELL_CONFORMANCE) + " " + url + " --store-of-known " + kKnown;
  FILE* const lines = popen(command.c_str(), "r");
  std::array<char, 256> line{};
  Names wrong;
  int count = 0;
  for (; std::fgets(line.data(), line.size(), lines) != nullptr; ++count) {
    const std::string_view text(line.data());
    EXPECT_TRUE(text.starts_with("ok ") || text.starts_with("WRONG "));
    if (text.starts_with("WRONG ")) {
      wrong.emplace_back(text.substr(7, text.find("  ", 7) - 7));
    }
  }
  EXPECT_EQ(count, 19);
  EXPECT_EQ(WEXITSTATUS(pclose(lines)), wrong.empty() ? 0 : 1);
  return wrong;
}

TEST(Conformance, FindsEachFaultWhereItIs) {
  ReportServer server({.port = 0, .known = {kKnown}});
  std::string why;
  ASSERT_TRUE(server.Start(&why)) << why;
  const Names puts = {"PUT", "PUT of nothing", "PUT of 8 MiB", "PUT twice", "PUT with Expect"};
  Names uploads = {"ticket rc2", "ticket rc3", "ticket rc4",
                   "ticket rc5", "ticket rc7", "tickets differ"};
  uploads.insert(uploads.end(), puts.begin(), puts.end());
  const std::pair<const char*, Names> kExpected[] = {
      {"none", {}},          {"empty-header", {}},  {"status-404", {"rc1", "known sample"}},
      {"bad-size", {"rc1"}}, {"not-json", {"rc1"}}, {"no-url", uploads},
      {"ftp-url", uploads},  {"put-302", puts}};
  for (const auto& [fault, names] : kExpected) {
    EXPECT_THAT(WrongAt(server.Url() + "/fault/" + fault), ElementsAreArray(names)) << fault;
  }
  server.Stop();
  EXPECT_EQ(WrongAt(server.Url()).size(), 19U) << "nobody listens";
}

}  // namespace
}  // namespace ostrell
