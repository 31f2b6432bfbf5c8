// Loops that move texts, compiled for the machine: with AVX-512 one load and one store under a mask move every length up to 64,
// so that no branch depends on it; elsewhere copy_text does it.
//
// A loop is a callable that takes the way to move as its parameter, and is always inlined:
//
//   with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA { for (...) Moves::copy(to, from, len); });
#pragma once

#include <cstring>

#include "bop/frame/copy_text.h"

#if defined(__x86_64__)
#define BIFUN_HAS_MASKED_MOVES 1
#include <immintrin.h>
#define BIFUN_MASKED [[gnu::target("avx512f,avx512bw,avx512vl,bmi,bmi2")]]
#endif

#define BIFUN_INLINE_LAMBDA __attribute__((always_inline))

namespace bifun {

// from may be anything when len is 0.
struct PlainMoves {
    static void copy(char* to, const char* from, size_t len) { copy_text(to, from, len); }
};

#if BIFUN_HAS_MASKED_MOVES

struct MaskedMoves {
    static constexpr size_t kMost = 64;

    BIFUN_MASKED static void copy(char* to, const char* from, size_t len) {
        if (len > kMost) [[unlikely]] {
            std::memcpy(to, from, len);
            return;
        }
        const __mmask64 places = _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(len));
        // Where nobody can read even a load of no bytes is slow.
        const char* const readable = len != 0 ? from : to;
        _mm512_mask_storeu_epi8(to, places, _mm512_maskz_loadu_epi8(places, readable));
    }
};

inline bool has_masked_moves() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("bmi2") != 0;
}

// What the loops go by. A test may have them go the other way.
inline bool takes_masked_moves = has_masked_moves();

template <class Loop>
BIFUN_MASKED auto run_masked(const Loop& loop) {
    return loop(MaskedMoves{});
}

#endif

template <class Loop>
auto with_moves(const Loop& loop) {
#if BIFUN_HAS_MASKED_MOVES
    if (takes_masked_moves) return run_masked(loop);
#endif
    return loop(PlainMoves{});
}

}  // namespace bifun
