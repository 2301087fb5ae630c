#include "transport/byte_chain.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/bytes.h"

namespace ostrell {
namespace {

std::string ReadOnce(ByteChain& chain, size_t most) {
  std::string text(most, '?');
  text.resize(chain.Read(std::as_writable_bytes(std::span(text.data(), text.size()))));
  return text;
}

std::unique_ptr<std::byte[]> BlockOf(std::string_view text) {
  auto block = std::make_unique<std::byte[]>(text.size());
  std::ranges::copy(BytesOf(text), block.get());
  return block;
}

TEST(ByteChain, ReadsCopiesInOrderAndNeverAcrossChunks) {
  ByteChain chain;
  std::string text = "abcdef";
  ASSERT_TRUE(chain.Append(BytesOf(text)));
  text = "behind";
  EXPECT_TRUE(chain.Append({}));
  EXPECT_TRUE(chain.AppendOwned(BlockOf("unused"), 0));
  ASSERT_TRUE(chain.AppendOwned(BlockOf("data+room"), 4));
  ASSERT_TRUE(chain.Append(BytesOf("gh")));
  ASSERT_EQ(chain.Total(), 12u);
  EXPECT_EQ(ReadOnce(chain, 0), "");
  EXPECT_EQ(ReadOnce(chain, 4), "abcd");
  EXPECT_EQ(chain.Total(), 8u);
  for (const char* const rest : {"ef", "data", "gh", ""}) {
    EXPECT_EQ(ReadOnce(chain, 9), rest);
  }
  EXPECT_EQ(chain.Total(), 0u);
}

TEST(ByteChain, LimitCountsUnreadBytes) {
  ByteChain chain(8);
  EXPECT_FALSE(chain.Append(BytesOf("123456789")));
  EXPECT_TRUE(chain.Append(BytesOf("12345678")));
  EXPECT_FALSE(chain.Append(BytesOf("9")));
  EXPECT_FALSE(chain.AppendOwned(BlockOf("9"), 1));
  EXPECT_EQ(chain.Total(), 8u);
  EXPECT_EQ(ReadOnce(chain, 3), "123");
  EXPECT_FALSE(chain.Append(BytesOf("abcd")));
  EXPECT_TRUE(chain.Append(BytesOf("abc")));
  EXPECT_EQ(ReadOnce(chain, 9), "45678");
  EXPECT_EQ(ReadOnce(chain, 9), "abc");
}

TEST(ByteChain, OwnedLengthThatWouldOverflowTheTotalIsRefused) {
  ByteChain chain;
  ASSERT_TRUE(chain.Append(BytesOf("x")));
  EXPECT_FALSE(chain.AppendOwned(BlockOf("y"), ByteChain::kUnlimited));
  EXPECT_EQ(chain.Total(), 1u);
}

TEST(ByteChain, LimitedChainRefusesTooManyChunks) {
  ByteChain limited(ByteChain::kMaxChunks * 2);
  ByteChain unlimited;
  for (size_t i = 0; i < ByteChain::kMaxChunks; ++i) {
    ASSERT_TRUE(limited.Append(BytesOf("x")) && unlimited.Append(BytesOf("x"))) << i;
  }
  EXPECT_TRUE(unlimited.Append(BytesOf("x")));
  EXPECT_FALSE(limited.Append(BytesOf("x")));
  EXPECT_EQ(limited.Total(), ByteChain::kMaxChunks);
  EXPECT_EQ(ReadOnce(limited, 2), "x");
  EXPECT_TRUE(limited.Append(BytesOf("y")));
}

}  // namespace
}  // namespace ostrell
