#include "machine/system_facts.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

constexpr uint8_t kWorkstation = 1;
constexpr uint8_t kDomainController = 2;
constexpr uint8_t kServer = 3;

TEST(SystemFactsTest, FamilyCodeOfEachVersion) {
  const struct {
    uint32_t platform;
    uint32_t major;
    uint32_t minor;
    uint32_t build;
    uint32_t workstation;
    uint32_t server;
  } cases[] = {{2, 10, 0, 22000, 19, 19}, {2, 10, 0, 21999, 17, 18}, {2, 10, 0, 0, 17, 18},
               {2, 6, 3, 9600, 15, 16},   {2, 6, 2, 9200, 13, 14},   {2, 6, 1, 7601, 11, 12},
               {2, 6, 0, 6002, 9, 10},    {2, 5, 2, 3790, 7, 7},     {2, 5, 1, 2600, 6, 6},
               {2, 5, 0, 2195, 5, 5},     {2, 4, 0, 1381, 4, 4},     {2, 0, 0, 0, 4, 4},
               {2, 5, 3, 0, 0, 0},        {2, 6, 4, 22000, 0, 0},    {2, 7, 0, 0, 0, 0},
               {2, 9, 0, 0, 0, 0},        {2, 10, 1, 22000, 0, 0},   {2, 11, 0, 30000, 0, 0},
               {1, 4, 0, 950, 1, 1},      {1, 4, 10, 2222, 2, 2},    {1, 4, 90, 3000, 3, 3},
               {1, 4, 1, 0, 0, 0},        {1, 3, 10, 0, 0, 0},       {1, 5, 0, 0, 0, 0},
               {1, 10, 0, 22000, 0, 0},   {0, 4, 0, 0, 0, 0},        {3, 10, 0, 22000, 0, 0}};
  for (const auto& [platform, major, minor, build, workstation, server] : cases) {
    SCOPED_TRACE(std::to_string(major) + "." + std::to_string(minor));
    EXPECT_EQ(FamilyCode({platform, major, minor, build, kWorkstation, false, false}), workstation);
    for (const uint8_t type : {kDomainController, kServer, uint8_t{0}}) {
      EXPECT_EQ(FamilyCode({platform, major, minor, build, type, false, false}), server);
    }
  }
}

TEST(SystemFactsTest, ServerR2AndArchitectureMatterFor52Only) {
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kWorkstation, true, true}), 8U);
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kServer, false, true}), 8U);
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kWorkstation, true, false}), 6U);
  EXPECT_EQ(FamilyCode({2, 5, 2, 3790, kServer, true, false}), 7U);
  EXPECT_EQ(FamilyCode({2, 5, 1, 2600, kServer, true, true}), 6U);
  EXPECT_EQ(FamilyCode({2, 6, 1, 7601, kWorkstation, true, true}), 11U);
}

TEST(SystemFactsTest, Arm64WinsOverTheEmulatedProcessor) {
  EXPECT_EQ(ProcessorClass(true, 0xAA64), 2U);
  EXPECT_EQ(ProcessorClass(false, 0xAA64), 2U);
  EXPECT_EQ(ProcessorClass(true, 0x8664), 1U);
  EXPECT_EQ(ProcessorClass(true, 0), 1U);
  EXPECT_EQ(ProcessorClass(false, 0x014C), 0U);
}

}  // namespace
}  // namespace ostrell
