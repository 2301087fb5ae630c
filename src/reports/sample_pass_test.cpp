#include "reports/sample_pass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/fake_machine.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

std::string PathOf(PathOfRecord* pathOf, const char* text) {
  const JsonOwner record(json_loads(text, 0, nullptr));
  return std::string(pathOf(record.Get()).value_or("-"));
}

TEST(SamplePath, OfEachKindOfPass) {
  const struct {
    PathOfRecord* pathOf;
    const char* record;
    const char* path;  // "-": skipped
  } cases[] = {
      {SubmittedSamplePath, R"({"detail": {"pathname": "d"}, "processes": {"master": {}}})", "d"},
      {SubmittedSamplePath,
       R"({"detail": {"pathname": 1}, "processes": {"master": {"pathname": "m"}}})", "m"},
      {SubmittedSamplePath, R"({"detail": {"processes": {"master": {"pathname": "m"}}}})", "-"},
      {SubmittedSamplePath, R"({"processes": {"master": {"pathname": "m"}}})", "m"},
      {SubmittedSamplePath, R"({})", "-"},
      {SubmittedSamplePath, R"([])", "-"},
      {NetworkProgramPath, R"({"detail": {"procname": "C:\\a.exe"}})", "C:\\a.exe"},
      {NetworkProgramPath, R"({"detail": {"procname": "SysTEM"}})", "-"},
      {NetworkProgramPath, R"({"detail": {"procname": "idle"}})", "-"},
      {NetworkProgramPath, R"({"detail": {"procname": "system32"}})", "system32"},
      {NetworkProgramPath, R"({"detail": {"procname": "sys"}})", "sys"},
      {NetworkProgramPath, R"({"procname": "a"})", "-"},
      {FalsePositivePath,
       R"({"detail": {"solid": 0, "result": 0, "pathname": "p", "recname": "vIRUS/"}})", "p"},
      {FalsePositivePath,
       R"({"detail": {"solid": 4294967296, "result": 0, "pathname": "p", "recname": "Virus/A"}})",
       "p"},
      {FalsePositivePath,
       R"({"detail": {"solid": 1, "result": 0, "pathname": "p", "recname": "Virus/A"}})", "-"},
      {FalsePositivePath,
       R"({"detail": {"solid": 0, "result": 2, "pathname": "p", "recname": "Virus/A"}})", "-"},
      {FalsePositivePath,
       R"({"detail": {"solid": 0, "result": 0, "pathname": "p", "recname": "A/Virus/"}})", "-"},
      {FalsePositivePath, R"({"detail": {"solid": 0, "pathname": "p", "recname": "Virus/A"}})",
       "-"},
      {FalsePositivePath, R"({"detail": {"result": 0, "pathname": "p", "recname": "Virus/A"}})",
       "-"},
      {FalsePositivePath, R"({"detail": {"solid": 0, "result": 0, "recname": "Virus/A"}})", "-"},
  };
  for (const auto& [pathOf, record, path] : cases) {
    EXPECT_EQ(PathOf(pathOf, record), path) << record;
  }
}

// Computed by another program.
TEST(PathKey, LowersAsciiLettersAlone) {
  EXPECT_EQ(PathKey("C:\\Users\\\xC3\x89\\SETUP.exe"), 0xd58a172ba4719513);
  EXPECT_NE(PathKey("C:\\Users\\\xC3\xA9\\SETUP.exe"), 0xd58a172ba4719513);
  EXPECT_EQ(PathKey(""), 0x6ff17dd88d816f37);
}

JsonOwner Records(const std::vector<std::string>& paths) {
  JsonOwner records(json_array());
  for (const std::string& path : paths) {
    json_array_append_new(records.Get(),
                          json_pack("{s:{s:s}}", "detail", "procname", path.c_str()));
  }
  return records;
}

TEST(SamplePass, EachFileOnce) {
  // Ten thousand spellings of one path: the bits of a number choose the case of its letters.
  std::vector<std::string> spellings;
  for (int i = 0; i < 10000; ++i) {
    std::string path = "c:\\abcdefghijklmn.exe";
    for (int bit = 0; bit < 14; ++bit) {
      path[3 + bit] = static_cast<char>(path[3 + bit] - (i >> bit & 1) * ('a' - 'A'));
    }
    spellings.push_back(path);
  }
  spellings.emplace_back("c:\\other.exe");
  PathKeys handled(kMaxPathKeys);
  std::vector<std::string> submitted;
  const auto submit = [&](std::string_view path) { submitted.emplace_back(path); };
  const FakeClock clock(0);
  RunSamplePass(Records(spellings), NetworkProgramPath, handled, submit, clock);
  EXPECT_THAT(submitted, ElementsAre("c:\\abcdefghijklmn.exe", "c:\\other.exe"));

  RunSamplePass(Records({"C:\\OTHER.EXE", "c:\\third.exe"}), NetworkProgramPath, handled, submit,
                clock);
  EXPECT_EQ(submitted.size(), 3u);
  RunSamplePass({}, NetworkProgramPath, handled, submit, clock);
}

TEST(SamplePass, EndsWhenTheTimeIsSpent) {
  PathKeys handled(kMaxPathKeys);
  std::vector<std::string> submitted;
  FakeClock clock(5000);
  const auto submit = [&](std::string_view path) {
    submitted.emplace_back(path);
    clock.now += 450;
  };
  RunSamplePass(Records({"a", "b", "c", "d", "e"}), NetworkProgramPath, handled, submit, clock);
  EXPECT_THAT(submitted, ElementsAre("a", "b", "c"));  // the third begins at 900 seconds sharp
}

}  // namespace
}  // namespace ostrell
