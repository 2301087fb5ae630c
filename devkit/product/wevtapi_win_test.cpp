#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <winevt.h>

#include <vector>

#include "base/owner.h"
#include "devkit/product/files_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kQueryOfTheProgram[] =
    L"\n<QueryList>\n  <Query Id=\"0\" Path=\"System\">\n    <Select Path=\"System\">*[System["
    L"(Provider/@Name='Service Control Manager') and ( TimeCreated/@SystemTime &gt;= "
    L"'2024-01-01T00:00:00.000000Z' and TimeCreated/@SystemTime &lt;= "
    L"'2024-01-31T23:59:59.000000Z') and (EventID=7000 or EventID=7009)]]</Select>\n  </Query>\n"
    L"</QueryList>\n";
constexpr DWORD kFlagsOfTheProgram = EvtQueryForwardDirection | EvtQueryTolerateQueryErrors;

std::wstring QueryOf(const std::wstring& channel, const std::wstring& xpath = L"*") {
  return L"<QueryList><Query Id='0' Path='" + channel + L"'><Select Path='" + channel + L"'>" +
         xpath + L"</Select></Query></QueryList>";
}

std::string Event(const char* provider, int id, const char* time) {
  return "<Event><System><Provider Name='" + std::string(provider) + "'/><EventID>" +
         std::to_string(id) + "</EventID><TimeCreated SystemTime='" + time + "'/></System></Event>";
}

struct ModuleTraits {
  using Handle = HMODULE;
  static Handle Empty() { return nullptr; }
  static void Close(Handle module) noexcept { FreeLibrary(module); }
};

// The library beside the program over channels of the case's own.
class WevtapiTest : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::remove_all(folder); }
  void TearDown() override { std::filesystem::remove_all(folder); }

  void WriteChannel(const std::filesystem::path& name, std::string_view content) const {
    std::filesystem::create_directories(folder);
    std::ofstream(folder / name, std::ios::binary) << content;
  }

  template <class Function>
  Function* Entry(const char* name) const {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void (*)()>(GetProcAddress(module.Get(), name)));
  }

  // The error of a call, 0 when it succeeded.
  template <class Result>
  static DWORD Error(Result result) {
    return result ? ERROR_SUCCESS : GetLastError();
  }

  DWORD QueryError(const std::wstring& text, DWORD flags = 0) const {
    return Error(query(nullptr, nullptr, text.c_str(), flags));
  }

  std::wstring Rendered(EVT_HANDLE event) const {
    DWORD bytes = 0;
    EXPECT_FALSE(render(nullptr, event, EvtRenderEventXml, 0, nullptr, &bytes, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    std::wstring text(bytes / sizeof(wchar_t), L'?');
    EXPECT_TRUE(render(nullptr, event, EvtRenderEventXml, bytes, text.data(), &bytes, nullptr));
    EXPECT_EQ(text.back(), L'\0');
    text.pop_back();
    return text;
  }

  // Takes events two at a time, as long as there are some.
  std::vector<std::wstring> Events(const std::wstring& text, DWORD flags = 0) const {
    const EVT_HANDLE results = query(nullptr, nullptr, text.c_str(), flags);
    EXPECT_NE(results, nullptr) << GetLastError();
    std::vector<std::wstring> rendered;
    EVT_HANDLE events[2];
    DWORD count = 0;
    while (next(results, 2, events, INFINITE, 0, &count)) {
      for (DWORD i = 0; i < count; ++i) {
        rendered.push_back(Rendered(events[i]));
        EXPECT_TRUE(close(events[i]));
      }
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_ITEMS});
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(close(results));
    return rendered;
  }

  std::vector<std::wstring> Channels() const {
    const EVT_HANDLE channels = openChannels(nullptr, 0);
    std::vector<std::wstring> names;
    wchar_t name[260];
    DWORD used = 0;
    while (nextChannel(channels, 260, name, &used)) {
      names.emplace_back(name);
      EXPECT_EQ(used, names.back().size() + 1);
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_ITEMS});
    EXPECT_TRUE(close(channels));
    return names;
  }

  const std::filesystem::path folder = PathBesideProgram(L"events").value_or(L"");
  const Owner<ModuleTraits> module{
      LoadLibraryW(PathBesideProgram(L"wevtapi.dll").value_or(L"").c_str())};
  decltype(&EvtQuery) query = Entry<decltype(EvtQuery)>("EvtQuery");
  decltype(&EvtNext) next = Entry<decltype(EvtNext)>("EvtNext");
  decltype(&EvtRender) render = Entry<decltype(EvtRender)>("EvtRender");
  decltype(&EvtClose) close = Entry<decltype(EvtClose)>("EvtClose");
  decltype(&EvtOpenChannelEnum) openChannels =
      Entry<decltype(EvtOpenChannelEnum)>("EvtOpenChannelEnum");
  decltype(&EvtNextChannelPath) nextChannel =
      Entry<decltype(EvtNextChannelPath)>("EvtNextChannelPath");
};

TEST_F(WevtapiTest, AnswersTheProgramsQueryOldestFirst) {
  const std::string first =
      Event("Service Control Manager", 7009, "2024-01-01T00:00:00.000000000Z");
  const std::string second = Event("Service Control Manager", 7000, "2024-01-02T03:04:05.678Z");
  const std::string third = Event("Service Control Manager", 7000, "2024-01-31T23:59:59Z");
  WriteChannel("System.xml",
               Event("Service Control Manager", 7000, "2023-12-31T23:59:59.999Z") + "\n\n" + first +
                   "\n\n" + Event("Service Control Manager", 7001, "2024-01-02T00:00:00Z") +
                   "\n\n" + Event("Other", 7000, "2024-01-02T00:00:00Z") + "\n\n" + second +
                   "\n\n" + third + "\n\n" +
                   Event("Service Control Manager", 7000, "2024-01-31T23:59:59.001Z") + "\n");
  const auto wide = [](const std::string& text) { return std::wstring(text.begin(), text.end()); };
  EXPECT_THAT(Events(kQueryOfTheProgram, kFlagsOfTheProgram),
              ElementsAre(wide(first), wide(second), wide(third)));
}

TEST_F(WevtapiTest, ChannelsAreTheFiles) {
  EXPECT_THAT(Channels(), IsEmpty());
  WriteChannel("System.xml", "");
  WriteChannel("Application.xml", "");
  WriteChannel(L"\u00c4.b.xml", "");
  WriteChannel("README.txt", "");
  EXPECT_THAT(Channels(), ElementsAre(L"Application", L"System", L"\u00c4.b"));
  EXPECT_THAT(Events(QueryOf(L"\u00c4.b")), IsEmpty());
  for (const wchar_t* name :
       {L"Security", L"system", L"README", L"..\\events\\System", L"System.xml", L""}) {
    EXPECT_EQ(QueryError(QueryOf(name), kFlagsOfTheProgram), DWORD{ERROR_EVT_CHANNEL_NOT_FOUND})
        << name;
  }
}

TEST_F(WevtapiTest, WrongQueryShowsUnlessItIsTolerated) {
  WriteChannel("A.xml", Event("P", 1, "2024-01-01T00:00:00Z"));
  const std::wstring wrong = QueryOf(L"A", L"*[System[( and EventID=1)]]");
  EXPECT_EQ(QueryError(wrong, EvtQueryForwardDirection), DWORD{ERROR_EVT_INVALID_QUERY});
  EXPECT_THAT(Events(wrong, kFlagsOfTheProgram), IsEmpty());
  EXPECT_EQ(QueryError(L"<QueryList>", kFlagsOfTheProgram), DWORD{ERROR_EVT_INVALID_QUERY});
  EXPECT_EQ(QueryError(QueryOf(L"A"), EvtQueryReverseDirection), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(Error(query(nullptr, L"A", L"*", 0)), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(Error(query(nullptr, nullptr, nullptr, 0)), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(WevtapiTest, DamagedChannelIsAnError) {
  for (const char* damage : {"<Event>", "text", "<Event><System/><Data>\xff</Data></Event>"}) {
    WriteChannel("A.xml", damage);
    EXPECT_EQ(QueryError(QueryOf(L"A"), kFlagsOfTheProgram), DWORD{ERROR_EVENTLOG_FILE_CORRUPT})
        << damage;
  }
}

TEST_F(WevtapiTest, OnlyOpenHandlesOfTheirKindServe) {
  WriteChannel("A.xml", Event("P", 1, "2024-01-01T00:00:00Z"));
  const EVT_HANDLE results = query(nullptr, nullptr, QueryOf(L"A").c_str(), 0);
  EVT_HANDLE event = nullptr;
  DWORD number = 0;
  ASSERT_TRUE(next(results, 1, &event, 0, 0, &number));
  ASSERT_TRUE(close(results));
  int foreign = 0;
  wchar_t buffer[1000];
  for (const EVT_HANDLE handle : {EVT_HANDLE{}, results, static_cast<EVT_HANDLE>(&foreign)}) {
    EXPECT_EQ(Error(close(handle)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(
        Error(render(nullptr, handle, EvtRenderEventXml, sizeof buffer, buffer, &number, nullptr)),
        DWORD{ERROR_INVALID_HANDLE});
  }
  for (const EVT_HANDLE handle : {EVT_HANDLE{}, results, event}) {
    EVT_HANDLE none = nullptr;
    EXPECT_EQ(Error(next(handle, 1, &none, 0, 0, &number)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(Error(nextChannel(handle, 1000, buffer, &number)), DWORD{ERROR_INVALID_HANDLE});
  }
  EXPECT_EQ(Error(openChannels(event, 0)), DWORD{ERROR_INVALID_HANDLE});
  EXPECT_EQ(Error(query(event, nullptr, L"", 0)), DWORD{ERROR_INVALID_HANDLE});
  EXPECT_FALSE(Rendered(event).empty()) << "its result set's end is not its own";
  EXPECT_TRUE(close(event));
}

}  // namespace
}  // namespace ostrell
