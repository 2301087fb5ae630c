#include "tests/jobs/recorded_machine.h"

#include <sqlite3.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "app/report_driver.h"
#include "base/calendar.h"
#include "reports/detection_log.h"
#include "reports/machine_information.h"
#include "reports/popup_block_log.h"
#include "reports/samples.h"
#include "reports/scan_statistics.h"
#include "tests/jobs/job_run.h"
#include "tests/support/recorded_cases.h"
#include "unified/dump_files.h"
#include "unified/event_logs.h"
#include "unified/log_stats.h"
#include "unified/unified_report.h"

namespace ostrell {
namespace {

JsonOwner Parsed(const std::string& text) {
  JsonOwner value(json_loadb(text.data(), text.size(), JSON_ALLOW_NUL, nullptr));
  if (!json_is_object(value.Get())) {
    throw std::runtime_error("no JSON object: " + text);
  }
  return value;
}

std::string TextOf(const json_t* value) {
  return {json_string_value(value), json_string_length(value)};
}

std::wstring WideOf(std::string_view text) {
  return WideFromUtf8(text).value();
}

std::string LocalTime(std::time_t seconds, std::string_view form) {
  std::array<char, 64> text{};
  const size_t length =
      std::strftime(text.data(), text.size(), form.data(), std::localtime(&seconds));
  return {text.data(), length};
}

std::string ContentOf(const json_t* value) {
  std::string content;
  if (!json_is_object(value) && !json_is_array(value)) {
    return json_is_string(value) ? TextOf(value) : "";
  }
  for (const json_t* const piece : Elements(value)) {
    content += ContentOf(piece);
  }
  if (const auto hex = TextMember(value, "hex")) {
    return BytesOfHex(std::string(*hex));
  }
  if (const auto seconds = Integer64Member(value, "local")) {
    return LocalTime(*seconds, TextMember(value, "form").value_or("%Y-%m-%d %H:%M:%S"));
  }
  const std::string repeated = ContentOf(json_object_get(value, "text"));
  for (int64_t i = Integer64Member(value, "times").value_or(0); i > 0; --i) {
    content += repeated;
  }
  return content;
}

// A JSON text of the product; a string stands for itself, which may be no JSON.
std::string DocumentOf(const json_t* value) {
  return json_is_string(value) ? TextOf(value) : JsonText(json_dumps(value, JSON_COMPACT)).Get();
}

// Calls `take` with key and value of each member of the object's member `name`, null ones apart.
template <class Take>
void ForEach(const json_t* object, const char* name, const Take& take) {
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(json_object_get(object, name), key, value) {
    if (!json_is_null(value)) {
      take(std::string(key), value);
    }
  }
}

bool IsTrue(const json_t* object, const char* name) {
  return json_is_true(json_object_get(object, name));
}
bool IsFalse(const json_t* object, const char* name) {
  return json_is_false(json_object_get(object, name));
}
int64_t NumberOf(const json_t* object, const char* name, int64_t otherwise = 0) {
  return Integer64Member(object, name).value_or(otherwise);
}

FakeFiles::Entry FileOf(const json_t* value) {
  const json_t* const content = json_object_get(value, "content");
  FakeFiles::Entry file{.content = ContentOf(content != nullptr ? content : value),
                        .isDirectory = IsTrue(value, "folder"),
                        .isOpenForWriting = IsTrue(value, "writing"),
                        .isHeld = IsTrue(value, "held"),
                        .isOnDisk = !IsTrue(value, "pipe"),
                        .size = Integer64Member(value, "size"),
                        .bad = Integer64Member(value, "bad")};
  if (const auto seconds = Integer64Member(value, "written")) {
    file.lastWrite = TicksFromSeconds(*seconds);
  }
  return file;
}

class Machine : public JobRun {
 public:
  explicit Machine(JsonOwner description)
      : JobRun(std::string(TextMember(description.Get(), "fault").value_or(""))),
        owned(std::move(description)) {
    AddSettings();
    AddProduct();
    AddSystem();
    AddEvents();
    ForEach(described, "files", [this](const std::string& path, json_t* file) {
      files.At(WideOf(path)) = FileOf(file);
    });
    if (json_t* const program = json_object_get(described, "program")) {
      files.program = json_is_null(program) ? std::nullopt : std::optional(WideOf(TextOf(program)));
    }
    if (const json_t* const rows = json_object_get(described, "popups")) {
      AddPopups(rows);
    }
  }
  ~Machine() { std::filesystem::remove_all(popups.parent_path()); }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  const std::filesystem::path popups =
      std::filesystem::temp_directory_path() / FreshToken() / "adblkuser.db";

 private:
  void AddSettings() {
    if (IsFalse(described, "store")) {
      settings = Settings();
    }
    ForEach(described, "last", [this](const std::string& key, const json_t* time) {
      store.times[key] = json_integer_value(time);
    });
    now = NumberOf(described, "now", kNow);
    clock.now = NumberOf(described, "clock", kNow);
    clock.knowsZone = !IsFalse(described, "zone");
    if (IsTrue(described, "link")) {
      registry.texts[RegistryKeyOf("HKLM\\SOFTWARE\\Velmora\\Corvane\\Ostrell\\ReportLink")] =
          WideOf(baseUrl + "/v8");
      baseUrl = "https://127.0.0.1:1";  // refuses
    }
  }

  void AddProduct() {
    ForEach(described, "documents", [this](const std::string& number, const json_t* document) {
      policydb.documents[std::stoi(number)] = DocumentOf(document);
    });
    if (const json_t* const list = json_object_get(described, "quarantine");
        list != nullptr && !json_is_null(list)) {
      policydb.quarantine = DocumentOf(list);
    }
    ForEach(described, "held", [this](const std::string& id, const json_t* content) {
      policydb.held[std::stoi(id)] = ContentOf(content);
    });
    policydb.restoreResult = static_cast<int32_t>(NumberOf(described, "restore", 1));
    ForEach(described, "svclink", [this](const std::string& name, const json_t* value) {
      svclink.odd[name] = json_integer_value(value);
    });
    ForEach(described, "signatures", [this](const std::string& path, const json_t* version) {
      svclink.versions[path] = json_integer_value(version);
    });
  }

  static FakeRegistry::Key RegistryKeyOf(const std::string& path) {
    const RegistryRoot root =
        path.starts_with("HKLM\\") ? RegistryRoot::kMachine : RegistryRoot::kUser;
    return {root, WideOf(path.substr(5))};
  }

  void AddSystem() {
    ForEach(described, "registry", [this](const std::string& path, const json_t* value) {
      if (json_is_integer(value)) {
        registry.numbers[RegistryKeyOf(path)] = static_cast<uint32_t>(json_integer_value(value));
      } else {
        registry.texts[RegistryKeyOf(path)] = WideOf(TextOf(value));
      }
    });
    if (IsFalse(described, "system")) {
      facts.system = std::nullopt;
    }
    if (IsFalse(described, "kernel")) {
      facts.kernel = std::nullopt;
    }
    facts.machine = static_cast<uint16_t>(NumberOf(described, "machine", facts.machine));
    facts.isModern = !IsFalse(described, "modern");
  }

  void AddEvents() {
    ForEach(described, "events", [this](const std::string& channel, const json_t* list) {
      for (const json_t* const event : Elements(list)) {
        RecordedEventText text;
        for (const auto& [name, member] : std::map<const char*, std::string RecordedEventText::*>{
                 {"provider", &RecordedEventText::provider},
                 {"id", &RecordedEventText::id},
                 {"data", &RecordedEventText::data},
                 {"time", &RecordedEventText::time},
                 {"level", &RecordedEventText::level}}) {
          text.*member = TextMember(event, name).value_or(text.*member);
        }
        events.modern[WideOf(channel)] += text.Text();
      }
    });
    ForEach(described, "classic", [this](const std::string& log, const json_t* list) {
      FakeEventLog::ClassicRead read;
      for (const json_t* const record : Elements(list)) {
        const auto number = [record](size_t at) {
          return static_cast<uint32_t>(json_integer_value(json_array_get(record, at)));
        };
        read.records.push_back({WideOf(TextOf(json_array_get(record, 0))), number(1), number(2),
                                WideOf(TextOf(json_array_get(record, 3)))});
      }
      events.classic[WideOf(log)] = {read};
    });
  }

  // The database has a folder of its own, which is there unless `popups` is no list.
  void AddPopups(const json_t* list) {
    paths.databases[24] = PathText(popups.string());
    if (json_is_array(list)) {
      std::filesystem::create_directory(popups.parent_path());
    }
    if (json_array_size(list) == 0) {
      return;
    }
    std::string sql =
        "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail "
        "TEXT,iname Text);"
        "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts);";
    for (const json_t* const row : Elements(list)) {
      sql += Print("INSERT INTO BlockItemLog(ts,detail) VALUES(%lld,'%s');",
                   json_integer_value(json_array_get(row, 0)), DocumentOf(json_array_get(row, 1)));
    }
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(popups.string().c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_close(database), SQLITE_OK);
  }

  const JsonOwner owned;
  const json_t* const described = owned.Get();
};

JsonOwner Changed(const std::string& base, const std::string& change) {
  JsonOwner described = Parsed(base);
  json_object_update_recursive(described.Get(), Parsed(change).Get());
  return described;
}

// What each operation returns as text; nothing where it returns nothing.
using Operation = std::string (*)(const Run&, const json_t*);

template <void (*Job)(const Run&)>
std::string Nothing(const Run& run, const json_t*) {
  Job(run);
  return "";
}
template <JsonOwner (*Collect)(const Run&, int64_t)>
std::string ItemsFrom(const Run& run, const json_t* described) {
  return CompactText(Collect(run, NumberOf(described, "from")));
}

const std::map<std::string, Operation> kOperations = {
    {"rc1",
     [](const Run& run, const json_t*) {
       JsonOwner answer(json_pack("[s]", "none"));
       MachineInformationJob(run, answer);
       return CompactText(answer);
     }},
    {"rc2", Nothing<DetectionLogJob>},
    {"rc3",
     [](const Run& run, const json_t* described) {
       SampleReports(run, json_object_get(described, "instructions"));
       return std::string();
     }},
    {"SubmitSampleFile",
     [](const Run& run, const json_t* described) {
       return std::to_string(SubmitSampleFile(run, ContentOf(json_object_get(described, "path"))));
     }},
    {"rc4", Nothing<ScanStatsJob>},
    {"rc5", Nothing<PopupBlockJob>},
    {"rc7",
     [](const Run& run, const json_t*) {
       DefaultClientIdProvider provider(run);
       return std::to_string(post_unified_report(run, provider));
     }},
    {"RunReports", Nothing<RunReports>},
    {"collect_dump_files", ItemsFrom<collect_dump_files>},
    {"collect_log_stats", ItemsFrom<collect_log_stats>},
    {"collect_event_logs", ItemsFrom<collect_event_logs>},
    {"cleanup_old_dump_files",
     [](const Run& run, const json_t*) {
       return std::to_string(cleanup_old_dump_files(run, run.now));
     }},
    {"GetCrashModuleFromDump",
     [](const Run& run, const json_t* described) {
       uint32_t time = 7;  // which stays where there is none
       const int32_t isParsed =
           GetCrashModuleFromDump(run, WideOf(ContentOf(json_object_get(described, "path"))), time);
       return Print("%d 0x%08x", isParsed, time);
     }},
};

// The lines of one kind of outcome.
template <class List, class Text>
void Append(Steps& lines, const char* kind, const List& list, const Text& text) {
  for (const auto& element : list) {
    lines.push_back(kind + text(element));
  }
}

Steps OutcomeOf(const Machine& machine, const json_t* described, const std::string& result) {
  const auto same = [](const std::string& text) { return text; };
  const auto number = [](int64_t value) { return std::to_string(value); };
  Steps lines;
  if (!result.empty()) {
    lines.push_back("result " + result);
  }
  Append(lines, "", machine.Received(), same);
  Append(lines, "recorded ", machine.Recorded(),
         [](const auto& entry) { return entry.first + " " + std::to_string(entry.second); });
  Append(lines, "restored ", machine.policydb.restored, number);
  for (const json_t* const shown : Elements(json_object_get(described, "show"))) {
    const std::string name = TextOf(shown);
    if (name == "log") {
      Append(lines, "logged ", machine.messages, same);
    } else if (name == "last message") {
      lines.push_back("logged " + machine.messages.back());
    } else if (name == "queries") {
      Append(lines, "query ", machine.policydb.queries, same);
    } else if (name == "opened") {
      Append(lines, "opened ", machine.files.opened, same);
    } else if (name == "files") {
      Append(lines, "file ", machine.files.entries,
             [](const auto& entry) { return Utf8FromWide(entry.first); });
    } else if (name == "pop-up database") {
      lines.emplace_back(std::filesystem::exists(machine.popups) ? "database made" : "no database");
    } else {
      throw std::runtime_error("cannot show " + name);
    }
  }
  return lines;
}

}  // namespace

std::string OutcomeOf(const std::string& base, const std::string& change) {
  const JsonOwner described = Changed(base, change);
  Machine machine{JsonOwner(json_incref(described.Get()))};
  const std::string name(TextMember(described.Get(), "run").value_or(""));
  const auto operation = kOperations.find(name);
  if (operation == kOperations.end()) {
    throw std::runtime_error("no operation: " + name);
  }
  const std::string result = operation->second(machine.Get(), described.Get());
  if (IsTrue(described.Get(), "again")) {
    machine.baseUrl = TestServerUrl();
    operation->second(machine.Get(), described.Get());
  }
  std::string outcome;
  for (const std::string& line : OutcomeOf(machine, described.Get(), result)) {
    outcome += (outcome.empty() ? "" : "\n") + line;
  }
  return outcome;
}

std::shared_ptr<JobRun> MachineOf(const std::string& base, const std::string& change) {
  return std::make_shared<Machine>(Changed(base, change));
}

}  // namespace ostrell
