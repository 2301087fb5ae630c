#include "base/find_text.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "base/text.h"

namespace ostrell {
namespace {

using WideProbe = Probe<wchar_t>;
constexpr size_t kStride = 2 * WideProbe::kPlaces;

template <LetterCase kCase>
bool StandsAt(const wchar_t* place, std::wstring_view wanted) {
  return std::equal(wanted.begin(), wanted.end(), place, [](wchar_t a, wchar_t b) {
    return a == (kCase == LetterCase::kKept ? b : LowerAscii(b));
  });
}

// Only where the first and the last character are right is the rest looked at.
template <LetterCase kCase>
size_t Find(std::wstring_view text, std::wstring_view wanted, size_t from) {
  const WideProbe first(wanted.front(), kCase);
  const WideProbe last(wanted.back(), kCase);
  const auto hitsAt = [&](const wchar_t* place) {
    return static_cast<uint32_t>(
        _mm_movemask_epi8(_mm_and_si128(first.Find(place), last.Find(place + wanted.size() - 1))));
  };
  const size_t end = text.size() - wanted.size() + 1;  // of the places where it can stand
  size_t at = from;
  for (; at + kStride <= end; at += kStride) {
    const wchar_t* const places = text.data() + at;
    uint32_t hits = hitsAt(places) | hitsAt(places + WideProbe::kPlaces) << sizeof(__m128i);
    while (hits != 0) {  // sizeof(wchar_t) bits each
      const auto place = static_cast<size_t>(std::countr_zero(hits)) / sizeof(wchar_t);
      if (StandsAt<kCase>(places + place, wanted)) {
        return at + place;
      }
      hits &= ~(((uint32_t{1} << sizeof(wchar_t)) - 1) << (place * sizeof(wchar_t)));
    }
  }
  while (at < end && !StandsAt<kCase>(text.data() + at, wanted)) {
    ++at;
  }
  return at < end ? at : std::wstring_view::npos;
}

}  // namespace

size_t FindText(std::wstring_view text, std::wstring_view wanted, size_t from,
                LetterCase letterCase) {
  if (from > text.size() || wanted.size() > text.size() - from) {
    return std::wstring_view::npos;
  }
  if (wanted.empty()) {
    return from;
  }
  return letterCase == LetterCase::kKept ? Find<LetterCase::kKept>(text, wanted, from)
                                         : Find<LetterCase::kIgnored>(text, wanted, from);
}

}  // namespace ostrell
