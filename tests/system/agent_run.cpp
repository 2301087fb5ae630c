#include "tests/system/agent_run.h"

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace ostrell {
namespace {

const std::string kSource = OSTRELL_SOURCE;
const std::string kWindowsBuild = OSTRELL_WINDOWS_BUILD;
const std::string kPrefix = kSource + "/build/wine/system";

const std::string kReceived = kPrefix + "/received";
const std::string kBefore = kPrefix + "/before";

std::string EmptyFolder(const std::string& path) {
  std::filesystem::remove_all(path);
  return path;
}

std::set<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

int RunCommand(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string Quoted(const std::filesystem::path& path) {
  return "'" + path.string() + "'";
}

std::string Wine(const std::string& channels) {
  return "OSTRELL_WINE_PREFIX=" + Quoted(kPrefix) + " WINEDEBUG=" + channels + " " +
         Quoted(kSource + "/script/wine") + " ";
}

std::filesystem::path InDrive(const char* path) {
  return std::filesystem::path(kPrefix) / "drive_c" / path;
}

std::filesystem::path AgentFile() {
  return InDrive("Program Files/Velmora/Corvane/bin/ostrell.exe");
}

std::filesystem::path SettingsFile() {
  return InDrive("ProgramData/Velmora/Corvane/settings/ostrell.json");
}

}  // namespace

SampleProduct::SampleProduct(Due due) {
  EXPECT_EQ(RunCommand(Quoted(kSource + "/devkit/sample/sample") + " make " + Quoted(kPrefix) +
                       " " + Quoted(kWindowsBuild + "/product")),
            0);
  if (due == Due::kAll) {
    EXPECT_EQ(RunCommand(Wine("-all") + Quoted(BinFolder() / "popblock.exe") +
                         " 'C:\\ProgramData\\Velmora\\Corvane\\adblkuser.db' once >/dev/null 2>&1"),
              0);
  } else {
    constexpr int64_t kYear2100 = 4102444800;
    for (const char* key :
         {"rpttm_li", "rpttm_li_tools", "rpttm_sf", "rpttm_fp", "rpttm_qf", "rpttm_cc"}) {
      Set("int64", key, kYear2100);
    }
  }
}

void SampleProduct::Become(const std::string& scenario) const {
  EXPECT_EQ(RunCommand(Quoted(kSource + "/devkit/sample/sample") + " scenario " + Quoted(kPrefix) +
                       " " + scenario),
            0);
}

std::filesystem::path SampleProduct::BinFolder() const {
  return InstallFolder() / "bin";
}
std::filesystem::path SampleProduct::InstallFolder() const {
  return InDrive("Program Files/Velmora/Corvane");
}
std::filesystem::path SampleProduct::DataFolder() const {
  return InDrive("ProgramData/Velmora/Corvane");
}

std::optional<int64_t> SampleProduct::Time(const std::string& key) const {
  const JsonOwner settings(json_load_file(SettingsFile().c_str(), 0, nullptr));
  const json_t* value = json_object_get(json_object_get(settings.Get(), "int64"), key.c_str());
  return json_is_integer(value) ? std::optional(json_integer_value(value)) : std::nullopt;
}

void SampleProduct::Set(const char* width, const std::string& key, int64_t value) const {
  JsonOwner settings(json_load_file(SettingsFile().c_str(), 0, nullptr));
  if (!settings) {
    settings.Reset(json_object());
  }
  json_t* section = json_object_get(settings.Get(), width);
  if (section == nullptr) {
    section = json_object();
    json_object_set_new(settings.Get(), width, section);
  }
  json_object_set_new(section, key.c_str(), json_integer(value));
  EXPECT_EQ(json_dump_file(settings.Get(), SettingsFile().c_str(), JSON_INDENT(2)), 0);
}

std::string SampleProduct::SettingsText() const {
  return ReadText(SettingsFile());
}

std::vector<std::string> SampleProduct::Messages() const {
  std::vector<std::string> messages;
  std::istringstream lines(ReadText(BinFolder() / "tracelog.txt"));
  for (std::string line; std::getline(lines, line);) {
    const size_t colon = line.find(':');
    const size_t text = line.find(' ', line.find(' ', colon) + 1);
    messages.push_back(line.substr(0, colon) + line.substr(text));
  }
  return messages;
}

void SampleProduct::Registry(const std::string& arguments) const {
  EXPECT_EQ(RunCommand(Wine("-all") + "reg " + arguments + " >/dev/null 2>&1"), 0) << arguments;
}

std::string AttachToAgent(const std::string& commands) {
  const std::string said = kPrefix + "/gdb.txt";
  WriteText(kPrefix + "/gdb-commands.txt", commands);
  RunCommand(Wine("-all") + "--attach " + Quoted(AgentFile()) + " <" +
             Quoted(kPrefix + "/gdb-commands.txt") + " >" + Quoted(said) + " 2>&1");
  return ReadText(said);
}

RunResult RunAgent(const std::string& channels, const std::string& environment) {
  const std::string trace = kPrefix + "/trace.txt";
  const std::string peak = kPrefix + "/peak.txt";
  const auto began = std::chrono::steady_clock::now();
  // What this program itself takes would count, too, were the run its child.
  const int exitCode =
      RunCommand("cd / && " + environment + "/usr/bin/time -q -f %M -o " + Quoted(peak) + " env " +
                 Wine(channels) + Quoted(AgentFile()) + " 2>" + Quoted(trace) + " >/dev/null");
  const auto wall = std::chrono::steady_clock::now() - began;
  return {exitCode, ReadText(trace), int64_t{1024} * std::stoll("0" + ReadText(peak)),
          std::chrono::duration_cast<std::chrono::milliseconds>(wall)};
}

void StopWine(const std::string& how) {
  // The file names the folder where server and programs meet, which is the account's own.
  EXPECT_EQ(RunCommand(". " + Quoted(kSource + "/cmake/distribution") +
                       "; WINEPREFIX=" + Quoted(kPrefix) + " " + how +
                       "\"$wineserver\" -kw; rm -f " + Quoted(kPrefix + "/wineserver")),
            0);
}

AgentServer::AgentServer()
    : server({.store = EmptyFolder(kReceived),
              .instructions = ReadText(kSource + "/devkit/sample/instructions.json"),
              .known = Lines(ReadText(kPrefix + "/known-samples.txt"))}) {
  std::string why;
  EXPECT_TRUE(server.Start(&why)) << why;
}

std::vector<AgentServer::Request> AgentServer::Requests(const std::string& report) const {
  std::vector<Request> requests;
  for (const JsonOwner& line : server.Requests()) {
    const auto text = [&](const char* member) {
      const char* value = json_string_value(json_object_get(line.Get(), member));
      return std::string(value != nullptr ? value : "");
    };
    if (!report.empty() && text("report") != report) {
      continue;
    }
    Request request{json_integer_value(json_object_get(line.Get(), "number")),
                    text("report"),
                    text("method"),
                    {}};
    const char* key = nullptr;
    json_t* value = nullptr;
    json_object_foreach(json_object_get(line.Get(), "query"), key, value) {
      request.query[key] = json_string_value(value);
    }
    requests.push_back(std::move(request));
  }
  return requests;
}

std::vector<std::string> AgentServer::Bodies(const std::string& report) const {
  std::vector<std::string> bodies;
  for (const Request& request : Requests(report)) {
    if (request.method == "PUT") {
      bodies.push_back(ReadText(fmt::format("{}/{:04}.body", kReceived, request.number)));
    }
  }
  return bodies;
}

JsonOwner AgentServer::Body(const std::string& report) const {
  const auto bodies = Bodies(report);
  return JsonOwner(bodies.size() == 1 ? json_loads(bodies[0].c_str(), 0, nullptr) : nullptr);
}

RunJudge::RunJudge(const SampleProduct& product) : now(std::to_string(std::time(nullptr))) {
  std::filesystem::copy(product.DataFolder(), EmptyFolder(kBefore),
                        std::filesystem::copy_options::recursive);
}

bool RunJudge::FindsAllThatWasDue() const {
  return RunCommand(Quoted(OSTRELL_REPORT_SUMMARY) + " --store " + Quoted(kReceived) +
                    " --expected " + Quoted(kPrefix + "/expected.json") + " --before " +
                    Quoted(kBefore) + " --now " + now) == 0;
}

std::string ReadText(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

void WriteText(const std::filesystem::path& file, std::string_view text) {
  std::ofstream(file, std::ios::binary) << text;
}

}  // namespace ostrell
