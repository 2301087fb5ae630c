#include "unified/dump_files.h"

#include <gtest/gtest.h>

#include "base/calendar.h"
#include "tests/support/fake_run.h"

// Whole collections are recorded cases of tests/jobs.

namespace ostrell {
namespace {

TEST(DumpName, IsItsLongEnding) {
  for (const wchar_t* name : {L"a.dmp", L"A.DMP", L"a.b.dMp", L".dmp", L"d\u00fcmp.dmp"}) {
    EXPECT_TRUE(IsDumpName(name)) << name;
  }
  for (const wchar_t* name : {L"memory.dmpbackup", L"a.dmp2", L"MEMORY~1", L"a.dmp ", L"a.dmp.",
                              L"admp", L"dmp", L"", L"a.\uff44\uff4d\uff50", L"a.dm"}) {
    EXPECT_FALSE(IsDumpName(name)) << name;
  }
}

// The one left out is the only old one.
TEST(DumpFiles, FolderWithTooManyDumps) {
  FakeRun fake;
  for (int i = 100000; i < 165536; ++i) {
    fake.files.At(std::to_wstring(i) + L".dmp").lastWrite = TicksFromSeconds(FakeRun::kNow);
  }
  fake.files.At(L"last.dmp").lastWrite = 0;
  EXPECT_EQ(cleanup_old_dump_files(fake.Get(), FakeRun::kNow), 0);
  EXPECT_EQ(fake.messages.front(),
            "cleanup_old_dump_files_in_directory Too many dump files in directory "
            "C:\\Corvane\\bin, 1 left out");
}

}  // namespace
}  // namespace ostrell
