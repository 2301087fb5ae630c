#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "app/process_hardening_win.h"
#include "app/run_limit.h"
#include "app/start_up.h"

namespace ostrell {
namespace {

using Call = std::array<size_t, 3>;
std::vector<Call> calls;

BOOL WINAPI NotePolicy(PROCESS_MITIGATION_POLICY policy, PVOID flags, SIZE_T size) {
  calls.push_back({static_cast<size_t>(policy), *static_cast<const DWORD*>(flags), size});
  return FALSE;  // unknown to this system
}

BOOL WINAPI NoteHeap(HANDLE heap, HEAP_INFORMATION_CLASS what, PVOID data, SIZE_T size) {
  EXPECT_TRUE(heap == nullptr && data == nullptr);
  calls.push_back({1000, static_cast<size_t>(what), size});
  return FALSE;
}

// The numbers are those of the vendor's documentation.
TEST(HardenProcess, SetsEachPolicyWhateverBecameOfTheOthers) {
  calls.clear();
  SetErrorMode(0);
  HardenProcess({NotePolicy, NoteHeap});
  EXPECT_THAT(calls, testing::UnorderedElementsAre(Call{10, 4, 4}, Call{6, 1, 4}, Call{16, 1, 4},
                                                   Call{1000, 1, 0}));
  EXPECT_EQ(GetErrorMode(), 0x8001u);
  SetErrorMode(0);
  HardenProcess({nullptr, nullptr});  // what a system may lack
  EXPECT_EQ(GetErrorMode(), 0x8001u);
  HardenProcess();
}

// Another copy in this session alone would be found under the name that no session shares.
TEST(BecomeOnlyInstance, LooksAtAllSessions) {
  HANDLE ofSession = CreateMutexA(nullptr, FALSE, "Local\\Velmora::qx_ostrell");
  EXPECT_TRUE(BecomeOnlyInstance());
  CloseHandle(ofSession);
  HANDLE ofAll = OpenMutexA(SYNCHRONIZE, FALSE, "Global\\Velmora::qx_ostrell");
  EXPECT_NE(ofAll, nullptr);
  CloseHandle(ofAll);
  EXPECT_FALSE(BecomeOnlyInstance());
}

// The numbers are counted by hand: 60 + 960 + 1260 + 4 * 1920 + 960 + 1560.
TEST(RunLimit, LongestRun) {
  EXPECT_EQ(longest_run::kSum, 12480);
  EXPECT_EQ(kRunLimit.count(), 14400);
}

TEST(RunLimitDeathTest, EndsAProcessThatHangsWithExitCodeZero) {
  constexpr DWORD kLongerThanTheLimit = 60000;
  EXPECT_EXIT(
      {
        LimitRun(std::chrono::milliseconds(1));
        Sleep(kLongerThanTheLimit);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace ostrell
