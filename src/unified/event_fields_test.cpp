#include "unified/event_fields.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

struct Case {
  const char* what;
  const wchar_t* data;
  const wchar_t* name;
  const wchar_t* timestamp;
};

TEST(ApplicationFields, ByMarkersOrWords) {
  const Case cases[] = {
      {"both markers",
       L"<Data Name='AppName'>vguard.exe</Data><Data Name='AppTimeStamp'>5f3a</Data>",
       L"vguard.exe", L"5f3a"},
      {"time stamp before the name",
       L"<Data Name='AppTimeStamp'>1</Data><Data Name='AppName'>a.exe</Data>", L"a.exe", L"1"},
      {"no time stamp", L"<Data Name='AppName'>a b</Data> c d e f ", L"a b", L""},
      {"empty name keeps the time stamp",
       L"x <Data Name='AppName'></Data><Data Name='AppTimeStamp'>7</Data>", L"", L"7"},
      {"first of two", L"<Data Name='AppName'>1</Data><Data Name='AppName'>2</Data>", L"1", L""},
      {"no end", L"<Data Name='AppName'>a.exe", L"", L""},
      {"other quotes are words", L"<Data Name=\"AppName\">a</Data> b c", L"<Data", L"b"},
      {"three words", L"protsvc.exe 5.0.0.1 4d2f", L"protsvc.exe", L"4d2f"},
      {"runs of white space", L"\t a \r\n b \v\f c d", L"a", L"c"},
      {"third word may end the text", L"a b c", L"a", L"c"},
      {"second word may not", L"a b", L"a", L""},
      {"single word", L"a", L"", L""},
      {"single word, ended", L"a ", L"a", L""},
      {"empty", L"", L"", L""},
      {"blanks", L" \n ", L"", L""},
      {"no-break space is no blank", L"a\u00a0b c d e", L"a\u00a0b", L"d"},
  };
  for (const Case& c : cases) {
    const ApplicationFields fields = ExtractApplicationFields(c.data);
    EXPECT_EQ(fields.name, c.name) << c.what;
    EXPECT_EQ(fields.timestamp, c.timestamp) << c.what;
  }
}

TEST(NamesProduct, InAnyLetterCase) {
  EXPECT_TRUE(NamesProduct(L"C:\\Program Files\\VELMORA\\x.exe"));
  EXPECT_TRUE(NamesProduct(L"the ProtSvc service"));
  EXPECT_TRUE(NamesProduct(L"protsvc"));
  EXPECT_FALSE(NamesProduct(L"protsv velmor elmora \u0280otsvc"));
  EXPECT_FALSE(NamesProduct(L""));
}

}  // namespace
}  // namespace ostrell
