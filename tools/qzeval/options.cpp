#include "tools/qzeval/options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <string_view>

#include "engine/letters.h"
#include "engine/value_type.h"

namespace qzeval {
namespace {

using qzengine::ResultFormat;
using qzengine::TypeOverride;
using qzengine::UsageError;

// "+08:00", "-3:30" or "Z", in minutes east of UTC.
int16_t parse_time_zone(const std::string& text) {
    constexpr int kMostHours = 14;
    if (text == "Z" || text == "z") return 0;
    const auto is_digit = [&](size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
    const size_t colon = text.find(':');
    const bool shaped = !text.empty() && (text[0] == '+' || text[0] == '-') && (colon == 2 || colon == 3) && is_digit(1) &&
                        is_digit(colon - 1) && is_digit(colon + 1) && is_digit(colon + 2) && text.size() == colon + 3;
    if (shaped) {
        const int hours = std::stoi(text.substr(1, colon - 1));
        const int minutes = std::stoi(text.substr(colon + 1));
        const int sum = hours * 60 + minutes;
        if (minutes < 60 && sum <= kMostHours * 60) return static_cast<int16_t>(text[0] == '-' ? -sum : sum);
    }
    throw UsageError(fmt::format("{} is no time zone; write it as +08:00, at most 14 hours from UTC", text));
}

TypeOverride parse_type(const std::string& text) {
    const size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) throw UsageError(fmt::format("--type wants column=type, not {}", text));
    std::string_view name = std::string_view(text).substr(equals + 1);
    std::optional<std::string_view> characters;
    if (const size_t open = name.find('('); open != std::string_view::npos && name.back() == ')') {
        characters = name.substr(open + 1, name.size() - open - 2);
        name = name.substr(0, open);
    }
    std::string problem;
    const std::optional<qzengine::DeclaredType> type = qzengine::declare_type(name, characters, problem);
    if (!type) throw UsageError(fmt::format("--type {}: {}", text, problem));
    return {text.substr(0, equals), *type};
}

struct NamedFormat {
    std::string_view name;
    ResultFormat format;
};
constexpr NamedFormat kFormats[] = {
    {"csv", ResultFormat::kCsv}, {"json", ResultFormat::kJson}, {"table", ResultFormat::kTable}};

struct NamedCharset {
    std::string_view name;
    uint32_t code;  // what the library knows it by
};
constexpr NamedCharset kCharsets[] = {{"gb18030", 0}, {"utf8", 1}, {"euc-kr", 2}};

// The row of that name, in any case of letters.
template <class Row, size_t N>
const Row& find_named(const Row (&rows)[N], const std::string& name, std::string_view option) {
    std::vector<std::string_view> names;
    for (const Row& row : rows) {
        if (qzengine::same_letters(row.name, name)) return row;
        names.push_back(row.name);
    }
    throw UsageError(fmt::format("{} cannot be {}; it is one of {}", option, name, fmt::join(names, ", ")));
}

}  // namespace

std::optional<int> parse_options(int argc, const char* const* argv, Options& options) {
    CLI::App app(
        "Evaluates SQL expressions over the rows of a CSV file.\n\n"
        "EXPRESSIONS is \"expr [AS name], ...\" over the columns that the file's first line names. FILE is a path, or - for\n"
        "standard input; without it the expressions are of constants, and computed once.",
        "qzeval");
    app.footer(
        "Exit status: 0 success, 1 a function failed, 2 wrong usage or expression, 3 the input cannot be read,\n"
        "4 the output cannot be written. A file that -o names is replaced only on success.");
    app.get_formatter()->column_width(34);

    std::string where;
    std::string time_zone;
    std::vector<std::string> types;
    bool explain = false;
    std::string format = "csv";
    std::string charset = "utf8";

    app.add_option("expressions", options.expressions, "what to compute")->option_text("EXPRESSIONS");
    app.add_option("file", options.input, "the CSV file")->option_text("FILE");
    CLI::Option* where_option =
        app.add_option("--where", where, "keep only the rows for which this is true")->option_text("EXPR");
    app.add_option("--type", types, "the type of a column, in place of the one that its first rows suggest; may be repeated")
        ->option_text("COLUMN=TYPE")
        ->allow_extra_args(false);
    app.add_option("--format", format, "csv (default), json or table")->option_text("FORMAT");
    app.add_option("-o,--output", options.output, "write to this file, which is replaced on success only")->option_text("FILE");
    app.add_option("--threads", options.query.threads, "evaluate batches on so many threads; the output is the same")
        ->option_text("N")
        ->check(CLI::Range(1, 256));
    app.add_option("--compat-mode", options.compat_mode, "compatibility mode of the functions; default 0")->option_text("N");
    app.add_option("--charset", charset, "character set of the input and of csv results: utf8 (default), gb18030 or euc-kr")
        ->option_text("NAME");
    app.add_flag("--case-insensitive", options.case_insensitive, "string search folds case");
    CLI::Option* zone_option =
        app.add_option("--session-time-zone", time_zone, "the session's time zone, such as +08:00")->option_text("ZONE");
    CLI::Option* functions_option = app.add_option("--functions", options.function, "list the functions, or describe one")
                                        ->expected(0, 1)
                                        ->option_text("[NAME]");
    app.add_flag("--explain", explain, "print the plan: which exported function serves each call, and why");
    app.set_version_flag("--version", "qzeval " QZEVAL_VERSION);

    try {
        app.parse(argc, argv);
        options.query.format = find_named(kFormats, format, "--format").format;
        options.charset = find_named(kCharsets, charset, "--charset").code;
        if (where_option->count() > 0) options.where = where;
        if (zone_option->count() > 0) options.query.session.time_zone = parse_time_zone(time_zone);
        for (const std::string& type : types) options.types.push_back(parse_type(type));
        if (functions_option->count() > 0) {
            options.action = Action::kListFunctions;
        } else if (options.expressions.empty()) {
            throw UsageError("there is nothing to compute; qzeval --help tells the usage");
        } else if (explain) {
            options.action = Action::kExplain;
        }
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kSuccess : kUsage;
    }
    return std::nullopt;
}

}  // namespace qzeval
