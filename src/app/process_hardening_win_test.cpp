#include "app/process_hardening_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

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
}

TEST(HardenProcess, DoesWithoutWhatTheSystemLacks) {
  SetErrorMode(0);
  HardenProcess({nullptr, nullptr});
  EXPECT_EQ(GetErrorMode(), 0x8001u);
  HardenProcess();
}

}  // namespace
}  // namespace ostrell
