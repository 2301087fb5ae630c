#include <windows.h>

#include <winevt.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "base/bytes.h"
#include "base/text.h"
#include "devkit/product/files_win.h"
#include "platform/closed_library.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/private_registry_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

constexpr char kFile[] = "settings/ostrell.json";

// The keys "a", "b" and "rpttm_ui" of both widths.
std::string Values(const SettingsStoreOwner& store) {
  std::string values;
  for (const char* key : {"a", "b", "rpttm_ui"}) {
    int32_t narrow = 0;
    int64_t wide = 0;
    values += (values.empty() ? "" : "\n") + std::string(key) + " ";
    values += store->ReadInt32(key, &narrow) != 0 ? std::to_string(narrow) : "none";
    values += " ";
    values += store->ReadInt64(key, &wide) != 0 ? std::to_string(wide) : "none";
  }
  return values;
}

// What is changed by hand counts at once.
TEST(PolicyDbTest, RecordedSettings) {
  const TestFolder folder;
  const PrivateRegistry registry;
  PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\app", L"DataPath",
                           folder.Path().wstring());
  const PolicyDb policydb(LoadPolicyDb());
  const auto content = [&] { return ReadWholeFile((folder.Path() / kFile).wstring()).text; };
  const auto store = policydb.OpenSettingsStore("ostrell");
  ASSERT_TRUE(store);
  const std::string nothing = Values(store);
  EXPECT_NE(store->WriteInt64("a", std::numeric_limits<int64_t>::max()), 0);
  EXPECT_EQ(content(), "{\n  \"int64\": {\n    \"a\": 9223372036854775807\n  }\n}\n");
  ExpectRecorded("settings_file", [&](const std::string& input, const RecordedCase&) {
    folder.Write(kFile, input);
    const std::string values = Values(store);
    const bool isWritten = store->WriteInt64("a", -9) != 0;
    EXPECT_EQ(static_cast<bool>(policydb.OpenSettingsStore("ostrell")), isWritten);
    const std::filesystem::directory_iterator files(folder.Path() / "settings");
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
    return !isWritten && values == nothing && content() == input ? "refused" : content() + values;
  });
}

std::string BlockOf(const SvclinkRecordOwner& record) {
  uint32_t size = 1;
  const std::byte* block = record->data(record.Get(), &size);
  return std::string(TextOf(std::span(block, size)));
}

TEST(SvclinkTest, SignatureFileHasAVersionAndNoBlock) {
  const Svclink svclink(LoadSvclink());
  const TestFolder folder;
  const std::string path = Utf8FromWide((folder.Path() / "patt.db").wstring());
  EXPECT_FALSE(svclink.OpenSignatureFile(path.c_str()));
  EXPECT_FALSE(svclink.OpenSignatureFile("\xff"));
  ExpectRecorded("signature_file", [&](const std::string& content, const RecordedCase&) {
    folder.Write("patt.db", content);
    const auto file = svclink.OpenSignatureFile(path.c_str());
    EXPECT_EQ(svclink.KindOf(file.Get()), 0U);
    const auto record = svclink.TakeRecord(file.Get());
    EXPECT_EQ(record ? BlockOf(record) : "", "");
    return record ? std::to_string(record->version) : "none";
  });
}

// A record is handed out as it came, and outlives its stream.
TEST(SvclinkTest, PackedRecordIsKnownByItsFirstEightBytes) {
  const Svclink svclink(LoadSvclink());
  ExpectRecorded("stream_record", [&](const std::string& content, const RecordedCase&) {
    auto stream = svclink.OpenStream();
    const auto size = static_cast<uint32_t>(content.size());
    EXPECT_EQ(stream->write(stream.Get(), content.data(), size), static_cast<int32_t>(size));
    const std::string kind = std::to_string(svclink.KindOf(stream.Get()));
    const auto record = svclink.TakeRecord(stream.Get());
    stream.Reset();
    EXPECT_EQ(record ? BlockOf(record) : content, content);
    return kind + (record ? "" : ", no record");
  });
}

// The error of each query over the channels beside the program. What is selected and rendered shows
// in the whole run.
TEST(WevtapiTest, RecordedQueries) {
  const std::filesystem::path folder = PathBesideProgram(L"events").value_or(L"");
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  for (const auto& [name, content] :
       {std::pair(L"README.txt", ""),
        {L"\u00c4.b.xml", ""},
        {L"A.xml", "<Event><System/></Event>"},
        {L"cut.xml", "<Event>"},
        {L"text.xml", "text"},
        {L"no UTF-8.xml", "<Event><System/><Data>\xff</Data></Event>"}}) {
    std::ofstream(folder / name) << content;
  }
  const HMODULE module = LoadLibraryW(PathBesideProgram(L"wevtapi.dll").value_or(L"").c_str());
  const auto query = reinterpret_cast<decltype(&EvtQuery)>(
      reinterpret_cast<void (*)()>(GetProcAddress(module, "EvtQuery")));
  const auto errorOf = [&](const wchar_t* path, const std::wstring& text, DWORD flags) {
    return query(nullptr, path, text.c_str(), flags) != nullptr ? 0 : GetLastError();
  };
  ExpectRecorded("event_channel_query", [&](const std::string& input, const RecordedCase&) {
    size_t digits = 0;
    const DWORD flags = std::stoul(input, &digits, 16);
    const std::wstring text = WideFromUtf8(input.substr(digits + 1)).value();
    return std::to_string(errorOf(nullptr, text, flags));
  });
  EXPECT_EQ(errorOf(L"A", L"*", 0), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
}  // namespace ostrell
