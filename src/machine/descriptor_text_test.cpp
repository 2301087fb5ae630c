#include "machine/descriptor_text.h"

#include <gtest/gtest.h>

#include <string_view>

#include "base/bytes.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

TEST(DescriptorTextTest, CleansTheTextAtTheOffset) {
  const struct {
    std::string_view stored;
    std::string_view plain;
    std::string_view swapped;
  } cases[] = {
      // Not hexadecimal: as it stands.
      {"", "", ""},
      {"VBOX HARDDISK", "VBOX HARDDISK", "BVXOH RADDSI"},
      {"  WD-1 ", "WD-1", "DW1-"},
      {"x", "x", ""},
      {"41424g", "41424g", "1424g4"},
      {" ~", "~", "~"},
      {"x\x7F", "", ""},
      {"x\ty", "", ""},
      {"x\x80y", "", ""},
      // Hexadecimal text of printable bytes, either case, odd last digit dropped.
      {"4142", "AB", "BA"},
      {"4a4B4C4d", "JKLM", "KJML"},
      {"41424", "AB", "BA"},
      {"414243", "ABC", "BA"},
      {"4", "", ""},
      {"207e", "~", "~"},
      {"2020202057202d44435731433054323134333635", "W -DCW1C0T214365", "WD-WCC1T0123456"},
      // A decoded byte just outside the printable ones: the digits themselves are the text.
      {"411f", "411f", "14f1"},
      {"417f", "417f", "14f7"},
      {"41ff", "41ff", "14ff"},
      // A blank is the digit 0. A decoded zero ends the text, after the swap.
      {"414 ", "A@", "@A"},
      {"4142\t\n43", "AB", "BAC"},
      {"00410042", "", "A"},
      {"    ", "", ""},
      // All blank after decoding: left as it is.
      {"2020", "  ", "  "},
      {"202020", "   ", "  "}};
  for (const auto& row : cases) {
    const std::string descriptor = "###" + std::string(row.stored) + '\0' + "behind";
    EXPECT_EQ(DescriptorText(BytesOf(descriptor), 3, false), row.plain) << row.stored;
    EXPECT_EQ(DescriptorText(BytesOf(descriptor), 3, true), row.swapped) << row.stored;
  }
}

TEST(DescriptorTextTest, OffsetOutsideTheBytesIsEmpty) {
  const auto bytes = BytesOf("wxyz"sv);
  EXPECT_EQ(DescriptorText(bytes, 3, false), "z");
  for (const uint32_t offset : {0U, 4U, 5U, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(DescriptorText(bytes, offset, false), "") << offset;
  }
  EXPECT_EQ(DescriptorText({}, 1, true), "");
}

TEST(DescriptorTextTest, MissingTerminatorEndsWithTheBytes) {
  EXPECT_EQ(DescriptorText(BytesOf("#serials"sv), 1, false), "serials");
  EXPECT_EQ(DescriptorText(BytesOf("#serials"sv), 1, true), "esirla");
  EXPECT_EQ(DescriptorText(BytesOf("#4142"sv), 1, false), "AB");
}

TEST(IdentifyTextTest, TakesTheHighByteFirstAndEndsAtAZero) {
  const auto words = BytesOf("##BADC  \0\0"sv);
  EXPECT_EQ(IdentifyText(words, 1, 2), "ABCD");
  EXPECT_EQ(IdentifyText(words, 2, 1), "CD");
  EXPECT_EQ(IdentifyText(words, 1, 3), "ABCD");
  EXPECT_EQ(IdentifyText(BytesOf("BA \0  "sv), 0, 3), "AB");
  EXPECT_EQ(IdentifyText(BytesOf(" AB\0  "sv), 0, 3), "A ");  // only the end is trimmed
}

TEST(IdentifyTextTest, WordsPastTheBytesHoldNothing) {
  EXPECT_EQ(IdentifyText(BytesOf("BADCx"sv), 0, 20), "ABCD");
  EXPECT_EQ(IdentifyText({}, 27, 20), "");
}

}  // namespace
}  // namespace ostrell
