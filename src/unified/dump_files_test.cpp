#include "unified/dump_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/calendar.h"
#include "tests/support/dump_bytes.h"
#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

constexpr auto kParsed =
    "GetCrashModuleFromDump Successfully parsed crash module from dump file case.dmp";

std::string Text(const DumpBytes& dump) {
  return {reinterpret_cast<const char*>(dump.bytes.data()), dump.bytes.size()};
}

constexpr int64_t kWritten = 1740819600;

class DumpFilesTest : public testing::Test {
 protected:
  FakeFiles::Entry& Dump(const wchar_t* name, std::string content, int64_t seconds = kWritten) {
    auto& entry = fake.files.Beside(name);
    entry = {.content = std::move(content), .lastWrite = TicksFromSeconds(seconds)};
    return entry;
  }
  JsonOwner Collect(int64_t tmStart) { return collect_dump_files(fake.Get(), tmStart); }

  FakeRun fake;
};

TEST(DumpName, IsItsLongEnding) {
  for (const wchar_t* name : {L"a.dmp", L"A.DMP", L"a.b.dMp", L".dmp", L"d\u00fcmp.dmp"}) {
    EXPECT_TRUE(IsDumpName(name)) << name;
  }
  for (const wchar_t* name : {L"memory.dmpbackup", L"a.dmp2", L"MEMORY~1", L"a.dmp ", L"a.dmp.",
                              L"admp", L"dmp", L"", L"a.\uff44\uff4d\uff50", L"a.dm"}) {
    EXPECT_FALSE(IsDumpName(name)) << name;
  }
}

TEST_F(DumpFilesTest, CollectsBesideTheProgramAndAbove) {
  const std::string time = R"(,"timestamp":1740819600)";
  Dump(L"d\u00fcmp.dmp", Text(WellFormedDump()));
  Dump(L"note.dmp", "no dump at all");
  fake.files.Above(L"above.dmp") = Dump(L"moved.dmp", Text(WellFormedDump()));
  fake.files.Delete(L"moved.dmp");
  fake.files.Beside(L"folder.dmp").isDirectory = true;
  const JsonOwner items = Collect(kWritten);
  // Of the one above, a file of its name in the current folder would be read.
  EXPECT_EQ(CompactText(items),
            R"([{"report_type":"dmp_files","name":"dümp.dmp")" + time +
                R"(,"pe-time":2427178479},{"report_type":"dmp_files",)" + R"("name":"note.dmp")" +
                time + R"(},{"report_type":"dmp_files","name":"above.dmp")" + time + "}]");
  EXPECT_THAT(
      fake.messages,
      ElementsAre(
          "collect_dump_files Scanning for dump files in directory: C:\\Corvane\\bin",
          "collect_dump_files Scan completed, found 5 dump files within time range",
          "GetCrashModuleFromDump Successfully parsed crash module from dump file d\u00fcmp.dmp",
          "GetCrashModuleFromDump Failed to map dump file above.dmp, error=2"));
  EXPECT_FALSE(Collect(kWritten + 1));
  EXPECT_EQ(fake.messages.back(), "collect_dump_files No dump files to collect");
}

TEST_F(DumpFilesTest, CrashModuleOfOneDump) {
  DumpBytes tooManyStreams;
  tooManyStreams.Header(65540, 16).Put32(16 + 65540 * 12, 0);
  using Entry = FakeFiles::Entry;
  const std::string sound = Text(WellFormedDump());
  const std::string limits =
      "Limits of dump file case.dmp: left out 4 streams, 0 modules, the rest of 0 names";
  const struct {
    std::optional<Entry> entry;  // nothing: no file
    uint32_t time;               // 7: left as it was
    std::vector<std::string> messages;
  } cases[] = {
      {Entry{sound}, 0x90ABCDEF, {"Successfully parsed crash module from dump file case.dmp"}},
      {Entry{Text(WellFormedDump().Put32(200, 0))},  // no modules
       7,
       {"Successfully parsed crash module from dump file case.dmp"}},
      {Entry{Text(tooManyStreams)}, 7, {limits, "No module list found in dump file case.dmp"}},
      {Entry{"text"}, 7, {}},
      {Entry{""}, 7, {"Failed to map dump file case.dmp, error=1006"}},
      {std::nullopt, 7, {"Failed to map dump file case.dmp, error=2"}},
      {Entry{.content = sound, .isOpenForWriting = true},
       7,
       {"Failed to map dump file case.dmp, error=32"}},
      // It goes while its header is read.
      {Entry{.content = sound, .bad = 0}, 7, {"No module list found in dump file case.dmp"}},
  };
  for (const auto& c : cases) {
    fake.messages.clear();
    fake.files.entries.clear();
    if (c.entry) {
      fake.files.Beside(L"case.dmp") = *c.entry;
    }
    std::vector<std::string> messages = c.messages;
    for (std::string& message : messages) {
      message.insert(0, "GetCrashModuleFromDump ");
    }
    uint32_t time = 7;
    const bool isParsed = messages == std::vector<std::string>{kParsed};
    EXPECT_EQ(GetCrashModuleFromDump(fake.Get(), L"case.dmp", time), isParsed ? 1 : 0);
    EXPECT_EQ(fake.messages, messages);
    EXPECT_EQ(time, c.time);
  }
}

TEST_F(DumpFilesTest, CleansUpBesideTheProgramOnly) {
  Dump(L"kept.dmp", "x");
  Dump(L"old.dmp", "x", kWritten - 1);
  Dump(L"older.dmp", "x", 0).isHeld = true;
  Dump(L"old.txt", "x", 0);
  Dump(L"memory.dmpbackup", "x", 0);
  fake.files.Above(L"above.dmp").content = "x";
  fake.files.Beside(L"folder.dmp").isDirectory = true;
  EXPECT_EQ(cleanup_old_dump_files(fake.Get(), kWritten + 2592000), 1);
  EXPECT_THAT(
      fake.messages,
      ElementsAre(
          "cleanup_old_dump_files_in_directory Cleanup completed, deleted 1 old dump files"));
  EXPECT_FALSE(fake.files.Has(L"old.dmp"));
  for (const wchar_t* kept : {L"kept.dmp", L"older.dmp", L"old.txt", L"memory.dmpbackup",
                              L"folder.dmp", L"..\\above.dmp"}) {
    EXPECT_TRUE(fake.files.Has(kept)) << kept;
  }
  EXPECT_EQ(cleanup_old_dump_files_in_directory(fake.Get(), L"C:\\no such folder\\", 0), 0);
}

// The one left out is the only old one.
TEST_F(DumpFilesTest, FolderWithTooManyDumps) {
  for (int i = 100000; i < 165536; ++i) {
    Dump((std::to_wstring(i) + L".dmp").c_str(), "");
  }
  Dump(L"last.dmp", "", 0);
  EXPECT_EQ(cleanup_old_dump_files(fake.Get(), kWritten), 0);
  EXPECT_EQ(fake.messages.front(),
            "cleanup_old_dump_files_in_directory Too many dump files in directory "
            "C:\\Corvane\\bin, 1 left out");
}

TEST_F(DumpFilesTest, WithoutTheProgramsFolder) {
  fake.files.program = std::nullopt;
  EXPECT_FALSE(Collect(0));
  EXPECT_EQ(cleanup_old_dump_files(fake.Get(), kWritten), 0);
  fake.files.program = L"ostrell.exe";
  EXPECT_FALSE(Collect(0));
  EXPECT_EQ(cleanup_old_dump_files(fake.Get(), kWritten), 0);
  EXPECT_THAT(
      fake.messages,
      ElementsAre("collect_dump_files GetModuleFileNameW failed, return NULL",
                  "cleanup_old_dump_files GetModuleFileNameW failed during cleanup, return 0",
                  "collect_dump_files Failed to extract directory from module path, return NULL",
                  "cleanup_old_dump_files Failed to extract directory during cleanup, return 0"));
}

}  // namespace
}  // namespace ostrell
