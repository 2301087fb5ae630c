#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/report_server/report_server.h"

namespace ostrell {

// The sample product in a Wine prefix of the tests' own, made afresh.
class SampleProduct {
 public:
  // Which reports its first run sends: rc1 and rc7, or every one. Of the others the settings file
  // says that they were sent in the year 2100.
  enum class Due { kMachineAndUnified, kAll };
  explicit SampleProduct(Due due = Due::kMachineAndUnified);

  // Makes of it the machine that devkit/sample/scenarios/NAME describes.
  void Become(const std::string& scenario) const;

  // The folders of the installation, as this machine sees them.
  std::filesystem::path BinFolder() const;      // where ostrell.exe and the closed libraries lie
  std::filesystem::path InstallFolder() const;  // VERSION
  std::filesystem::path DataFolder() const;     // sigdb, settings, documents

  // The value of a 64-bit setting; nothing when there is none.
  std::optional<int64_t> Time(const std::string& key) const;
  // `width` is "int32" or "int64".
  void Set(const char* width, const std::string& key, int64_t value) const;
  std::string SettingsText() const;

  // What the agent logged, without line numbers and levels: "operation text".
  std::vector<std::string> Messages() const;

  // Runs a registry command such as: add KEY /v NAME /d VALUE /f
  void Registry(const std::string& arguments) const;
};

struct RunResult {
  int exitCode;       // -1 when it was ended from outside
  std::string trace;  // what Wine wrote of the channels asked for
  int64_t peakBytes;  // of memory, Wine's own included
  std::chrono::milliseconds wall;
};

// Runs ostrell.exe of the sample product to its end. `channels` is a value of WINEDEBUG,
// `environment` what is to stand before the command: "NAME=value ".
RunResult RunAgent(const std::string& channels = "-all", const std::string& environment = "");

// Runs it under gdb, which stops where the program begins and then takes the commands, a line each;
// what gdb printed.
std::string AttachToAgent(const std::string& commands);

// Ends Wine's server of the tests' prefix; the next program, which another account may run, starts
// one. `how` stands before the command.
void StopWine(const std::string& how = "");

// A server on the built-in base URL. Fails the test where the port is taken.
class AgentServer {
 public:
  AgentServer();

  struct Request {
    int64_t number;
    std::string report;
    std::string method;
    std::map<std::string, std::string> query;
  };
  // Those of one report, or all.
  std::vector<Request> Requests(const std::string& report = "") const;

  // The unpacked bodies of the uploads of that report.
  std::vector<std::string> Bodies(const std::string& report) const;
  // That of the one upload; nothing when there was none, or several.
  JsonOwner Body(const std::string& report) const;

  ReportServer server;
};

// Made before a run; afterwards it holds what the server received against the sample's
// expectations.
class RunJudge {
 public:
  explicit RunJudge(const SampleProduct& product);
  bool FindsAllThatWasDue() const;

 private:
  const std::string now;  // seconds since 1970
};

// Text of a file; empty when it cannot be read.
std::string ReadText(const std::filesystem::path& file);
void WriteText(const std::filesystem::path& file, std::string_view text);

}  // namespace ostrell
