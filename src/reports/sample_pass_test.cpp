#include "reports/sample_pass.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/fake_machine.h"
#include "tests/support/scarce_memory.h"

namespace ostrell {
namespace {

// Computed by another program.
TEST(PathKey, LowersAsciiLettersAlone) {
  EXPECT_EQ(PathKey("C:\\Users\\\xC3\x89\\SETUP.exe"), 0xd58a172ba4719513);
  EXPECT_NE(PathKey("C:\\Users\\\xC3\xA9\\SETUP.exe"), 0xd58a172ba4719513);
  EXPECT_EQ(PathKey(""), 0x6ff17dd88d816f37);
  EXPECT_EQ(kMaxPathKeys, 268435455u);
}

TEST(SamplePass, EachFileOnceUntilTheTimeIsSpent) {
  const JsonOwner records(json_loads(R"([{"detail": {"procname": "a"}}, {},
                                         {"detail": {"procname": "A"}},
                                         {"detail": {"procname": "b"}},
                                         {"detail": {"procname": "c"}},
                                         {"detail": {"procname": "d"}}])",
                                     0, nullptr));
  PathKeys handled(kMaxPathKeys);
  std::string submitted;
  FakeClock clock(5000);
  const auto submit = [&](std::string_view path) {
    submitted += path;
    clock.now += 450;
  };
  RunSamplePass(records, NetworkProgramPath, handled, submit, clock);
  EXPECT_EQ(submitted, "abc") << "the third begins at 900 seconds sharp";
  RunSamplePass(records, NetworkProgramPath, handled, submit, clock);
  EXPECT_EQ(submitted, "abcd") << "the pass has a time of its own and the files are known";
}

// It would be sent twice, were it tried again.
TEST(SamplePass, FileThatCannotBeRememberedIsLeftOut) {
  const JsonOwner records(json_loads(R"([{"detail": {"procname": "a"}}])", 0, nullptr));
  PathKeys handled(kMaxPathKeys);
  int submitted = 0;
  const FakeClock clock(5000);
  const std::function<void(std::string_view)> submit = [&](std::string_view) { ++submitted; };
  {
    const ScarceMemory memory(1);
    RunSamplePass(records, NetworkProgramPath, handled, submit, clock);
  }
  EXPECT_EQ(submitted, 0);
  RunSamplePass(records, NetworkProgramPath, handled, submit, clock);
  EXPECT_EQ(submitted, 1);
}

}  // namespace
}  // namespace ostrell
