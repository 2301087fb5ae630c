#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/calendar.h"
#include "base/text.h"
#include "tests/support/dump_bytes.h"
#include "tests/support/program_files_win.h"
#include "unified/dump_files.h"
#include "unified/dump_listing_win.h"
#include "unified/dump_view_win.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

std::string Text(const DumpBytes& dump) {
  return {reinterpret_cast<const char*>(dump.bytes.data()), dump.bytes.size()};
}

constexpr int64_t kWritten = 1740819600;

class DumpFilesTest : public testing::Test {
 protected:
  // The time that the unified report gives it.
  int64_t Dump(const wchar_t* name, std::string_view content, int64_t seconds = kWritten) {
    return ProgramFiles::SetTime(files.Write(name, content),
                                 FileTimeFromTicks(TicksFromSeconds(seconds)));
  }

  ProgramFiles files;
  const std::string folder = Utf8FromWide(ProgramFiles::Folder().wstring());
};

TEST_F(DumpFilesTest, CollectsBesideTheProgramAndAbove) {
  const std::string time = std::to_string(Dump(L"d\u00fcmp.dmp", Text(WellFormedDump())));
  Dump(L"note.dmp", "no dump at all");
  Dump(L"..\\above.dmp", Text(WellFormedDump()));
  files.MakeFolder(L"folder.dmp");
  const JsonOwner items = collect_dump_files(kWritten - 100000);
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
      ProgramFiles::Messages(),
      ElementsAre(
          "collect_dump_files Scanning for dump files in directory: " + folder,
          "collect_dump_files Scan completed, found 5 dump files within time range",
          "GetCrashModuleFromDump Successfully parsed crash module from dump file d\u00fcmp.dmp",
          "GetCrashModuleFromDump Failed to map dump file above.dmp, error=2"));
}

TEST_F(DumpFilesTest, PeriodBeginsWithItsStart) {
  const int64_t time = Dump(L"only.dmp", "x");
  EXPECT_EQ(json_array_size(collect_dump_files(time).Get()), 1u);
  EXPECT_EQ(ProgramFiles::Messages()[1],
            "collect_dump_files Scan completed, found 2 dump files within time range");
  EXPECT_FALSE(collect_dump_files(time + 1));
  EXPECT_EQ(ProgramFiles::Messages().back(), "collect_dump_files No dump files to collect");
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
    const ProgramFiles fresh;
    std::filesystem::remove("case.dmp");
    if (c.content) {
      Dump(L"case.dmp", *c.content);
    }
    uint32_t time = 7;
    EXPECT_EQ(GetCrashModuleFromDump(L"case.dmp", time), c.result) << c.what;
    EXPECT_EQ(time, c.time.value_or(7)) << c.what;
    const auto messages = ProgramFiles::Messages();
    EXPECT_EQ(messages.empty() ? "" : messages.front(),
              c.message.empty() ? "" : "GetCrashModuleFromDump " + c.message)
        << c.what;
  }
}

TEST_F(DumpFilesTest, CleansUpBesideTheProgramOnly) {
  const int64_t time = Dump(L"kept.dmp", "x");
  Dump(L"old.dmp", "x", kWritten - 1);
  Dump(L"older.dmp", "x", 0);
  Dump(L"..\\above.dmp", "x", 0);
  Dump(L"old.txt", "x", 0);
  const FileHandle held(CreateFileW(L"older.dmp", GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  EXPECT_EQ(cleanup_old_dump_files(time + 2592000), 1);
  EXPECT_THAT(
      ProgramFiles::Messages(),
      ElementsAre(
          "cleanup_old_dump_files_in_directory Cleanup completed, deleted 1 old dump files"));
  EXPECT_TRUE(std::filesystem::exists("kept.dmp"));
  EXPECT_FALSE(std::filesystem::exists("old.dmp"));
  EXPECT_TRUE(std::filesystem::exists("older.dmp"));
  EXPECT_TRUE(std::filesystem::exists("..\\above.dmp"));
  EXPECT_TRUE(std::filesystem::exists("old.txt"));
}

// A listing of "*.dmp" gives them, too: their short names end so.
TEST_F(DumpFilesTest, OnlyLongNamesCount) {
  const int64_t time = Dump(L"memory.dmpbackup", "x", 0);
  Dump(L"UPPER.DMP", "x", 0);
  files.MakeFolder(L"folder.dmp");
  const JsonOwner items = collect_dump_files(time);
  ASSERT_EQ(json_array_size(items.Get()), 1u);
  EXPECT_EQ(TextMember(json_array_get(items.Get(), 0), "name"), "UPPER.DMP");
  EXPECT_EQ(cleanup_old_dump_files(kWritten), 1);
  EXPECT_TRUE(std::filesystem::exists("memory.dmpbackup"));
  EXPECT_FALSE(std::filesystem::exists("UPPER.DMP"));
  EXPECT_TRUE(std::filesystem::exists("folder.dmp"));
}

TEST_F(DumpFilesTest, WhatLimitsLeaveOutIsLogged) {
  DumpBytes dump;
  dump.Header(65540, 16).Put32(16 + 65540 * 12, 0);
  Dump(L"case.dmp", Text(dump));
  uint32_t time = 7;
  EXPECT_EQ(GetCrashModuleFromDump(L"case.dmp", time), 0);
  EXPECT_THAT(
      ProgramFiles::Messages(),
      ElementsAre("GetCrashModuleFromDump Limits of dump file case.dmp: left out 4 streams, "
                  "0 modules, the rest of 0 names",
                  "GetCrashModuleFromDump No module list found in dump file case.dmp"));
}

// Memory that cannot be read, as a page of a failing disk: touched, it would end the program.
TEST_F(DumpFilesTest, UnreadableViewIsNoCrash) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): no system puts anything there
  const auto* const nowhere = reinterpret_cast<const std::byte*>(uintptr_t{0x1000});
  EXPECT_EQ(ReadMinidump(SourceOfView({nowhere, 8192})).kind, DumpKind::kNoModuleList);
  const DumpBytes dump = WellFormedDump();
  EXPECT_EQ(ReadMinidump(SourceOfView(dump.bytes)).crashModuleTime, 0x90ABCDEF);
}

TEST_F(DumpFilesTest, FolderWithTooManyDumps) {
  files.Write(L"many\\note.dmpx", "x");
  for (const wchar_t* name : {L"many\\1.dmp", L"many\\2.dmp", L"many\\3.dmp"}) {
    Dump(name, "x");
  }
  EXPECT_EQ(ListDumps(L"many", 4).leftOut, 0u);
  EXPECT_EQ(ListDumps(L"many", 3).leftOut, 0u);
  const DumpListing listing = ListDumps(L"many", 2);
  EXPECT_EQ(listing.dumps.size(), 2u);
  EXPECT_EQ(listing.leftOut, 1u);
}

TEST_F(DumpFilesTest, MissingFolderHoldsNoDumps) {
  EXPECT_EQ(cleanup_old_dump_files_in_directory(L"C:\\no such folder\\", 0), 0);
}

}  // namespace
}  // namespace ostrell
