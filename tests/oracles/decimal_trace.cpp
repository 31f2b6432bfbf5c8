// Prints random operations of the decimal services with their operands and results, a line each, for decimal_oracle.py to
// check. Usage: decimal_trace COUNT SEED. Decimals are printed as the 60 hexadecimal digits of their record.

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "qzhost/decimal.h"

namespace {

class Trace {
  public:
    explicit Trace(uint64_t seed) : random_(seed) {}

    void operation() {
        switch (below(21)) {
            case 0:
            case 1:
            case 2:
                return binary("add", xdec_add);
            case 3:
            case 4:
            case 5:
                return binary("sub", xdec_sub);
            case 6:
            case 7:
            case 8:
                return binary("mul", xdec_mul);
            case 9:
                return binary("div", xdec_div);
            case 10:
                return compare();
            case 11:
                return rounding();
            case 12:
                return truncation();
            case 13:
                return text_in();
            case 14:
                return text_out();
            case 15:
                return integers_in();
            case 16:
                return integers_out();
            case 17:
                return double_in();
            case 18:
                return double_out();
            case 19:
                return outwards();
            default:
                return words();
        }
    }

  private:
    uint64_t below(uint64_t n) { return std::uniform_int_distribution<uint64_t>(0, n - 1)(random_); }
    bool one_in(uint64_t n) { return below(n) == 0; }

    // Digits with runs of 0 and 9, where carries and borrows go far.
    std::string digits(uint64_t count) {
        std::string text;
        const uint64_t style = below(4);
        char run = '0';
        while (text.size() < count) {
            if (style == 0) {
                if (one_in(6)) run = "0995"[below(4)];
                text += run;
            } else {
                text += static_cast<char>('0' + below(10));
            }
        }
        return text;
    }

    // A number as text: mostly what columns hold, often what the record just holds, sometimes the ends of the range.
    std::string number() {
        std::string text = one_in(3) ? "-" : "";
        const uint64_t kind = below(16);
        if (kind == 0) return text + digits(1 + below(3)) + "E" + std::to_string(static_cast<int>(below(280)) - 150);
        if (kind == 1) return text + digits(40 + below(8)) + "E" + std::to_string(static_cast<int>(below(280)) - 180);
        if (kind == 2) return text + digits(1 + below(60)) + "." + digits(below(60));
        if (kind == 3) return text + "0";
        if (kind == 4) return text + digits(38) + "." + digits(below(6));
        const uint64_t count = 1 + below(18);
        const uint64_t scale = one_in(3) ? 0 : below(count + 3);
        text += scale < count ? digits(count - scale) : "0";
        return scale == 0 ? text : text + "." + digits(scale);
    }

    xdec decimal() {
        xdec value;
        do {
            const std::string text = number();
            if (xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size())) == 0) return value;
        } while (true);
    }

    // Near another one: the same, its neighbour in the last digit, its negative, or another scale.
    xdec near(const xdec& other) {
        xdec value = other;
        if (one_in(3)) xdec_neg(&value, &value);
        if (one_in(2)) {
            xdec unit;
            xdec_from_unscaled(&unit, one_in(2) ? 1 : -1, one_in(2) ? other.scale % 128U : static_cast<uint32_t>(below(40)));
            xdec_add(&value, &unit, &value);
        }
        return value;
    }

    int32_t places() { return one_in(12) ? static_cast<int32_t>(random_()) : static_cast<int32_t>(below(60)) - 25; }

    uint64_t bits() { return random_() >> below(64); }

    void print(const xdec& value) {
        const auto bytes = std::bit_cast<std::array<uint8_t, sizeof(xdec)>>(value);
        std::array<char, 2 * sizeof(xdec) + 2> hex;
        size_t at = 0;
        hex[at++] = ' ';
        for (const uint8_t byte : bytes) {
            hex[at++] = "0123456789abcdef"[byte >> 4];
            hex[at++] = "0123456789abcdef"[byte & 15];
        }
        hex[at] = '\0';
        std::fputs(hex.data(), stdout);
    }

    void print_words(const uint32_t* word) {
        for (int i = 0; i < XDEC_BINARY_WORDS; ++i) std::printf(" %u", word[i]);
    }

    void binary(const char* name, int32_t (*service)(const xdec*, const xdec*, xdec*)) {
        const xdec x = decimal();
        const xdec y = one_in(8) ? near(x) : decimal();
        xdec result = x;
        const int32_t code = service(one_in(2) ? &x : &result, &y, &result);  // the destination may be x
        std::fputs(name, stdout);
        print(x);
        print(y);
        std::printf(" %d", code);
        print(result);
        std::putchar('\n');
    }

    void compare() {
        const xdec x = decimal();
        const xdec y = one_in(2) ? near(x) : decimal();
        std::fputs("cmp", stdout);
        print(x);
        print(y);
        std::printf(" %d\n", xdec_cmp(&x, &y));
    }

    void rounding() {
        const xdec x = decimal();
        const int32_t n = places();
        xdec result = x;
        const int32_t code = xdec_round(one_in(2) ? &x : &result, 0, n, &result);
        std::fputs("round", stdout);
        print(x);
        std::printf(" %d %d", n, code);
        print(result);
        std::putchar('\n');
    }

    void truncation() {
        const xdec x = decimal();
        const int32_t n = one_in(3) ? 0 : places();
        xdec result = x;
        if (n == 0 && one_in(2)) {
            xdec_trunc_scale(&result);
        } else {
            xdec_trunc_scale_with_pos(one_in(2) ? &x : &result, n, &result);
        }
        std::fputs("trunc", stdout);
        print(x);
        std::printf(" %d", n);
        print(result);
        std::putchar('\n');
    }

    void outwards() {
        const xdec x = decimal();
        xdec ceil = x, floor = x;
        xdec_ceil_by_scale(one_in(2) ? &x : &ceil, &ceil);
        xdec_floor_by_scale(one_in(2) ? &x : &floor, &floor);
        std::fputs("outwards", stdout);
        print(x);
        print(ceil);
        print(floor);
        std::putchar('\n');
    }

    void text_in() {
        std::string text = number();
        if (one_in(2) && text[0] != '-') text = "+" + text;
        if (one_in(3) && text.find('E') == std::string::npos) text += "e" + std::to_string(static_cast<int>(below(80)) - 40);
        xdec result;
        const int32_t code = xdec_from_char(&result, text.data(), static_cast<uint32_t>(text.size()));
        std::printf("in %s %d", text.c_str(), code);
        print(result);
        std::putchar('\n');
    }

    void text_out() {
        const xdec x = decimal();
        const auto count = static_cast<uint32_t>(one_in(2) ? 0 : below(30));
        char text[XDEC_TEXT_SIZE];
        uint32_t length = 0;
        const int32_t code = count == 0 && one_in(2) ? xdec_to_char2(&x, text, sizeof text, &length)
                                                     : xdec_to_char_with_zero(&x, text, sizeof text, count, 0, &length);
        std::fputs("out", stdout);
        print(x);
        std::printf(" %u %d %u %s\n", count, code, length, text);
    }

    void integers_in() {
        const uint64_t value = bits();
        const auto scale = static_cast<uint32_t>(below(30));
        xdec result[4];
        xdec_from_int64(&result[0], static_cast<int64_t>(value), XDEC_SCALE_NONE);
        xdec_from_int64(&result[1], static_cast<int64_t>(value), scale);
        xdec_from_ulint64(&result[2], value);
        xdec_from_unscaled(&result[3], static_cast<int64_t>(value), scale);
        std::printf("int %lu %u", value, scale);
        for (const xdec& r : result) print(r);
        std::putchar('\n');
    }

    void integers_out() {
        xdec x = decimal();
        if (one_in(3)) {
            xdec_from_ulint64(&x, bits());
            x = near(x);
        }
        int64_t whole = 0;
        uint64_t natural = 0;
        const int32_t code = xdec_get_int64(&x, &whole);
        const int32_t natural_code = xdec_get_ulint64(&x, &natural);
        xdec quotient;
        uint32_t remainder = 0;
        xdec_div_get_quotient_int_by_16(&x, &quotient, &remainder);
        std::fputs("get", stdout);
        print(x);
        std::printf(" %d %ld %d %lu %d", code, whole, natural_code, natural, xdec_in_ulint64(&x) != 0);
        print(quotient);
        std::printf(" %u\n", remainder);
    }

    void double_in() {
        double value = std::bit_cast<double>(random_());
        if (one_in(2))
            value = static_cast<double>(static_cast<int64_t>(bits())) / std::array{1e0, 1e1, 1e2, 1e4, 1e9}[below(5)];
        xdec result;
        const int32_t code = xdec_from_double(value, &result);
        std::printf("fromdouble %016lx %d", std::bit_cast<uint64_t>(value), code);
        print(result);
        std::putchar('\n');
    }

    void double_out() {
        const xdec x = decimal();
        int32_t code = 1;
        const double value = xdec_get_double(&x, &code, static_cast<int32_t>(below(2)));
        std::fputs("getdouble", stdout);
        print(x);
        std::printf(" %d %016lx\n", code, std::bit_cast<uint64_t>(value));
    }

    void words() {
        uint32_t word[XDEC_BINARY_WORDS] = {0};
        for (uint64_t i = 0, n = below(6); i < n; ++i) word[i] = static_cast<uint32_t>(one_in(3) ? ~0U : random_());
        const auto negative = static_cast<int32_t>(below(2));
        xdec result;
        const int32_t code = xdec_from_binary(&result, negative, word);
        std::printf("frombinary %d", negative);
        print_words(word);
        std::printf(" %d", code);
        print(result);
        std::putchar('\n');

        const xdec x = decimal();
        const int32_t back = xdec_get_binary(&x, word);
        std::fputs("getbinary", stdout);
        print(x);
        std::printf(" %d", back);
        print_words(word);
        std::putchar('\n');
    }

    std::mt19937_64 random_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: decimal_trace COUNT SEED\n", stderr);
        return 2;
    }
    Trace trace(std::strtoull(argv[2], nullptr, 10));
    for (uint64_t n = std::strtoull(argv[1], nullptr, 10); n > 0; --n) trace.operation();
}
