// Every form of a function against one slow, plain telling of what a row is.
//
//   Differential<double, double, double> greatest;           // result, arguments
//   greatest.add("aa", "bgreatest_aa_math_dbl", bgreatest_aa_math_dbl);
//   greatest.add("av", "bgreatest_av_do_math_dbl", bgreatest_av_do_math_dbl);
//   EXPECT_EQ(greatest.run([](double x, double y) { return x > y ? x : y; }), "");
//
// Batches are random in all that a caller may choose: rows, selections, valid bytes from 0 to 255, NULL and other constants,
// flags, values. What the function does with NULLs, flags and failures is told by Rules, as in a table of cases; with
// null_evaluated the telling takes std::optional<A> for each argument. It answers R, or Answer<R> where a row may be NULL or
// fail. Everything that run() of batch.h checks is checked.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/batch.h"
#include "tests/support/host.h"
#include "tests/support/random_value.h"
#include "tests/support/test_seed.h"
#include "tests/support/value.h"

namespace support {

// What becomes of one row.
template <class R>
struct Answer {
    Outcome outcome;

    Answer(const R& value) { outcome.value = to_cell(value); }  // NOLINT: a value is an answer
    static Answer null() {
        Answer answer;
        answer.outcome.kind = Outcome::Kind::null;
        return answer;
    }
    // The names are those of the error stack; "self" stands for the export that is called. Without a row the rules tell it.
    static Answer error(int32_t code, const std::vector<std::string>& names, const std::optional<R>& row = std::nullopt) {
        Answer answer;
        answer.outcome.kind = Outcome::Kind::error;
        answer.outcome.code = code;
        for (const std::string& name : names) answer.outcome.stack.push_back({code, name});
        if (row.has_value()) {
            answer.outcome.failed_row = Outcome::Row::value;
            answer.outcome.failed_value = to_cell(*row);
        }
        return answer;
    }

  private:
    Answer() = default;
};

#ifdef NDEBUG
constexpr uint32_t kBatches = 400;
#else
constexpr uint32_t kBatches = 60;  // instrumented, and not optimised
#endif

template <class R, class... A>
class Differential {
  public:
    Rules rules;  // of the forms that are added behind

    template <class... P>
    void add(const std::string& letters, const std::string& name, int32_t (*function)(qz_env*, rt_memobj*, P...)) {
        std::string told;
        ((told += std::is_same_v<P, bdta3_col*> ? 'a' : std::is_same_v<P, bdta3_scalar*> ? 'v' : '.'), ...);
        if (told != letters + "a.") throw std::logic_error("form " + letters + " does not fit " + name);
        forms_.push_back({letters, name, reinterpret_cast<void*>(function), rules});
    }

    // Draws argument I (from 0) in another way than random_value.
    template <size_t I>
    void draw(std::function<std::tuple_element_t<I, std::tuple<A...>>(Random&)> generator) {
        std::get<I>(generators_) = std::move(generator);
    }

    Tolerance tolerance;
    uint32_t batches = kBatches;  // for each form
    bool with_no_rows = true;     // some batches have none; not where what the rows come to decides the flag

    // Answers what differed first, with the seed; "" when nothing did.
    template <class Tell>
    std::string run(Tell tell, uint64_t seed = test_seed()) {
        for (const Form& form : forms_) {
            for (uint32_t i = 0; i < batches; ++i) {
                const uint64_t batch_seed = seed + i;
                std::string text;
                for (const std::string& difference : run_batch(form, tell, batch_seed)) text += "\n    " + difference;
                if (!text.empty())
                    return form.name + ", seed " + std::to_string(seed) + ", batch " + std::to_string(i) + ":" + text;
            }
        }
        return forms_.empty() ? "no forms" : "";
    }

  private:
    static constexpr size_t kArguments = sizeof...(A);
    using Values = std::tuple<A...>;

    struct Form {
        std::string letters;
        std::string name;
        void* function;
        Rules rules;
    };

    template <class Tell>
    std::vector<std::string> run_batch(const Form& form, const Tell& tell, uint64_t seed) {
        Random random(seed);
        Host host;
        Batch batch;
        cells_.clear();
        outcomes_.clear();
        batch.form = form.letters;
        batch.arguments = {&type_of<A>()...};
        batch.result = &type_of<R>();
        batch.rules = form.rules;
        batch.function = form.function;
        batch.seed = seed;
        batch.flags_low = random.chance(20);
        for (size_t j = 0; j < kArguments; ++j) batch.selections.push_back(static_cast<Selection>(random.below(3)));
        draw_constants(form, random, batch);
        if (form.rules.constants == Rules::Constants::once && has_null_constant(batch)) {
            outcomes_.emplace_back().kind = Outcome::Kind::all_null;
            batch.whole = &outcomes_.back();
        }
        batch.no_rows = random.chance(3) && with_no_rows;
        const uint32_t rows = random.chance(85) ? 1 + random.below(150) : 1 + random.below(1500);
        const uint32_t nulls = std::array<uint32_t, 4>{0, 10, 50, 95}[random.below(4)];
        const bool may_fail = random.chance(25);
        for (uint32_t i = 0; i < rows; ++i) batch.rows.push_back(draw_row(form, tell, random, batch, nulls, may_fail));
        return support::run(host, batch);
    }

    void draw_constants(const Form& form, Random& random, Batch& batch) {
        const Values values = draw_values(random, std::index_sequence_for<A...>());
        batch.constants = cells_of(values, std::index_sequence_for<A...>());
        const bool own = form.rules.constants == Rules::Constants::own;
        for (Cell& cell : batch.constants) cell.has = random.chance(20) ? 0 : (own || random.chance(80)) ? 1 : 2;
    }

    static bool has_null_constant(const Batch& batch) {
        for (size_t j = 0; j < kArguments; ++j) {
            if (batch.form[j] == 'v' && !batch.constants[j].present()) return true;
        }
        return false;
    }

    template <class Tell>
    BatchRow draw_row(const Form& form, const Tell& tell, Random& random, const Batch& batch, uint32_t nulls, bool may_fail) {
        constexpr int kTries = 6;
        for (int i = 0;; ++i) {
            const Values values = with_constants(draw_values(random, std::index_sequence_for<A...>()), batch);
            BatchRow row;
            for (size_t j = 0; j < kArguments; ++j) row.bytes[j] = draw_byte(form, random, nulls);
            Outcome outcome = answer(form, tell, values, batch, row);
            if (outcome.kind == Outcome::Kind::error && !may_fail) {
                if (i < kTries) continue;
                if (!form.rules.null_evaluated) row.bytes[form.letters.find('a')] = 0;
            }
            for (StackEntry& entry : outcome.stack) {
                if (entry.name == "self") entry.name = form.name;
            }
            outcome.tolerance = tolerance;
            outcomes_.push_back(std::move(outcome));
            row.outcome = &outcomes_.back();
            size_t j = 0;
            for (Cell& cell : cells_of(values, std::index_sequence_for<A...>())) {
                cells_.push_back(std::move(cell));
                row.arguments[j++] = &cells_.back();
            }
            return row;
        }
    }

    static uint8_t draw_byte(const Form& form, Random& random, uint32_t nulls) {
        if (random.chance(nulls)) return 0;
        if (form.rules.bytes_plain || random.chance(60)) return 1;
        return static_cast<uint8_t>(random.below(256));
    }

    template <class Tell>
    static Outcome answer(const Form& form, const Tell& tell, const Values& values, const Batch& batch, const BatchRow& row) {
        if constexpr (std::is_invocable_v<Tell, std::optional<A>...>) {
            return answer_of(tell, values, batch, row, std::index_sequence_for<A...>());
        } else {
            static_assert(std::is_invocable_v<Tell, A...>, "the telling takes the arguments' values, or std::optional of them");
            if (form.rules.null_evaluated) throw std::logic_error("with null_evaluated the telling takes std::optional");
            return Answer<R>(std::apply(tell, values)).outcome;
        }
    }

    template <class Tell, size_t... I>
    static Outcome answer_of(const Tell& tell, const Values& values, const Batch& batch, const BatchRow& row,
                             std::index_sequence<I...>) {
        const auto present = [&](size_t j) { return batch.form[j] == 'a' ? row.bytes[j] != 0 : batch.constants[j].present(); };
        return Answer<R>(tell((present(I) ? std::optional<A>(std::get<I>(values)) : std::nullopt)...)).outcome;
    }

    template <size_t... I>
    Values draw_values(Random& random, std::index_sequence<I...>) {
        return Values{(std::get<I>(generators_) ? std::get<I>(generators_)(random) : random_value<A>(random))...};
    }

    template <size_t... I>
    static std::vector<Cell> cells_of(const Values& values, std::index_sequence<I...>) {
        return {to_cell(std::get<I>(values))...};
    }

    Values with_constants(Values values, const Batch& batch) {
        return with_constants(std::move(values), batch, std::index_sequence_for<A...>());
    }
    template <size_t... I>
    static Values with_constants(Values values, const Batch& batch, std::index_sequence<I...>) {
        ((batch.form[I] == 'v' ? void(std::get<I>(values) = from_cell<A>(batch.constants[I])) : void()), ...);
        return values;
    }

    std::vector<Form> forms_;
    std::tuple<std::function<A(Random&)>...> generators_;
    std::deque<Cell> cells_;
    std::deque<Outcome> outcomes_;
};

}  // namespace support
