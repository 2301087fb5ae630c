#include "unified/dump_name.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace ostrell
