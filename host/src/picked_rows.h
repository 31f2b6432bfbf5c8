// Rows picked out of many, for work that few of them need: a branch on whether a row needs it could not be foreseen.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "host/src/utf8_planes.h"

namespace qzhost {

class PickedRows {
  public:
    // Of so many rows at most.
    static constexpr uint32_t kMost = 512;

    // The rows with a number of at least least, which is above 0.
    void pick(const uint32_t* numbers, uint32_t n, uint32_t least) {
        size_ = 0;
        for (uint32_t i = 0; i < n; ++i) {
            rows_[size_] = i;
            size_ += numbers[i] >= least;
        }
    }

#ifdef QZHOST_MASKED_LOADS
    QZHOST_MASKED void pick_masked(const uint32_t* numbers, uint32_t n, uint32_t least) {
        size_ = 0;
        __m512i row = _mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
        for (uint32_t i = 0; i < n; i += kLanes) {
            const auto present = static_cast<__mmask16>(_bzhi_u32(0xFFFF, std::min(kLanes, n - i)));
            const __m512i number = _mm512_maskz_loadu_epi32(present, numbers + i);
            const __mmask16 picked = _mm512_cmpge_epu32_mask(number, _mm512_set1_epi32(static_cast<int32_t>(least)));
            _mm512_storeu_si512(rows_ + size_, _mm512_maskz_compress_epi32(picked, row));
            size_ += static_cast<uint32_t>(std::popcount(picked));
            row = _mm512_add_epi32(row, _mm512_set1_epi32(kLanes));
        }
    }
#endif

    const uint32_t* begin() const { return rows_; }
    const uint32_t* end() const { return rows_ + size_; }

  private:
    static constexpr uint32_t kLanes = 16;

    uint32_t rows_[kMost + kLanes];  // the last store may reach over the end
    uint32_t size_ = 0;
};

}  // namespace qzhost
