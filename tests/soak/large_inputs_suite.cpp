#include <fmt/core.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <fstream>

#include "store/record_store.h"
#include "store/schema.h"
#include "tests/soak/soak.h"
#include "tests/system/agent_run.h"
#include "unified/event_logs.h"
#include "unified/log_matches.h"

// The whole program, each time with one large input and nothing else to report.

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMiB = size_t{1} << 20;
constexpr size_t kDetailBytes = 4096;  // of a row of the pop-up database

std::string Repeated(const std::string& text, size_t count) {
  std::string all;
  for (size_t i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

fs::path Log(const SampleProduct& product) {
  return product.BinFolder() / "protsvc.log";
}

// Each makes an input of that size; there may be a smaller one.

void MakeDumps(const SampleProduct& product, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    std::error_code isThere;
    fs::create_hard_link(product.DataFolder() / "kept",
                         product.BinFolder() / fmt::format("vguard.exe.{}.dmp", i), isThere);
  }
}

void MakeEvents(const SampleProduct& product, size_t count) {
  const std::time_t time = std::time(nullptr);
  char event[256];
  std::strftime(event, sizeof event,
                "<Event><System><Provider Name='Application Error'/><EventID>1000</EventID>"
                "<TimeCreated SystemTime='%Y-%m-%dT%H:%M:%SZ'/></System><Data>protsvc</Data>"
                "</Event>\n\n",
                std::gmtime(&time));
  WriteText(product.BinFolder() / "events/Application.xml", Repeated(event, count));
}

void MakeMatches(const SampleProduct& product, size_t count) {
  WriteText(Log(product), Repeated(FailureAt(std::time(nullptr)), count));
}

// Its match comes last.
void MakeLine(const SampleProduct& product, size_t bytes) {
  const std::string line = FailureAt(std::time(nullptr));
  WriteText(Log(product), line.substr(0, line.find(']')));
  fs::resize_file(Log(product), bytes - line.size());
  std::ofstream(Log(product), std::ios::app) << line;
}

// A match in each MiB.
void MakeLog(const SampleProduct& product, size_t bytes) {
  std::string block = FailureAt(std::time(nullptr));
  block += Repeated("[2026-01-31 12:00:00] on-access scan ready, 41 of 41 ok\n", kMiB / 56);
  block.resize(kMiB, '\n');
  std::ofstream log(Log(product));
  for (size_t i = 0; i < bytes; i += kMiB) {
    log << block;
  }
}

// A CRC-32 tells all names of four characters apart, and so the items of these two.

void MakePopups(const SampleProduct& product, size_t rows) {
  const fs::path database = product.DataFolder() / "adblkuser.db";
  std::string detail = R"({"product_name":"popblock","gname":"g","iname":"@@@@","x":""})";
  detail.insert(detail.size() - 2, kDetailBytes - detail.size(), 'x');
  fs::remove(database);
  WriteText(database.string() + ".sql",
            fmt::format("PRAGMA synchronous=OFF; {}; {}; WITH RECURSIVE c(i) AS (SELECT 1 UNION "
                        "ALL SELECT i+1 FROM c WHERE i<{}) INSERT INTO BlockItemLog(ts, detail) "
                        "SELECT {}, replace('{}', '@@@@', char(35+(i>>15&31), 35+(i>>10&31), "
                        "35+(i>>5&31), 35+(i&31))) FROM c;",
                        kBlockItemSchema.creation, kBlockItemIndexes[0].creation, rows,
                        std::time(nullptr), detail));
  EXPECT_EQ(std::system(fmt::format("sqlite3 '{0}' <'{0}.sql'", database.string()).c_str()), 0);
}

void MakeRecords(const SampleProduct& product, size_t count) {
  std::string records = "[";
  for (size_t i = 0; i < count; ++i) {
    const auto letter = [i](int shift) { return static_cast<char>('#' + (i >> shift & 31)); };
    records += fmt::format(R"({{"ts":{},"fid":66,"detail":{{"name":"{}{}{}{}"}}}},)",
                           std::time(nullptr), letter(15), letter(10), letter(5), letter(0));
  }
  records.back() = ']';
  WriteText(product.DataFolder() / "records.json", records);
}

constexpr struct LargeInput {
  const char* name;
  size_t whole;  // size: how many, or bytes
  void (*make)(const SampleProduct& product, size_t size);
  size_t sizeOfItem = 1;    // an item is reported for each so much,
  size_t limit = SIZE_MAX;  // and no more than that
} kInputs[] = {
    {"dumps", 20000, MakeDumps},
    {"events", 100000, MakeEvents, 1, kMaxEventsOfQuery},
    {"matching lines", 300000, MakeMatches, 1, kMaxLogMatches},
    {"bytes in a line", 4096 * kMiB, MakeLine, 1, 1},
    {"bytes of a log", 4096 * kMiB, MakeLog, kMiB},
    {"pop-up rows", 466000, MakePopups, 1, kMaxDetailBytes / kDetailBytes},
    {"records", 300000, MakeRecords},
};

// The memory that it took, in bytes.
int64_t TryInput(const LargeInput& input, const SampleProduct& product, size_t size) {
  SCOPED_TRACE(fmt::format("{} {}", size, input.name));
  input.make(product, size);
  for (const char* due : {"rpttm_li", "rpttm_li_tools", "rpttm_localinfo"}) {
    product.Set("int64", due, 0);
  }
  const AgentServer server;
  const RunResult run = RunAgent();
  EXPECT_EQ(run.exitCode, 0);
  size_t items = 0;
  for (const JsonOwner& request : server.server.Requests()) {
    items += static_cast<size_t>(Integer64Member(request.Get(), "items").value_or(0));
  }
  EXPECT_EQ(items, std::min((size + input.sizeOfItem - 1) / input.sizeOfItem, input.limit));
  fmt::print("{:10} {:16} {:7} ms {:7} KiB {:7} items\n", size, input.name, run.wall.count(),
             run.peakBytes / 1024, items);
  return run.peakBytes;
}

TEST(LargeInputs, BringWhatTheLimitsSay) {
  for (const LargeInput& input : kInputs) {
    const SampleProduct product;
    const fs::path bin = product.BinFolder();
    fs::rename(bin / "vguard.exe.2816.dmp", product.DataFolder() / "kept");
    for (const char* file : {"vguard.exe.1408.dmp", "note.dmp", "../setup.5632.dmp", "protsvc.log",
                             "qxupdate.exe.log", "events/Application.xml", "events/System.xml"}) {
      EXPECT_TRUE(fs::remove(bin / file)) << file;
    }
    fs::remove(product.DataFolder() / "records.json");
    int64_t atLimit = INT64_MAX;
    for (size_t part = IsWholeSoak() ? 4 : 1; part > 0; part /= 2) {
      const size_t size = input.whole / part / SoakStep(400);
      const int64_t peak = TryInput(input, product, size);
      if (size / input.sizeOfItem > input.limit) {
        atLimit = std::min(atLimit, peak);
        EXPECT_LE(peak, atLimit + kMiB) << "past its limit an input costs no more memory";
      }
    }
  }
}

}  // namespace
}  // namespace ostrell
