#include "transport/byte_chain.h"

#include <gtest/gtest.h>

#include <string>

#include "base/bytes.h"

namespace ostrell {
namespace {

std::string ReadOnce(ByteChain& chain, size_t most) {
  std::string text(most, '?');
  text.resize(chain.Read(std::as_writable_bytes(std::span(text))));
  return text;
}

bool AppendOwned(ByteChain& chain, std::string_view block, uint64_t length) {
  auto owned = std::make_unique<std::byte[]>(block.size());
  std::ranges::copy(BytesOf(block), owned.get());
  return chain.AppendOwned(std::move(owned), length);
}

TEST(ByteChain, ReadsCopiesInOrderAndNeverAcrossChunks) {
  ByteChain chain;
  std::string text = "abcdef";
  ASSERT_TRUE(chain.Append(BytesOf(text)));
  text = "behind";
  EXPECT_TRUE(chain.Append({}));
  EXPECT_TRUE(AppendOwned(chain, "unused", 0));
  ASSERT_TRUE(AppendOwned(chain, "data+room", 4));
  ASSERT_TRUE(chain.Append(BytesOf("gh")));
  EXPECT_FALSE(AppendOwned(chain, "y", ByteChain::kUnlimited)) << "the total would overflow";
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
  EXPECT_FALSE(AppendOwned(chain, "9", 1));
  EXPECT_EQ(chain.Total(), 8u);
  EXPECT_EQ(ReadOnce(chain, 3), "123");
  EXPECT_FALSE(chain.Append(BytesOf("abcd")));
  EXPECT_TRUE(chain.Append(BytesOf("abc")));
  EXPECT_EQ(ReadOnce(chain, 9), "45678");
  EXPECT_EQ(ReadOnce(chain, 9), "abc");
}

TEST(ByteChain, LimitedChainRefusesTooManyChunks) {
  ByteChain limited(100000);
  ByteChain unlimited;
  for (size_t i = 0; i < 65536; ++i) {
    ASSERT_TRUE(limited.Append(BytesOf("x")) && unlimited.Append(BytesOf("x"))) << i;
  }
  EXPECT_TRUE(unlimited.Append(BytesOf("x")));
  EXPECT_FALSE(limited.Append(BytesOf("x")));
  EXPECT_EQ(limited.Total(), 65536u);
  EXPECT_EQ(ReadOnce(limited, 2), "x");
  EXPECT_TRUE(limited.Append(BytesOf("y")));
}

}  // namespace
}  // namespace ostrell
