#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "platform/policydb.h"
#include "platform/svclink.h"
#include "platform/tracelog.h"

namespace ostrell {
namespace {

int called = -1;

// An object as the library makes it: the address of a table of functions. Each notes its number.
template <int number>
intptr_t Note(void*) {
  called = number;
  return 0;
}
struct Table {
  static constexpr std::array<intptr_t (*)(void*), 14> kFunctions = {
      Note<0>, Note<1>, Note<2>, Note<3>,  Note<4>,  Note<5>,  Note<6>,
      Note<7>, Note<8>, Note<9>, Note<10>, Note<11>, Note<12>, Note<13>};
  const void* functions = kFunctions.data();
};

template <class Object>
Object& As(Table& table) {
  return *reinterpret_cast<Object*>(&table);
}

#if defined(__clang__)
#define OSTRELL_FOREIGN_OBJECT __attribute__((no_sanitize("undefined")))
#else
#define OSTRELL_FOREIGN_OBJECT
#endif

// The numbers are those of the library's own interface.
TEST(PolicyDb, OperationsAreAtTheirSlots) OSTRELL_FOREIGN_OBJECT {
  Table table;
  int32_t number = 0;
  int64_t time = 0;
  const auto expect = [](int slot) { EXPECT_EQ(std::exchange(called, -1), slot); };
  auto& store = As<SettingsStore>(table);
  store.Release(), expect(0);
  store.ReadInt32("", &number), expect(1);
  store.ReadInt64("", &time), expect(2);
  store.WriteInt64("", 0), expect(5);
  auto& document = As<PolicyDocument>(table);
  document.Release(), expect(2);
  document.Json(), expect(4);
  document.Query(nullptr), expect(7);
  auto& quarantine = As<Quarantine>(table);
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
  static SvclinkObject bare{};
  const Svclink svclink(
      {.queryKind = nullptr, .createObject = [](int32_t) { return &bare; }, .takeRecord = nullptr});
  EXPECT_FALSE(svclink.OpenStream());
  EXPECT_FALSE(svclink.OpenSignatureFile("patt.db"));
}

}  // namespace
}  // namespace ostrell
