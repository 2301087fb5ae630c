#include "unified/dump_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/calendar.h"
#include "tests/support/dump_bytes.h"
#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

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
  const std::string time = "1740819600";
  Dump(L"d\u00fcmp.dmp", Text(WellFormedDump()));
  Dump(L"note.dmp", "no dump at all");
  fake.files.Above(L"above.dmp") = Dump(L"moved.dmp", Text(WellFormedDump()));
  fake.files.Delete(L"moved.dmp");
  fake.files.Beside(L"folder.dmp").isDirectory = true;
  const JsonOwner items = Collect(kWritten - 100000);
  // Of the one above, a file of its name in the current folder would be read.
  EXPECT_EQ(
      CompactText(items),
      R"([{"report_type":"dmp_files","name":"d)"
      "\u00fc"
      R"(mp.dmp","timestamp":)" +
          time +
          R"(,"pe-time":2427178479},{"report_type":"dmp_files","name":"note.dmp","timestamp":)" +
          time + R"(},{"report_type":"dmp_files","name":"above.dmp","timestamp":)" + time + "}]");
  EXPECT_THAT(
      fake.messages,
      ElementsAre(
          "collect_dump_files Scanning for dump files in directory: C:\\Corvane\\bin",
          "collect_dump_files Scan completed, found 5 dump files within time range",
          "GetCrashModuleFromDump Successfully parsed crash module from dump file d\u00fcmp.dmp",
          "GetCrashModuleFromDump Failed to map dump file above.dmp, error=2"));
}

TEST_F(DumpFilesTest, PeriodBeginsWithItsStart) {
  Dump(L"only.dmp", "x");
  EXPECT_EQ(json_array_size(Collect(kWritten).Get()), 1u);
  EXPECT_EQ(fake.messages[1],
            "collect_dump_files Scan completed, found 2 dump files within time range");
  EXPECT_FALSE(Collect(kWritten + 1));
  EXPECT_EQ(fake.messages.back(), "collect_dump_files No dump files to collect");
}

struct DumpCase {
  const char* what;
  std::optional<std::string> content;  // nothing: no file
  int32_t result;
  std::optional<uint32_t> time;
  std::string message;  // of GetCrashModuleFromDump; none when empty
};

TEST_F(DumpFilesTest, CrashModuleOfOneDump) {
  DumpBytes noModules = WellFormedDump();
  noModules.Put32(200, 0);
  DumpBytes damaged = WellFormedDump();
  damaged.Put32(12, 0xFFFFFFFF);
  const DumpCase cases[] = {
      {"well formed", Text(WellFormedDump()), 1, 0x90ABCDEF,
       "Successfully parsed crash module from dump file case.dmp"},
      {"no modules",
       Text(noModules),
       1,
       {},
       "Successfully parsed crash module from dump file case.dmp"},
      {"damaged directory", Text(damaged), 0, {}, "No module list found in dump file case.dmp"},
      {"no dump", "text", 0, {}, ""},
      {"empty", "", 0, {}, "Failed to map dump file case.dmp, error=1006"},
      {"missing", {}, 0, {}, "Failed to map dump file case.dmp, error=2"},
  };
  for (const DumpCase& c : cases) {
    fake.messages.clear();
    fake.files.entries.clear();
    if (c.content) {
      Dump(L"case.dmp", *c.content);
    }
    uint32_t time = 7;
    EXPECT_EQ(GetCrashModuleFromDump(fake.Get(), L"case.dmp", time), c.result) << c.what;
    EXPECT_EQ(time, c.time.value_or(7)) << c.what;
    EXPECT_EQ(fake.messages.empty() ? "" : fake.messages.front(),
              c.message.empty() ? "" : "GetCrashModuleFromDump " + c.message)
        << c.what;
  }
}

// Somebody writes to it, or it goes while its header is read.
TEST_F(DumpFilesTest, DumpsThatAreNotRead) {
  uint32_t time = 7;
  Dump(L"case.dmp", Text(WellFormedDump())).isOpenForWriting = true;
  EXPECT_EQ(GetCrashModuleFromDump(fake.Get(), L"case.dmp", time), 0);
  EXPECT_EQ(fake.messages.back(),
            "GetCrashModuleFromDump Failed to map dump file case.dmp, error=32");
  Dump(L"case.dmp", Text(WellFormedDump())).bad = 0;
  EXPECT_EQ(GetCrashModuleFromDump(fake.Get(), L"case.dmp", time), 0);
  EXPECT_EQ(time, 7u);
  EXPECT_EQ(json_array_size(Collect(kWritten).Get()), 1u);
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

TEST_F(DumpFilesTest, WhatLimitsLeaveOutIsLogged) {
  DumpBytes dump;
  dump.Header(65540, 16).Put32(16 + 65540 * 12, 0);
  Dump(L"case.dmp", Text(dump));
  uint32_t time = 7;
  EXPECT_EQ(GetCrashModuleFromDump(fake.Get(), L"case.dmp", time), 0);
  EXPECT_THAT(
      fake.messages,
      ElementsAre("GetCrashModuleFromDump Limits of dump file case.dmp: left out 4 streams, "
                  "0 modules, the rest of 0 names",
                  "GetCrashModuleFromDump No module list found in dump file case.dmp"));
}

TEST_F(DumpFilesTest, FolderWithTooManyDumps) {
  for (int i = 0; i < 65537; ++i) {
    Dump((std::to_wstring(i) + L".dmp").c_str(), "x", 0);
  }
  EXPECT_EQ(cleanup_old_dump_files(fake.Get(), kWritten), 65536);
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
