#include <fmt/core.h>
#include <zlib.h>

#include <csignal>
#include <iostream>
#include <random>
#include <regex>
#include <set>

#include "devkit/report_server/packed_record_writer.h"
#include "tests/soak/hostile_server.h"
#include "tests/soak/soak.h"
#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

constexpr char kTable[] =
#include "tests/soak/hostile_answers.inc"
    ;

enum Place { kMachine, kTicket, kPut, kQuestion };
constexpr struct {
  const char* name;
  size_t connection;
  const char* key;     // what records the report
  const char* status;  // that lets the run go on
  const char* body;
} kPlaces[] = {
    {"rc1", 0, "rpttm_ui", "200", R"({"samples":{"quarantine":{"cnt":$v,"vnflt":[$v]}}})"},
    {"ticket", 1, "rpttm_localinfo", "200", R"({"url":$v,"header":$l})"},
    {"PUT", 2, "rpttm_localinfo", "200", "thanks"},
    {"question", 1, "rpttm_sf", "404", "unknown"}};

using Parts = std::map<std::string, std::string>;
struct Row {
  std::string part;
  std::string text;
  char verdict = '+';
};

std::vector<Row> RowsOf(Place place) {
  static const std::regex kText(R"((?:\n(\w+) (....)| \|)(?: ([^|\n]*[^ |\n]))?)");
  std::vector<Row> rows;
  Row row;
  const std::string table = kTable;
  for (std::sregex_iterator at(table.begin(), table.end(), kText), end; at != end; ++at) {
    if ((*at)[1].matched) {
      row = {(*at)[1], "", (*at)[2].str()[place]};
    }
    row.text = (*at)[3];
    if (row.verdict != '.') {
      rows.push_back(row);
    }
  }
  return rows;
}

std::string Replaced(std::string text, const Parts& tokens) {
  for (const auto& [token, value] : tokens) {
    for (size_t at = 0; (at = text.find(token, at)) != std::string::npos; at += value.size()) {
      text.replace(at, token.size(), value);
    }
  }
  return text;
}

std::string Expanded(std::string text) {
  text = Replaced(text, {{"~", "\r\n"}, {"$0", std::string(1, '\0')}, {"$F", "\xFF"}});
  for (size_t end = 0; (end = text.find('>')) != std::string::npos;) {
    const size_t begin = text.rfind('<', end);
    const size_t star = text.rfind('*', end);
    std::string many;
    for (size_t left = std::stoul(text.substr(star + 1)); left > 0; --left) {
      many.append(text, begin + 1, star - begin - 1);
    }
    text.replace(begin, end + 1 - begin, many);
  }
  return text;
}

std::string BodyOf(Place place, Parts& parts) {
  const size_t frame = place == kMachine ? PackRecord("", "extension").size() : 0;
  std::string body = Replaced(parts["body"], {{"$v", parts["value"]}, {"$l", parts["header"]}});
  body = Expanded(Replaced(body, {{"$u", parts["url"]}, {"$i", parts["line"]}}));
  if (parts.contains("pad")) {
    body.resize(std::max(std::stoul(parts["pad"]), frame) - frame, ' ');
  }
  body = place == kMachine ? PackRecord(body, "extension") : body;
  size_t offset = 0;
  uint32_t added = 0;
  uint32_t times = 0;
  if (std::istringstream(parts["record"]) >> offset >> added >> times) {
    PutLittleEndian32(body, offset, added + times * static_cast<uint32_t>(body.size()));
  }
  if (parts.contains("packed")) {
    body.resize(64 << 20, ' ');
    uLongf size = compressBound(body.size());
    std::vector<Bytef> packed(size);
    compress(packed.data(), &size, reinterpret_cast<const Bytef*>(body.data()), body.size());
    body.assign(packed.begin(), packed.begin() + static_cast<ptrdiff_t>(size));
  }
  return body;
}

// What the server says, up to its end.
HostileAnswer WholeAnswer(Place place, Parts& parts) {
  const std::string body = BodyOf(place, parts);
  const auto fill = [&, size = body.size()](const std::string& text) {
    const std::string line = Replaced(text, {{"$t", parts["status"]}, {"$h", "HTTP/1.1 $s x~"}});
    const std::string fewer = std::to_string(size > 0 ? size - 1 : 0);
    const std::string more = std::to_string(size + 1);
    const std::string hex = fmt::format("{:x}", size);
    return Replaced(Expanded(line), {{"$n", std::to_string(size)},
                                     {"$m", fewer},
                                     {"$p", more},
                                     {"$x", hex},
                                     {"$s", kPlaces[place].status}});
  };
  if (parts.contains("endless")) {
    const std::string endless = fill(parts["endless"]);
    const std::string again = endless.substr(endless.find('@') + 1);
    return {.bytes = endless.substr(0, endless.find('@')),
            .again = Expanded(fmt::format("<{}*{}>", again, 65536 / again.size()))};
  }
  const std::string head = fill(parts["first"] + "~" + parts["lines"] + parts["packed"]);
  const std::string rest =
      parts.contains("chunks")
          ? Replaced(fill("Transfer-Encoding: chunked~~" + parts["chunks"]), {{"@", body}})
          : fill(parts["length"] + "~") + body;
  return {.bytes = head + rest};
}

HostileAnswer AnswerOf(Place place, const std::vector<Row>& rows, uint64_t random) {
  Parts parts = {{"first", "HTTP/1.1 $t"}, {"status", "$s OK"}, {"length", "Content-Length: $n~"}};
  parts["body"] = kPlaces[place].body;
  parts["value"] = place == kTicket ? R"("$u")" : "3";
  parts["header"] = "[$i]";
  parts["url"] = "https://127.0.0.1:18443/put";
  for (const Row& row : rows) {
    parts[row.part] = row.text;
  }
  const std::string end = parts["end"];
  const auto ends = [&end](const char* word) { return end.find(word) != std::string::npos; };
  parts["status"] = ends("417") ? "417 x" : parts["status"];
  HostileAnswer answer = WholeAnswer(place, parts);
  answer.bytes.resize(ends("part") ? random % answer.bytes.size() : answer.bytes.size());
  answer.piece = ends("drops") ? 1 + random % 7 : 0;
  answer.isEarly = ends("early");
  answer.isPlain = ends("plain");
  answer.handshakeSteps = ends("step") ? end[5] - '0' : answer.handshakeSteps;
  answer.hasNotice = !ends("cut");
  answer.isReset = ends("reset");
  return answer;
}

std::string GoodAnswer(const std::string& head) {
  const bool isTicket = head.find("&o=") != std::string::npos;
  const Place get = isTicket ? kTicket : head.starts_with("GET /v8/rc1") ? kMachine : kQuestion;
  const Place place = head.starts_with("PUT ") ? kPut : get;
  return AnswerOf(place, {{"first", "HTTP/1.1 200 OK"}}, 0).bytes;
}

class HostileAnswers : public testing::TestWithParam<Place> {
 protected:
  static void SetUpTestSuite() {
    std::signal(SIGPIPE, SIG_IGN);
    product = std::make_unique<SampleProduct>();
    RunAgent();  // takes an identity and cleans up
  }
  static void TearDownTestSuite() { product.reset(); }

  // All files of the drive but those that every run may write.
  static auto Files() {
    std::map<std::string, std::pair<uintmax_t, std::filesystem::file_time_type>> files;
    const std::set<std::string> kWritten = {"ostrell.json", "tracelog.txt", "crashsentry.txt"};
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(product->DataFolder() / "../../..")) {
      if (entry.is_regular_file() && !kWritten.contains(entry.path().filename())) {
        files[entry.path()] = {entry.file_size(), entry.last_write_time()};
      }
    }
    return files;
  }

  // All connections that were made, and how many of them to the server.
  size_t Connections(const std::string& trace) const {
    static const std::regex kMade("connect socket [^\n]*address ([^,]*), port ([0-9]+)");
    size_t made = 0;
    for (std::sregex_iterator at(trace.begin(), trace.end(), kMade), end; at != end; ++at) {
      const std::string to = at->format("$1:$2");
      EXPECT_TRUE(place == kTicket ? to.starts_with("127.0.0.1:")
                                   : to == HostileServer::kAddresses[0])
          << to;
      made += std::ranges::count(HostileServer::kAddresses, to) > 0 ? 1 : 0;
    }
    return made;
  }

  // How many reports came whole.
  static size_t Arrived(const std::vector<HostileRequest>& requests) {
    std::set<std::string> asked;
    size_t whole = 0;
    for (const auto& [bytes, head, isWhole] : requests) {
      // One whose body was refused when it was announced may come again, without announcement.
      const bool isRefused = head.starts_with("PUT ") && bytes.size() == head.size() + 4;
      EXPECT_TRUE(head.empty() || isRefused ||
                  asked.insert(head.substr(0, head.find("\r\n"))).second)
          << head;
      EXPECT_EQ(head.find("X-Evil") & head.find("/evil"), std::string::npos);
      whole += isWhole ? 1 : 0;
    }
    return whole;
  }

  void Try(const std::string& name, const HostileAnswer& answer, char verdict) {
    SCOPED_TRACE(name);
    for (const auto& other : kPlaces) {
      product->Set("int64", other.key, 4102444800);  // the year 2100
    }
    product->Set("int64", kPlaces[place].key, 0);
    const auto files = Files();
    const std::string settings = product->SettingsText();
    HostileServer server(kPlaces[place].connection, answer, GoodAnswer);
    const RunResult run = RunAgent("trace+winsock", "timeout 1200 env ");
    const auto& requests = server.Stop();
    const size_t arrived = Arrived(requests);
    const bool isRecorded = product->Time(kPlaces[place].key) > 0;
    const bool isDone = place == kQuestion ? arrived > 0 : isRecorded;
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_GT(requests.size(), kPlaces[place].connection);
    EXPECT_TRUE(verdict == '?' || isDone == (verdict == '+')) << "arrived: " << isDone;
    EXPECT_TRUE(isRecorded || product->SettingsText() == settings);
    EXPECT_TRUE(!isRecorded || place == kMachine || place == kQuestion || arrived == 1);
    EXPECT_TRUE(place != kQuestion || (isRecorded && requests.size() == 6 + 2 * arrived));
    EXPECT_EQ(Connections(run.trace), requests.size());
    EXPECT_TRUE(Files() == files);
    allowed = tried++ == 0 ? run.peakBytes + (int64_t{64} << 20) : allowed;
    EXPECT_LE(run.peakBytes, allowed);
    longest = std::max(longest, {run.wall.count(), name});
    highest = std::max(highest, {run.peakBytes, name});
  }

  const Place place = GetParam();
  size_t tried = 0;
  int64_t allowed = 0;
  std::pair<int64_t, std::string> longest;
  std::pair<int64_t, std::string> highest;
  static inline std::unique_ptr<SampleProduct> product;
};

TEST_P(HostileAnswers, HarmNothing) {
  constexpr size_t kSeed = 20261126;
  std::mt19937_64 random(kSeed + place);
  const std::vector<Row> rows = RowsOf(place);
  const size_t count = std::max<size_t>(200, rows.size());
  Try("a good one", AnswerOf(place, {}, 0), '+');
  // What has done harm before.
  Try("endless trailers",
      AnswerOf(place, {{"endless", "$hTransfer-Encoding: chunked~~0~@X: y~"}}, 0), '-');
  if (place == kPut) {
    Try("an answer before the body", AnswerOf(place, {{"end", "early"}}, 0), '-');
  }
  for (size_t i = random() % SoakStep(101); i < count; i += SoakStep(101)) {
    const Row row = i < rows.size() ? rows[i] : rows[random() % rows.size()];
    const Row other = i < rows.size() ? row : rows[random() % rows.size()];
    const std::string name =
        row.part + " " + row.text + (i < rows.size() ? "" : "; " + other.part + " " + other.text);
    Try(name, AnswerOf(place, {row, other}, random()),
        row.verdict == other.verdict ? row.verdict : '?');
  }
  if (IsWholeSoak() && (place == kTicket || place == kPut)) {
    Try("a drop a second", {.bytes = "HTTP/1.1 200 x\r\n\r\n", .again = " ", .isPatient = true},
        '-');
  }
  std::cout << fmt::format("{}, seed {}: {} answers\n  longest {} ms: {}\n  highest {} MiB: {}\n",
                           kPlaces[place].name, kSeed, tried, longest.first, longest.second,
                           highest.first >> 20, highest.second);
}

INSTANTIATE_TEST_SUITE_P(All, HostileAnswers, testing::Values(kMachine, kTicket, kPut, kQuestion),
                         [](const auto& info) { return std::string(kPlaces[info.param].name); });

}  // namespace
}  // namespace ostrell
