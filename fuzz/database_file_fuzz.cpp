// A database of the pop-up blocker with what may lie beside it. The input is the lengths of the
// database and of its write-ahead log, 32 bits each and little-endian, then both, then its journal.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "base/json.h"
#include "base/text.h"
#include "fuzz/fuzz_target.h"
#include "store/record_store.h"
#include "store/schema.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCanary = "canary";

// A folder in memory where the system has one. It is the process's current one, too, so that an
// input can name the canary in it.
class Folder {
 public:
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

  const fs::path& Path() const { return path; }

 private:
  fs::path path;
};

void Write(const fs::path& file, std::string_view bytes) {
  if (!bytes.empty()) {
    std::ofstream(file, std::ios::binary) << bytes;
  }
}

std::string_view Take(std::string_view& rest, size_t length) {
  const std::string_view taken = rest.substr(0, length);
  rest.remove_prefix(taken.size());
  return taken;
}

size_t TakeLength(std::string_view& rest) {
  size_t length = 0;
  const std::string_view bytes = Take(rest, 4);
  for (size_t i = 0; i < bytes.size(); ++i) {
    length |= size_t{static_cast<uint8_t>(bytes[i])} << (8 * i);
  }
  return length;
}

// Time passes with every look at the clock.
int64_t PassingTime() {
  static int64_t now = 0;
  return now += 100;
}

void Use(const fs::path& file) {
  using namespace ostrell;
  Connection store;
  if (OpenRecordStore(Utf8FromWide(file.wstring()).c_str(), store, 1, PassingTime) != 1) {
    return;
  }
  EnsureSchema(store.Get());
  const JsonOwner newestFirst(json_pack("{s:{s:s,s:s}}", "o", "n", "ts", "t", "DESC"));
  for (json_t* const query : {static_cast<json_t*>(nullptr), newestFirst.Get()}) {
    uint64_t leftOut = 0;
    const JsonOwner rows = FetchBlockItems(store, query, &leftOut);
    Require(json_array_size(rows.Get()) <= kMaxBlockItems);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const size_t length = TakeLength(rest);
  const size_t logLength = TakeLength(rest);
  Write(folder.Path() / "items.db", Take(rest, length));
  Write(folder.Path() / "items.db-wal", Take(rest, logLength));
  Write(folder.Path() / "items.db-journal", rest);
  Write(folder.Path() / "canary", kCanary);
  Use(folder.Path() / "items.db");
  std::ifstream canary(folder.Path() / "canary", std::ios::binary);
  ostrell::Require(std::string{std::istreambuf_iterator<char>(canary), {}} == kCanary);
  canary.close();
  const std::set<std::string> own = {"canary", "items.db", "items.db-wal", "items.db-journal",
                                     "items.db-shm"};
  for (const auto& entry : fs::directory_iterator(folder.Path())) {
    ostrell::Require(own.contains(entry.path().filename().string()));
    fs::remove(entry.path());
  }
  return 0;
}
