#include "devkit/product/event_query.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

std::string Document(const std::string& select) {
  return "<QueryList><Query Id=\"0\" Path=\"A\">" + select + "</Query></QueryList>";
}

TEST(EventQueryTest, NamesChannelAndCondition) {
  const auto query = ParseEventQuery(
      "\n<QueryList>\n  <Query Id=\"0\" Path=\"R&amp;D\">\n    <Select Path='R&#x26;D'>*[System["
      "Provider/@Name=&apos;&#228;&apos; and EventID &lt;= 5]]</Select >\n  </Query>\n"
      "</QueryList>\n");
  ASSERT_TRUE(query);
  EXPECT_EQ(query->channel, "R&D");
  ASSERT_TRUE(query->condition);
  EXPECT_TRUE(query->condition({"\xc3\xa4", 5, 0, 0}));
  EXPECT_FALSE(query->condition({"\xc3\xa4", 6, 0, 0}));
}

TEST(EventQueryTest, BadExpressionLeavesTheChannel) {
  const auto query = ParseEventQuery(Document("<Select Path=\"A\">*[System[(]]</Select>"));
  ASSERT_TRUE(query);
  EXPECT_EQ(query->channel, "A");
  EXPECT_FALSE(query->condition);
}

TEST(EventQueryTest, RefusesOtherDocuments) {
  ASSERT_TRUE(ParseEventQuery(Document("<Select Path=\"A\">*</Select>")));
  for (const std::string& document : {
           std::string(),
           std::string("<QueryList/>"),
           std::string("<QueryList><Query Id=\"0\" Path=\"A\"/></QueryList>"),
           Document(""),
           Document("<Select Path=\"A\"/>"),
           Document("<Select Path=\"B\">*</Select>"),
           Document("<Select>*</Select>"),
           Document("<Select Path=A>*</Select>"),
           Document("<Select Path=\"A>*</Select>"),
           Document("<Suppress Path=\"A\">*</Suppress>"),
           Document("<Select Path=\"A\">*</Select><Select Path=\"A\">*</Select>"),
           Document("<Select Path=\"A\">*[System[EventID <= 5]]</Select>"),
           Document("<Select Path=\"A\">&unknown;</Select>"),
           Document("<Select Path=\"A\">&#0;</Select>"),
           Document("<Select Path=\"A\">*</select>"),
           Document("<Select Path=\"A\">*"),
           Document("<Select Path=\"A\">*</Select>") + "*",
           Document("<Select Path=\"A\">*</Select>") + "<QueryList/>",
       }) {
    EXPECT_FALSE(ParseEventQuery(document)) << document;
  }
}

}  // namespace
}  // namespace ostrell
