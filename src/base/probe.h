#pragma once

#include <emmintrin.h>

#include <cstddef>

namespace ostrell {

enum class LetterCase { kKept, kIgnored };  // of ASCII letters

// One character, sought at as many places of a text at once as fit a vector (SSE2, which every x64
// processor has).
template <class Char>
class Probe {
 public:
  static constexpr size_t kPlaces = sizeof(__m128i) / sizeof(Char);

  // A letter that is sought in either case is given in lower case.
  Probe(Char wanted, LetterCase letterCase)
      : wantedCharacters(Fill(wanted)),
        caseBits(Fill(letterCase == LetterCase::kIgnored && wanted >= 'a' && wanted <= 'z'
                          ? Char{'a' ^ 'A'}
                          : Char{0})) {}

  // All ones in each of the kPlaces characters from `text` on that is the wanted one. They must be
  // readable.
  __m128i Find(const Char* text) const {
    const __m128i there = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    return Compare(_mm_or_si128(there, caseBits), wantedCharacters);
  }

 private:
  static __m128i Fill(Char value) {
    if constexpr (sizeof(Char) == 1) {
      return _mm_set1_epi8(value);
    } else if constexpr (sizeof(Char) == 2) {
      return _mm_set1_epi16(static_cast<short>(value));
    } else {
      return _mm_set1_epi32(static_cast<int>(value));
    }
  }

  static __m128i Compare(__m128i a, __m128i b) {
    if constexpr (sizeof(Char) == 1) {
      return _mm_cmpeq_epi8(a, b);
    } else if constexpr (sizeof(Char) == 2) {
      return _mm_cmpeq_epi16(a, b);
    } else {
      return _mm_cmpeq_epi32(a, b);
    }
  }

  __m128i wantedCharacters;
  __m128i caseBits;
};

}  // namespace ostrell
