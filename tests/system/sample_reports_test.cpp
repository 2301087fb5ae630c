#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t kDay = 86400;

// The digests below are those of the sha1sum program.
constexpr char kKnownSha1[] = "B39A8714250A5C1A262B780E6AD7D93D751D1EAD";

// A file of the sample product, by the path that Windows has for it.
class SampleFiles {
 public:
  explicit SampleFiles(const SampleProduct& product) : folder(product.DataFolder() / "files") {
    std::filesystem::create_directories(folder);
  }

  std::string Write(const char* name, std::string_view text) const {
    WriteText(folder / name, text);
    return Path(name);
  }
  static std::string Path(const std::string& name) {
    return "C:\\ProgramData\\Velmora\\Corvane\\files\\" + name;
  }

 private:
  std::filesystem::path folder;
};

// One time for all: their order is that of the file then.
const int64_t kAnHourAgo = std::time(nullptr) - 3600;

JsonOwner Record(int64_t fid, JsonOwner detail) {
  return JsonOwner(json_pack("{s:I, s:I, s:o}", "fid", json_int_t{fid}, "ts",
                             json_int_t{kAnHourAgo}, "detail", detail.Release()));
}

JsonOwner Named(const char* member, const std::string& path) {
  return JsonOwner(json_pack("{s:s}", member, path.c_str()));
}

void WriteRecords(const SampleProduct& product, std::vector<JsonOwner> records) {
  JsonOwner all(json_array());
  for (JsonOwner& record : records) {
    json_array_append_new(all.Get(), record.Release());
  }
  WriteText(product.DataFolder() / "records.json", CompactText(all));
}

// The questions as "source path status", and the uploads as "upload digest", in their order.
std::vector<std::string> Samples(const AgentServer& server) {
  std::vector<std::string> samples;
  for (const auto& request : server.Requests("rc3")) {
    const auto& query = request.query;
    if (request.method == "PUT") {
      samples.push_back("upload " + query.at("h"));
    } else if (!query.contains("o")) {
      const std::string& path = query.at("p");
      samples.push_back(fmt::format("{} {} {}", query.at("t"), path.substr(path.rfind('\\') + 1),
                                    request.status));
    }
  }
  return samples;
}

TEST(SampleReports, AsksFirstAndSendsWhatIsUnknown) {
  const SampleProduct product;
  const AgentServer server({kKnownSha1});
  const SampleFiles files(product);
  constexpr int64_t kSubmitted = -2147483647;
  std::vector<JsonOwner> records;
  const auto submit = [&](const std::string& path) {
    records.push_back(Record(kSubmitted, Named("pathname", path)));
  };
  submit(files.Write("1023.bin", std::string(1023, 'x')));
  submit(files.Write("1024 \xC3\xA9&#.bin", std::string(1024, 'x')));
  submit(SampleFiles::Path("1024 \xC3\xA9&#.BIN"));
  submit(files.Write("5242880.bin", std::string(5242880, 'x')));
  submit(files.Write("5242881.bin", std::string(5242881, 'x')));
  submit(files.Write("link.lnk", std::string("L\0\0\0", 4) + std::string(2000, 'x')));
  submit(files.Write("known.bin", std::string(2000, 'k')));
  submit(SampleFiles::Path("missing.bin"));
  submit(SampleFiles::Path(std::string(600, 'f')));
  submit(SampleFiles::Path(""));
  records.push_back(Record(kSubmitted, JsonOwner(json_object())));
  records.push_back(
      Record(31, Named("procname", files.Write("network.exe", std::string(3000, 'n')))));
  records.push_back(Record(47, Named("procname", SampleFiles::Path("KNOWN.bin"))));
  records.push_back(Record(47, Named("procname", "System")));
  records.push_back(Record(30, Named("procname", SampleFiles::Path("1023.bin"))));
  WriteRecords(product, std::move(records));
  product.SetTime("rpttm_sf", 0);
  EXPECT_EQ(RunAgent().exitCode, 0);

  EXPECT_THAT(Samples(server),
              ElementsAre("2 1024 \xC3\xA9&#.bin 404",
                          "upload D5A3C9BD7E746C98B4AEA0E9194FB9555B3C22AD", "2 5242880.bin 404",
                          "upload 4C7DFFD80750FD231E27D71292631F7E9846B020", "2 known.bin 200",
                          "2 network.exe 404", "upload 1AA6D627333232CA9582579EB4617368DDB50699"));
  EXPECT_THAT(server.Bodies("rc3"), ElementsAre(std::string(1024, 'x'), std::string(5242880, 'x'),
                                                std::string(3000, 'n')));
  EXPECT_GT(product.Time("rpttm_sf"), 0);
}

// Without a record of its first pass a job sends nothing and keeps its time. A question that the
// server does not answer counts as handled, and the time moves on. False positives are of three
// kinds.
TEST(SampleReports, NoRecordAndNoAnswer) {
  const SampleProduct product;
  AgentServer server;
  server.server.SetFaults({Fault::kStatus500});
  const SampleFiles files(product);
  std::vector<JsonOwner> records;
  records.push_back(Record(31, Named("procname", files.Write("0.exe", std::string(2000, '0')))));
  for (const int kind : {1, 2, 3, 4, 5, 46, 3}) {
    const auto path = files.Write(fmt::format("{}.exe", kind).c_str(), std::string(2000, 'a'));
    records.push_back(
        Record(kind, JsonOwner(json_pack("{s:i, s:i, s:s, s:s}", "solid", 0, "result", 0,
                                         "pathname", path.c_str(), "recname", "Virus/Heur"))));
  }
  WriteRecords(product, std::move(records));
  product.SetTime("rpttm_sf", 0);
  product.SetTime("rpttm_fp", 0);
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_THAT(Samples(server), ElementsAre("2 1.exe 500", "2 3.exe 500", "2 4.exe 500"));
  EXPECT_EQ(product.Time("rpttm_sf"), 0);
  EXPECT_GT(product.Time("rpttm_fp"), 0);
}

JsonOwner Entry(int64_t id, int64_t fid, const std::string& sha1, const char* name,
                int64_t age = kDay) {
  return JsonOwner(json_pack("{s:I, s:I, s:s, s:s, s:s, s:I}", "id", json_int_t{id}, "fid",
                             json_int_t{fid}, "sha1", sha1.c_str(), "fn",
                             fmt::format("C:\\held\\{}", id).c_str(), "vn", name, "ts",
                             json_int_t{kAnHourAgo - age}));
}

class QuarantineReport : public testing::Test {
 protected:
  void SetUp() override {
    const auto folder = product.DataFolder() / "quarantine";
    std::filesystem::create_directories(folder);
    const JsonOwner list(json_array());
    const auto add = [&](JsonOwner entry, size_t size) {
      const auto id = json_integer_value(json_object_get(entry.Get(), "id"));
      WriteText(folder / fmt::format("{}.bin", id), std::string(size, 'q'));
      json_array_append_new(list.Get(), entry.Release());
    };
    add(Entry(1, 2, "01", "Trojan/A"), 2000);
    add(Entry(2, 1, "02", "Trojan/A", 8 * kDay), 2000);
    add(Entry(3, 1, "03", "test/Eicar"), 2000);
    add(Entry(4, 4, kKnownSha1, "Trojan/A"), 2000);
    add(Entry(5, 46, "05", "Trojan/A"), 1023);
    add(Entry(6, -2147483645, "06", "Trojan/A"), 1024);
    add(Entry(7, 3, "07", "Trojan/A"), 5242880);
    add(Entry(8, 3, "08", "Trojan/A"), 5242881);
    add(Entry(9, 1, "09", "Trojan/A"), 2000);
    std::filesystem::remove(folder / "9.bin");
    add(Entry(10, 1, "10", "Trojan/A"), 2000);
    WriteText(folder / "list.json", CompactText(list));
    product.SetTime("rpttm_qf", 0);
  }

  void Run(const char* instructions) {
    server.server.SetInstructions(instructions);
    EXPECT_EQ(RunAgent().exitCode, 0);
  }

  const SampleProduct product;
  AgentServer server{{kKnownSha1}};
};

TEST_F(QuarantineReport, SendsWhatTheServerWants) {
  Run(R"({"samples": {"quarantine": {"cnt": 3, "vnflt": ["Test>"]}}})");
  EXPECT_THAT(Samples(server),
              ElementsAre("1 4 200", "1 5 404", "1 6 404", "upload 06", "1 7 404", "upload 07",
                          "1 8 404", "1 9 404", "1 10 404", "upload 10"));
  EXPECT_THAT(server.Bodies("rc3"), ElementsAre(std::string(1024, 'q'), std::string(5242880, 'q'),
                                                std::string(2000, 'q')));
  EXPECT_GT(product.Time("rpttm_qf"), 0);
}

// To the second; the fixture's held files are there.
TEST_F(QuarantineReport, PeriodBeginsWithTheLastTime) {
  const JsonOwner list(json_array());
  json_array_append_new(list.Get(), Entry(3, 1, "BEFORE", "Trojan/A", kDay + 1).Release());
  json_array_append_new(list.Get(), Entry(10, 1, "START", "Trojan/A", kDay).Release());
  WriteText(product.DataFolder() / "quarantine/list.json", CompactText(list));
  product.SetTime("rpttm_qf", kAnHourAgo - kDay);
  Run(R"({"samples": {"quarantine": {"cnt": 2}}})");
  EXPECT_THAT(Samples(server), ElementsAre("1 10 404", "upload START"));
}

TEST_F(QuarantineReport, NeedsInstructionsAndEndsAtTheCount) {
  Run(R"({"samples": {"quarantine": {"vnflt": []}}})");
  EXPECT_EQ(product.Time("rpttm_qf"), 0);
  Run(R"({"samples": {"quarantine": {"cnt": 0}}})");
  EXPECT_THAT(server.Requests("rc3"), IsEmpty());
  EXPECT_GT(product.Time("rpttm_qf"), 0);
  product.SetTime("rpttm_qf", 0);
  Run(R"({"samples": {"quarantine": {"cnt": 1}}})");
  EXPECT_THAT(Samples(server), ElementsAre("1 3 404", "upload 03"));
}

}  // namespace
}  // namespace ostrell
