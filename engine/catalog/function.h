/*
 * What the catalog knows of one SQL function: one entry for each overload.
 *
 * An overload is a list of argument types and a result type. It is served by one or more exported batch functions that differ
 * only in which arguments are vectors (a) and which are constants (v); each such form names its export literally, so that a
 * search for the export finds its row. See docs/engine.md for how the planner chooses among overloads and forms.
 */
#ifndef QZENGINE_CATALOG_FUNCTION_H
#define QZENGINE_CATALOG_FUNCTION_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "engine/value_type.h"
#include "qzbifun/records.h"

namespace qzengine {

// One exported batch function. letters has one letter for each SQL argument; the constructor holds the function's type against
// it. A function with one more argument behind nrows takes its value as extra.
class Form {
  public:
    template <class... P>
    Form(const char* letters, const char* symbol, int32_t (*function)(qz_env*, rt_memobj*, P...), int32_t extra = 0)
        : letters_(letters),
          symbol_(symbol),
          function_(reinterpret_cast<Erased>(function)),
          invoke_(&invoke<P...>),
          extra_(extra) {
        std::string expected;
        ((expected += std::is_same_v<P, bdta3_col*> ? 'a' : std::is_pointer_v<P> ? 'v' : '.'), ...);
        if (expected != letters_ + "a." && expected != letters_ + "a..") {
            throw std::logic_error("form " + letters_ + " does not fit the type of " + symbol_);
        }
    }

    const std::string& letters() const { return letters_; }
    const std::string& symbol() const { return symbol_; }

    // arguments[i] points to a bdta3_col where letters()[i] is a, and to the constant's record where it is v.
    int32_t call(qz_env* env, rt_memobj* rt_mem, void* const* arguments, bdta3_col* result, uint32_t nrows) const {
        return invoke_(*this, env, rt_mem, arguments, result, nrows);
    }

  private:
    using Erased = void (*)();
    using Invoke = int32_t (*)(const Form&, qz_env*, rt_memobj*, void* const*, bdta3_col*, uint32_t);

    template <class... P>
    static int32_t invoke(const Form& form, qz_env* env, rt_memobj* rt_mem, void* const* arguments, bdta3_col* result,
                          uint32_t nrows) {
        auto* function = reinterpret_cast<int32_t (*)(qz_env*, rt_memobj*, P...)>(form.function_);
        return [&]<size_t... I>(std::index_sequence<I...>) {
            return function(env, rt_mem, form.argument<P>(I, arguments, result, nrows)...);
        }
        (std::index_sequence_for<P...>{});
    }

    // The value of the i-th parameter behind rt_mem: an argument, the result, the number of rows, the extra argument.
    template <class P>
    P argument(size_t i, void* const* arguments, bdta3_col* result, uint32_t nrows) const {
        if constexpr (std::is_pointer_v<P>) {
            return i < letters_.size() ? static_cast<P>(arguments[i]) : static_cast<P>(static_cast<void*>(result));
        } else {
            return i == letters_.size() + 1 ? static_cast<P>(nrows) : static_cast<P>(extra_);
        }
    }

    std::string letters_;
    std::string symbol_;
    Erased function_;
    Invoke invoke_;
    int32_t extra_;
};

// A word that stands for a number in a call, such as the unit of a date addition.
struct Keyword {
    std::string_view word;  // lower case
    int32_t value;
};

// What a constant argument may be.
enum class Needs : uint8_t {
    kValue,      // any expression of the type
    kCondition,  // a condition: a row that is not true holds something other than 1, NULL rows too, and a constant's has_value
                 // word is 1 exactly when it is true
    kKeyword,    // an int that is written as one of the keywords
};

struct Parameter {
    const char* name;  // for signatures
    ValueType type;
    Needs needs = Needs::kValue;
    std::vector<Keyword> keywords = {};
};

enum class NullRule : uint8_t {
    kAnyNull,  // an argument that is NULL makes the row NULL; so a constant NULL never reaches the exported function
    kOwn,      // the function has its own rule; the help tells it
};

// A call of constants only and its result as text, NULL written NULL. Run as a test, and shown by --functions.
struct Example {
    std::string expression;
    std::string result;
};

struct Function {
    const char* name;  // the SQL name, lower case
    std::vector<Parameter> parameters;
    ValueType result;
    NullRule null_rule = NullRule::kAnyNull;
    const char* help = "";             // one line
    std::vector<int32_t> errors = {};  // codes that a row may fail with, besides EC_OUT_OF_MEMORY
    std::vector<Form> forms = {};
    std::vector<Example> examples = {};
    bool reads_null_rows = false;  // looks at what stands in NULL rows and constants: it is given copies that hold zeros there
    bool changes_arguments = false;  // may write to its argument vectors: it is given copies
};

// "abs(x bigint) -> bigint"
std::string signature(const Function& function);

}  // namespace qzengine

#endif
