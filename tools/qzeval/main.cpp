// qzeval: evaluates SQL expressions over the rows of a CSV file.
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>

#include "engine/catalog/catalog.h"
#include "engine/charset.h"
#include "engine/csv_query.h"
#include "engine/parser.h"
#include "engine/plan.h"
#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"
#include "tools/qzeval/function_list.h"
#include "tools/qzeval/options.h"
#include "tools/qzeval/output.h"
#include "tools/qzeval/progress.h"

namespace qzeval {
namespace {

using namespace qzengine;

// The library's switches, and the host's parameters that say the same.
void set_up_library(const Options& options) {
    bifun_dll_var_init(options.compat_mode, options.charset, options.case_insensitive ? 0 : 1);
    host_parameter_set(COMPAT_MODE_PARAM, options.compat_mode);
    host_parameter_set(SERVER_CHARSET, options.charset);
}

std::optional<uint64_t> file_size(const std::string& path) {
    struct stat status {};
    if (path == "-" || stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<uint64_t>(status.st_size);
}

// Without a file there is one row and no column.
void evaluate_constants(const Plan& plan, const Options& options, Output& output) {
    Evaluator evaluator(plan, 1, options.query.session);
    const uint32_t rows = evaluator.run(1);
    const std::unique_ptr<ResultWriter> writer = make_result_writer(options.query.format, plan);
    TextBuffer text;
    writer->begin(text);
    writer->rows(evaluator, rows, text);
    writer->end(text, rows);
    output.write(text.view());
}

void evaluate_file(CsvTable& table, const Plan& plan, const Options& options, Output& output) {
    // Rows and the line on one terminal would overwrite each other.
    const bool shows_progress = isatty(STDERR_FILENO) != 0 && (!options.output.empty() || isatty(STDOUT_FILENO) == 0);
    ProgressLine progress(shows_progress, file_size(options.input));
    QueryOptions query = options.query;
    query.progress = [&](const QueryProgress& so_far) { progress.show(so_far); };
    run_csv_query(table, plan, query, [&](std::string_view text) { output.write(text); });
}

void run(const Options& options) {
    if (options.action == Action::kListFunctions) {
        Output output(options.output);
        output.write(options.function.empty() ? list_functions(builtin_catalog())
                                              : describe_function(builtin_catalog(), options.function));
        return output.finish();
    }
    const Query query = parse_query(options.expressions, options.where);
    std::optional<CsvTable> table;
    if (!options.input.empty()) {
        table.emplace(open_byte_source(options.input), options.types);
    } else if (!options.types.empty()) {
        throw UsageError("--type wants a file");
    }
    const Plan plan = make_plan(query, table ? std::span<const Column>(table->columns()) : std::span<const Column>(),
                                builtin_catalog(), options.query.session);
    Output output(options.output);
    if (options.action == Action::kExplain) {
        output.write(explain(plan));
    } else if (table) {
        evaluate_file(*table, plan, options, output);
    } else {
        evaluate_constants(plan, options, output);
    }
    output.finish();
}

void report(std::string_view message) {
    const std::string line = fmt::format("qzeval: {}\n", message);
    std::fputs(line.c_str(), stderr);
}

// The line of the expression in which the error was seen, and a mark below it.
std::string with_source(const QueryError& error) {
    const std::string& source = error.source();
    const size_t position = std::min(error.position(), source.size());
    const size_t line_break = position == 0 ? std::string::npos : source.rfind('\n', position - 1);
    const size_t begin = line_break == std::string::npos ? 0 : line_break + 1;
    const size_t end = std::min(source.find('\n', begin), source.size());
    std::string mark;
    for (size_t at = begin; at < position;) {
        const size_t tab = std::min(source.find('\t', at), position);
        mark.append(display_width(std::string_view(source).substr(at, tab - at)), ' ');
        if (tab < position) mark += '\t';
        at = tab + 1;
    }
    return fmt::format("{}\n  {}\n  {}^", error.what(), source.substr(begin, end - begin), mark);
}

int run_reporting(const Options& options) {
    try {
        set_up_library(options);
        run(options);
        return kSuccess;
    } catch (const QueryError& error) {
        report(with_source(error));
        return kUsage;
    } catch (const UsageError& error) {
        report(error.what());
        return kUsage;
    } catch (const EvaluationError& error) {
        report(error.what());
        return kEvaluationFailed;
    } catch (const InputError& error) {
        report(fmt::format("{}: {}", options.input, error.what()));
        return kInputFailed;
    } catch (const OutputError& error) {
        report(error.what());
        return kOutputFailed;
    } catch (const std::bad_alloc&) {
        report("out of memory");
        return kEvaluationFailed;
    }
}

}  // namespace
}  // namespace qzeval

int main(int argc, char** argv) {
    qzeval::Options options;
    try {
        if (const std::optional<int> code = qzeval::parse_options(argc, argv, options)) return *code;
    } catch (const qzengine::UsageError& error) {
        fmt::print(stderr, "qzeval: {}\n", error.what());
        return qzeval::kUsage;
    }
    return qzeval::run_reporting(options);
}
