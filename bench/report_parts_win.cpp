// What the parts of the reports cost, each on input like the field's: prints a table.
//
// Usage: report_parts DUMP HOSTILE-DUMP. For the second row a sparse copy of 4 GiB is made beside
// the dump and deleted again; in the other dump no program is to be found.
#include <windows.h>

#include <fmt/printf.h>
#include <fmt/xchar.h>
#include <winioctl.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "base/bytes.h"
#include "base/files_win.h"
#include "base/handle_win.h"
#include "base/json.h"
#include "bench/sample_event.h"
#include "eventlog/render_record.h"
#include "reports/sample_pass.h"
#include "reports/sample_upload.h"
#include "tests/support/fake_run.h"
#include "unified/collector.h"
#include "unified/dump_files.h"
#include "unified/event_fields.h"
#include "unified/unified_report.h"

namespace ostrell {
namespace {

// Seconds that one call takes, over as many as fit half a second.
double SecondsPerCall(const std::function<void()>& call) {
  using Clock = std::chrono::steady_clock;
  call();  // warms up
  const auto started = Clock::now();
  std::chrono::duration<double> spent{};
  int calls = 0;
  for (; spent.count() < 0.5; ++calls) {
    call();
    spent = Clock::now() - started;
  }
  return spent.count() / calls;
}

void PrintRow(const char* what, double seconds, const char* unit) {
  fmt::printf("%-44s%10.2f us %s\n", what, seconds * 1e6, unit);
}

bool MakeSparseCopy(const std::filesystem::path& dump, const std::filesystem::path& copy) {
  std::filesystem::copy_file(dump, copy, std::filesystem::copy_options::overwrite_existing);
  const FileHandle file(CreateFileW(copy.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD ignored = 0;
  DeviceIoControl(file.Get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &ignored, nullptr);
  LARGE_INTEGER end;
  end.QuadPart = int64_t{4} << 30;
  return SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) != 0 &&
         SetEndOfFile(file.Get()) != 0;
}

bool ReadDump(const std::filesystem::path& path) {
  const auto file = WindowsFiles().Open(path.native(), FileUse::kMapped);
  return file && ReadMinidump(SourceOf(*file)).crashModuleTime.has_value();
}

bool BenchDumps(const std::filesystem::path& dump) {
  std::filesystem::path sparse = dump;
  sparse += L".sparse";
  if (!ReadDump(dump) || !MakeSparseCopy(dump, sparse) || !ReadDump(sparse)) {
    return false;
  }
  PrintRow("dump, opened, mapped and read", SecondsPerCall([&] { ReadDump(dump); }), "a dump");
  PrintRow("the same, sparse and 4 GiB long", SecondsPerCall([&] { ReadDump(sparse); }), "a dump");
  const auto file = WindowsFiles().Open(sparse.native(), FileUse::kMapped);
  PrintRow("the same, reading alone", SecondsPerCall([&] { ReadMinidump(SourceOf(*file)); }),
           "a dump");
  return true;
}

bool BenchEvents() {
  bool isKept = true;
  PrintRow("event, read from XML, tested and cut", SecondsPerCall([&] {
             eventlog::EventRecord record;
             isKept = isKept && eventlog::EventRecordFromXml(std::wstring(kSampleEvent), record) &&
                      NamesProduct(record.data) &&
                      !ExtractApplicationFields(record.data).timestamp.empty();
           }),
           "an event");
  return isKept;
}

void BenchDigests() {
  const std::string sample(5 << 20, 's');
  const double seconds = SecondsPerCall([&] { SampleDigest(BytesOf(sample)); });
  fmt::printf("%-44s%10.2f ns a byte\n", "SHA-1 of a sample of 5 MiB",
              seconds * 1e9 / static_cast<double>(sample.size()));
  const std::string path = "C:\\Users\\Sample\\AppData\\Local\\Programs\\Tool\\Setup.exe";
  const double key = SecondsPerCall([&] {
    for (int i = 0; i < 1000; ++i) {
      PathKey(path);
    }
  });
  fmt::printf("%-44s%10.2f ns a byte\n", "key of a path",
              key * 1e6 / static_cast<double>(path.size()));
}

void BenchMerging() {
  constexpr int kItems = 10000;
  FakeRun fake;
  const Run run = fake.Get();
  DefaultClientIdProvider provider(run);
  size_t bytes = 0;
  const double seconds = SecondsPerCall([&] {
    const JsonOwner items(json_array());
    for (int i = 0; i < kItems; ++i) {
      json_array_append_new(items.Get(),
                            NewReportItem("syslog", L"Application Error", i).Release());
    }
    add_common_fields_to_unified_array(run, items.Get(), provider, 14400);
    const JsonText text(json_dumps(items.Get(), JSON_COMPACT));
    bytes = std::string_view(text.Get()).size();
  });
  fmt::printf("%-44s%10.0f items a second, %d bytes each\n", "items made, stamped and printed",
              kItems / seconds, bytes / kItems);
}

}  // namespace
}  // namespace ostrell

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int wmain(int argc, wchar_t** argv) {
  if (argc != 2) {
    fmt::print(stderr, "usage: report_parts DUMP\n");
    return 2;
  }
  if (!ostrell::BenchDumps(argv[1]) || !ostrell::BenchEvents()) {
    fmt::print(stderr, "a part gave nothing\n");
    return 1;
  }
  ostrell::BenchMerging();
  ostrell::BenchDigests();
  return 0;
}
