#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "platform/policydb.h"
#include "platform/svclink.h"
#include "platform/tracelog.h"
#include "tests/support/fake_svclink.h"

namespace ostrell {
namespace {

int called = -1;

template <int number>
intptr_t Note(void*) {
  called = number;
  return 0;
}

// An object as the library makes it: the address of a table of functions.
template <class Object>
Object& Foreign() {
  static constexpr intptr_t (*kFunctions[])(void*) = {
      Note<0>, Note<1>, Note<2>, Note<3>,  Note<4>,  Note<5>,  Note<6>,
      Note<7>, Note<8>, Note<9>, Note<10>, Note<11>, Note<12>, Note<13>};
  static const void* table = kFunctions;
  return *reinterpret_cast<Object*>(&table);
}

#if defined(__clang__)
#define OSTRELL_FOREIGN_OBJECT __attribute__((no_sanitize("undefined")))
#else
#define OSTRELL_FOREIGN_OBJECT
#endif

// The numbers are those of the library's own interface.
TEST(PolicyDb, OperationsAreAtTheirSlots) OSTRELL_FOREIGN_OBJECT {
  int32_t number = 0;
  int64_t time = 0;
  const auto expect = [](int slot) { EXPECT_EQ(std::exchange(called, -1), slot); };
  auto& store = Foreign<SettingsStore>();
  store.Release(), expect(0);
  store.ReadInt32("", &number), expect(1);
  store.ReadInt64("", &time), expect(2);
  store.WriteInt64("", 0), expect(5);
  auto& document = Foreign<PolicyDocument>();
  document.Release(), expect(2);
  document.Json(), expect(4);
  document.Query(nullptr), expect(7);
  auto& quarantine = Foreign<Quarantine>();
  quarantine.Release(), expect(0);
  quarantine.Restore(0, nullptr), expect(9);
  quarantine.List(), expect(13);
}

TEST(ClosedLibraries, MissingEntriesAreFailures) {
  const PolicyDb policydb(PolicyDbEntries{});
  EXPECT_FALSE(policydb.OpenSettingsStore("ostrell"));
  EXPECT_FALSE(policydb.OpenDocument(0, "C:\\"));
  EXPECT_FALSE(policydb.OpenQuarantine());
  const Svclink svclink(SvclinkEntries{});
  EXPECT_FALSE(svclink.OpenStream());
  EXPECT_FALSE(svclink.OpenSignatureFile("patt.db"));
  EXPECT_EQ(svclink.KindOf(nullptr), 0u);
  EXPECT_FALSE(svclink.TakeRecord(nullptr));
  TraceLogger(TraceLog(TraceLogEntries{}), "operation")(L"%d", 1);
}

// An object whose entries are null is not called.
TEST(Svclink, ObjectWithoutOperationsIsNone) {
  FakeSvclink library;
  library.versions["patt.db"] = 5;
  EXPECT_TRUE(library.Library().OpenSignatureFile("patt.db"));
  library.odd["hasNoOpen"] = 1;
  EXPECT_FALSE(library.Library().OpenStream());
  EXPECT_FALSE(library.Library().OpenSignatureFile("patt.db"));
}

// A kind is told by the result 1 alone, a record by any that is not negative.
TEST(Svclink, ResultsDecide) {
  FakeSvclink library;
  const Svclink svclink = library.Library();
  const auto stream = svclink.OpenStream();
  for (int32_t result = -1; result <= 2; ++result) {
    library.odd = {{"queryResult", result}, {"takeResult", result}};
    EXPECT_EQ(svclink.KindOf(stream.Get()), result == 1 ? 0x20FFFFu : 0u);
    EXPECT_EQ(static_cast<bool>(svclink.TakeRecord(stream.Get())), result >= 0);
  }
}

}  // namespace
}  // namespace ostrell
