#include "machine/system_facts.h"

#include <array>
#include <sstream>

#include "base/print.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

constexpr uint8_t kWorkstation = 1;
constexpr uint8_t kServer = 3;

// The codes of a workstation and of a server; unknown types count as servers.
TEST(SystemFacts, RecordedFamilies) {
  ExpectRecorded("system_family", [](const std::string& system, const RecordedCase&) {
    VersionFacts facts{};
    std::istringstream(system) >> facts.platform >> facts.major >> facts.minor >> facts.build;
    std::array<uint32_t, 4> codes{};
    for (facts.productType = 0; facts.productType < codes.size(); ++facts.productType) {
      codes.at(facts.productType) = FamilyCode(facts);
    }
    EXPECT_TRUE(codes[0] == codes[kServer] && codes[2] == codes[kServer]) << system;
    return Print("%u %u", codes[kWorkstation], codes[kServer]);
  });
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
