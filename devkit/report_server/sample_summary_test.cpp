#include "devkit/report_server/sample_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace ostrell {
namespace {

using testing::HasSubstr;

constexpr int64_t kNow = 1793527200;

constexpr auto kRecords =
    R"([{"ts": 1793520000, "fid": -2147483647, "detail": {"pathname": "C:\\Users\\a.exe"}}])";

constexpr auto kKnown =
    R"({"report": "rc3", "method": "GET", "status": 200,
        "query": {"h": "AB", "t": "2", "p": "C:\\Users\\a.exe"}})";
constexpr auto kUnknown =
    R"({"report": "rc3", "method": "GET", "status": 404,
        "query": {"h": "AB", "t": "2", "p": "C:\\Users\\a.exe"}})";
constexpr auto kStranger =
    R"({"report": "rc3", "method": "GET", "status": 200,
        "query": {"h": "CD", "t": "2", "p": "C:\\Users\\b.exe"}})";
constexpr auto kUpload =
    R"({"report": "rc3", "method": "PUT", "status": 200, "query": {"h": "AB", "o": "12"},
        "unpacked": 2000, "digest": "ok", "zlib": "ok", "json": "none"})";
constexpr auto kDamaged =
    R"({"report": "rc3", "method": "PUT", "status": 200, "query": {"h": "AB", "o": "12"},
        "unpacked": 2000, "digest": "mismatch", "zlib": "ok", "json": "none"})";

class SampleSummaryTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string folder = testing::TempDir() + "sample_summary_XXXXXX";
    drive = mkdtemp(folder.data());
    const auto data = drive / "ProgramData/Velmora/Corvane";
    create_directories(data);
    create_directories(drive / "users");
    std::ofstream(data / "records.json") << kRecords;
  }
  void TearDown() override { std::filesystem::remove_all(drive); }

  std::filesystem::path drive;
};

TEST_F(SampleSummaryTest, TellsWhatHappenedToTheFileAndWhetherItShould) {
  const struct {
    size_t fileSize;
    std::vector<const char*> requests;
    bool isSound;
    const char* row;
  } cases[] = {
      {2000, {kUnknown, kUpload}, true, "disk       no            2000  C:\\Users\\a.exe\n"},
      {2000, {kKnown}, true, "disk       yes              -  C:\\Users\\a.exe\n"},
      {2000, {}, false, "C:\\Users\\a.exe: WRONG: not asked"},
      {2000, {kUnknown}, false, "C:\\Users\\a.exe: WRONG: not sent"},
      {2000,
       {kUnknown, kDamaged},
       false,
       "?              -          -                -  AB: WRONG"},
      {2000, {kKnown, kStranger}, false, "C:\\Users\\b.exe: WRONG: asked"},
      {1023, {}, true, "C:\\Users\\a.exe: too small, 1023\n"},
      {1023, {kKnown}, false, "C:\\Users\\a.exe: WRONG: asked all the same: too small, 1023\n"},
      {5242881, {}, true, "C:\\Users\\a.exe: too large, 5242881\n"},
  };
  for (const auto& [fileSize, lines, isSound, row] : cases) {
    std::ofstream(drive / "users/A.EXE") << std::string(fileSize, 'x');
    std::vector<JsonOwner> requests;
    requests.reserve(lines.size());
    for (const char* line : lines) {
      requests.emplace_back(json_loads(line, 0, nullptr));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(PrintSamples(ReportedMachine({.drive = drive, .now = kNow}), requests), isSound)
        << row;
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(row));
  }
}

}  // namespace
}  // namespace ostrell
