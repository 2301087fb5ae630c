// A database of the pop-up blocker with what may lie beside it. The input is the lengths of the
// database and of its write-ahead log, 32 bits each and little-endian, then both, then its journal.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>

#include "base/json.h"
#include "fuzz/fuzz_target.h"
#include "store/record_store.h"
#include "store/schema.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCanary = "canary";

// A folder in memory where the system has one. It is the process's current one, so that an input
// can name the canary in it.
struct Folder {
  Folder() {
    const fs::path memory = "/dev/shm";
    path = (fs::exists(memory) ? memory : fs::temp_directory_path()) /
           ("ostrell_fuzz_" + std::to_string(std::random_device()()));
    fs::create_directories(path);
    fs::current_path(path);
  }
  ~Folder() {
    std::error_code ignored;
    fs::current_path(path.parent_path(), ignored);
    fs::remove_all(path, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  fs::path path;
};

void Write(const char* file, std::string_view bytes) {
  if (!bytes.empty()) {
    std::ofstream(file, std::ios::binary) << bytes;
  }
}

size_t TakeLength(std::string_view& rest) {
  size_t length = 0;
  for (size_t i = 0; i < 4; ++i) {
    length |= size_t{TakeByte(rest)} << (8 * i);
  }
  return length;
}

// Time passes with every look at the clock.
int64_t PassingTime() {
  static int64_t now = 0;
  return now += 100;
}

void UseDatabase() {
  Connection store;
  if (OpenRecordStore("items.db", store, 1, PassingTime) != 1) {
    return;
  }
  EnsureSchema(store.Get());
  const JsonOwner newestFirst(json_pack("{s:{s:s,s:s}}", "o", "n", "ts", "t", "DESC"));
  for (json_t* const query : {static_cast<json_t*>(nullptr), newestFirst.Get()}) {
    size_t rows = 0;
    FetchBlockItems(store, query, [&rows](const BlockItem&) { ++rows; });
    Require(rows <= kMaxBlockItems);
  }
}

}  // namespace

void CheckInput(std::string_view input) {
  static const Folder folder;
  const size_t length = TakeLength(input);
  const size_t logLength = TakeLength(input);
  Write("items.db", Take(input, length));
  Write("items.db-wal", Take(input, logLength));
  Write("items.db-journal", input);
  Write("canary", kCanary);
  UseDatabase();
  std::ifstream canary("canary", std::ios::binary);
  Require(std::string{std::istreambuf_iterator<char>(canary), {}} == kCanary);
  canary.close();
  const std::set<std::string> own = {"canary", "items.db", "items.db-wal", "items.db-journal",
                                     "items.db-shm"};
  for (const auto& entry : fs::directory_iterator(folder.path)) {
    Require(own.contains(entry.path().filename().string()));
    fs::remove(entry.path());
  }
}

}  // namespace ostrell
