#include <windows.h>

#include <gtest/gtest.h>
#include <winevt.h>

#include "devkit/product/files_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

constexpr DWORD kFlagsOfTheProgram = EvtQueryForwardDirection | EvtQueryTolerateQueryErrors;

std::wstring QueryOf(const std::wstring& channel, const std::wstring& xpath = L"*") {
  return L"<QueryList><Query Id='0' Path='" + channel + L"'><Select Path='" + channel + L"'>" +
         xpath + L"</Select></Query></QueryList>";
}

constexpr auto kEvent = "<Event><System/></Event>";

// The library beside the program over channels of the case's own.
class WevtapiTest : public testing::Test {
 protected:
  WevtapiTest() { std::filesystem::remove_all(folder); }

  void WriteChannel(const std::filesystem::path& name, std::string_view content) const {
    std::filesystem::create_directories(folder);
    std::ofstream(folder / name, std::ios::binary) << content;
  }

  template <class Function>
  static Function* Entry(const char* name) {
    static const HMODULE module =
        LoadLibraryW(PathBesideProgram(L"wevtapi.dll").value_or(L"").c_str());
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
  }

  // The error of a call, 0 when it succeeded.
  template <class Result>
  static DWORD Error(Result result) {
    return result ? ERROR_SUCCESS : GetLastError();
  }

  DWORD QueryError(const std::wstring& text, DWORD flags = kFlagsOfTheProgram) const {
    return Error(query(nullptr, nullptr, text.c_str(), flags));
  }

  const std::filesystem::path folder = PathBesideProgram(L"events").value_or(L"");
  decltype(&EvtQuery) query = Entry<decltype(EvtQuery)>("EvtQuery");
  decltype(&EvtNext) next = Entry<decltype(EvtNext)>("EvtNext");
  decltype(&EvtRender) render = Entry<decltype(EvtRender)>("EvtRender");
  decltype(&EvtClose) close = Entry<decltype(EvtClose)>("EvtClose");
  decltype(&EvtOpenChannelEnum) openChannels =
      Entry<decltype(EvtOpenChannelEnum)>("EvtOpenChannelEnum");
  decltype(&EvtNextChannelPath) nextChannel =
      Entry<decltype(EvtNextChannelPath)>("EvtNextChannelPath");
};

TEST_F(WevtapiTest, ChannelsAreTheFiles) {
  WriteChannel(L"README.txt", "");
  WriteChannel(L"\u00c4.b.xml", "");
  const EVT_HANDLE channels = openChannels(nullptr, 0);
  wchar_t name[5];
  DWORD used = 0;
  EXPECT_EQ(Error(nextChannel(channels, 3, name, &used)), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_TRUE(nextChannel(channels, used, name, &used));
  EXPECT_EQ(std::wstring_view(name, used - 1), L"\u00c4.b");
  EXPECT_EQ(Error(nextChannel(channels, used, name, &used)), DWORD{ERROR_NO_MORE_ITEMS});
  EXPECT_TRUE(close(channels));
  EXPECT_EQ(QueryError(QueryOf(L"\u00c4.b")), 0U);
  for (const wchar_t* other : {L"Security", L"\u00c4.B", L"README", L"..\\events\\\u00c4.b", L""}) {
    EXPECT_EQ(QueryError(QueryOf(other)), DWORD{ERROR_EVT_CHANNEL_NOT_FOUND}) << other;
  }
}

TEST_F(WevtapiTest, WrongQueryShowsUnlessItIsTolerated) {
  WriteChannel("A.xml", kEvent);
  const std::wstring wrong = QueryOf(L"A", L"*[System[( and EventID=1)]]");
  EXPECT_EQ(QueryError(wrong, EvtQueryForwardDirection), DWORD{ERROR_EVT_INVALID_QUERY});
  EXPECT_EQ(QueryError(wrong), 0U);
  EXPECT_EQ(QueryError(L"<QueryList>"), DWORD{ERROR_EVT_INVALID_QUERY});
  EXPECT_EQ(QueryError(QueryOf(L"A"), EvtQueryReverseDirection), DWORD{ERROR_INVALID_PARAMETER});
  EXPECT_EQ(Error(query(nullptr, L"A", L"*", 0)), DWORD{ERROR_INVALID_PARAMETER});
  for (const char* damage : {"<Event>", "text", "<Event><System/><Data>\xff</Data></Event>"}) {
    WriteChannel("A.xml", damage);
    EXPECT_EQ(QueryError(QueryOf(L"A")), DWORD{ERROR_EVENTLOG_FILE_CORRUPT}) << damage;
  }
}

TEST_F(WevtapiTest, OnlyOpenHandlesOfTheirKindServe) {
  WriteChannel("A.xml", kEvent);
  const EVT_HANDLE results = query(nullptr, nullptr, QueryOf(L"A").c_str(), 0);
  EVT_HANDLE event = nullptr;
  DWORD number = 0;
  ASSERT_TRUE(next(results, 1, &event, 0, 0, &number));
  ASSERT_TRUE(close(results));
  int foreign = 0;
  wchar_t buffer[1000];
  constexpr DWORD kInvalid = ERROR_INVALID_HANDLE;
  for (const EVT_HANDLE handle : {EVT_HANDLE{}, results, static_cast<EVT_HANDLE>(&foreign)}) {
    EXPECT_EQ(Error(close(handle)), kInvalid);
    EXPECT_EQ(Error(render(nullptr, handle, EvtRenderEventXml, 2000, buffer, &number, nullptr)),
              kInvalid);
  }
  for (const EVT_HANDLE handle : {EVT_HANDLE{}, results, event}) {
    EVT_HANDLE none = nullptr;
    EXPECT_EQ(Error(next(handle, 1, &none, 0, 0, &number)), kInvalid);
    EXPECT_EQ(Error(nextChannel(handle, 1000, buffer, &number)), kInvalid);
  }
  EXPECT_EQ(Error(openChannels(event, 0)), kInvalid);
  EXPECT_EQ(Error(query(event, nullptr, L"", 0)), kInvalid);
  // Its result set's end is not its own, and a buffer that is too small is told how much it takes.
  EXPECT_EQ(Error(render(nullptr, event, EvtRenderEventXml, 2, buffer, &number, nullptr)),
            DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_TRUE(render(nullptr, event, EvtRenderEventXml, number, buffer, &number, nullptr));
  EXPECT_EQ(std::wstring_view(buffer, number / sizeof(wchar_t) - 1), L"<Event><System/></Event>");
  EXPECT_TRUE(close(event));
}

}  // namespace
}  // namespace ostrell
