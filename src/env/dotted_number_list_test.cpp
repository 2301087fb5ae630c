#include "env/dotted_number_list.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

using namespace std::string_view_literals;

TEST(DottedNumberListTest, ListsAreAccepted) {
  const std::string_view lists[] = {"",
                                    "0.0.0.0",
                                    "255.255.255.255",
                                    "007.000.0255.1",
                                    "10.0.0.0/0",
                                    "10.0.0.0/32",
                                    "10.0.0.0/0032",
                                    "1.2.3.4-5.6.7.8",
                                    "9.9.9.9-0.0.0.0",
                                    "1.2.3.4;5.6.7.8,9.10.11.12\n13.14.15.16",
                                    "1.2.3.4;",
                                    "1.2.3.4,",
                                    "1.2.3.4\n",
                                    "1.2.3.4/8;5.6.7.8-9.9.9.9,*",
                                    "*"};
  for (const std::string_view text : lists) {
    EXPECT_TRUE(IsDottedNumberList(text)) << text;
  }
}

TEST(DottedNumberListTest, OtherTextsAreRefused) {
  const std::string_view others[] = {
      // Not a quad.
      "1", "1.2.3", "1.2.3.4.5", "1.2.3.", "1.2.3.4.", "1..2.3", ".1.2.3.4",
      // A number above 255, however long.
      "256.0.0.0", "0.0.0.256", "4294967296.0.0.0", "18446744073709551617.0.0.0",
      // Prefix lengths.
      "1.2.3.4/33", "1.2.3.4/4294967296", "1.2.3.4/", "1.2.3.4/x", "1.2.3.4/8.1", "1.2.3.4/8/8",
      "1.2.3/8",
      // Ranges.
      "1.2.3.4-", "1.2.3.4-5.6.7", "1.2.3.4-5.6.7.256", "1.2.3.4-5.6.7.8.9", "1.2.3.4-5.6.7.8/8",
      "1.2.3.4-5.6.7.8-9.9.9.9", "1.2.3.4/8-5.6.7.8", "1.2.3-4.5.6.7", "1.2.3.4--5.6.7.8",
      // Empty items before the end.
      ";", ";1.2.3.4", "1.2.3.4;;", "1.2.3.4,\n5.6.7.8",
      // '*' with something after it.
      "**", "*1.2.3.4", "*;", "1.2.3.4*",
      // Other characters.
      "v5.0.1.2", "5.0.1.2b", "+5.0.1.2", "-5.0.1.2", "5.0. 1.2", " 5.0.1.2", "5.0.1.2 ",
      "1.2.3.4\r\n5.6.7.8", "1.2.3.4\0"sv, "1.2.3.\xB2",
      // A later item.
      "1.2.3.4;5.6.7"};
  for (const std::string_view text : others) {
    EXPECT_FALSE(IsDottedNumberList(text)) << text;
  }
}

TEST(DottedNumberListTest, DigitRunsOfAnyLength) {
  const std::string zeros(100000, '0');
  EXPECT_TRUE(IsDottedNumberList("1.2.3." + zeros + "4/" + zeros + "8"));
  EXPECT_FALSE(IsDottedNumberList("1.2.3." + std::string(100000, '9')));
}

}  // namespace
}  // namespace ostrell
