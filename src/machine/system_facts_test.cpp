#include "machine/system_facts.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

constexpr uint8_t kWorkstation = 1;
constexpr uint8_t kServer = 3;

TEST(SystemFacts, RecordedFamilies) {
  for (const RecordedCase& recorded : CasesOf("system_family")) {
    for (const std::string& system : recorded.All("system")) {
      SCOPED_TRACE(system);
      VersionFacts facts{};
      uint32_t workstation = 0;
      uint32_t server = 0;
      std::istringstream(system) >> facts.platform >> facts.major >> facts.minor >> facts.build >>
          workstation >> server;
      for (uint8_t type = 0; type < 4; ++type) {
        facts.productType = type;
        EXPECT_EQ(FamilyCode(facts), type == kWorkstation ? workstation : server) << int{type};
      }
    }
  }
}

TEST(SystemFacts, ServerR2AndArchitectureMatterFor52Only) {
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kWorkstation, true, true}), 8U);
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kServer, false, true}), 8U);
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kWorkstation, true, false}), 6U);
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kServer, true, false}), 7U);
  EXPECT_EQ(FamilyCode({2, 5, 1, 2600, kServer, true, true}), 6U);
  EXPECT_EQ(FamilyCode({2, 6, 1, 7601, kWorkstation, true, true}), 11U);
}

TEST(SystemFacts, Arm64WinsOverTheEmulatedProcessor) {
  EXPECT_EQ(ProcessorClass(true, 0xAA64), 2U);
  EXPECT_EQ(ProcessorClass(false, 0xAA64), 2U);
  EXPECT_EQ(ProcessorClass(true, 0x8664), 1U);
  EXPECT_EQ(ProcessorClass(true, 0), 1U);
  EXPECT_EQ(ProcessorClass(false, 0x014C), 0U);
}

}  // namespace
}  // namespace ostrell
