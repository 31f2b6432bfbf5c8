#include "tests/support/case_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "qzbifun/codes.h"
#include "qzhost/control.h"

namespace support {
namespace {

// The reader's own failure; it becomes an error of the file with the line's number.
struct Malformed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <class T>
T to_number(std::string_view word, const char* what) {
    T value{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size())
        throw Malformed(std::string("not ") + what + ": " + std::string(word));
    return value;
}

// ---- Words ------------------------------------------------------------------------------------------------------------------

// Splits a line at blanks; quotes and braces hold a word together, a comma is a word of its own, # opens a comment.
std::vector<std::string> split(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    int depth = 0;
    const auto finish = [&] {
        if (!word.empty()) words.push_back(std::move(word));
        word.clear();
    };
    for (const char c : line) {
        if (c == '\'') quoted = !quoted;
        if (!quoted && c == '{') ++depth;
        if (!quoted && c == '}') --depth;
        const bool inside = quoted || depth > 0;
        if (!inside && c == '#' && word.empty()) break;
        if (!inside && (c == ' ' || c == '\t' || c == '\r')) {
            finish();
        } else if (!inside && c == ',') {
            finish();
            words.emplace_back(",");
        } else {
            word.push_back(c);
        }
    }
    if (quoted) throw Malformed("a quote without its end");
    if (depth != 0) throw Malformed("a brace without its match");
    finish();
    return words;
}

class Words {
  public:
    explicit Words(std::vector<std::string> words) : words_(std::move(words)) {}

    bool done() const { return next_ == words_.size(); }
    const std::string& peek() const {
        static const std::string end;
        return done() ? end : words_[next_];
    }
    bool take(std::string_view word) {
        if (done() || words_[next_] != word) return false;
        ++next_;
        return true;
    }
    std::string next(const char* what) {
        if (done()) throw Malformed(std::string("the line ends where ") + what + " should stand");
        return words_[next_++];
    }
    void expect_end() const {
        if (!done()) throw Malformed("unexpected: " + words_[next_]);
    }

  private:
    std::vector<std::string> words_;
    size_t next_ = 0;
};

// Position of the last c outside quotes.
size_t find_outside_quotes(std::string_view word, char c) {
    bool quoted = false;
    size_t found = std::string_view::npos;
    for (size_t i = 0; i < word.size(); ++i) {
        if (word[i] == '\'') quoted = !quoted;
        if (!quoted && word[i] == c) found = i;
    }
    return found;
}

// ---- Values and outcomes ----------------------------------------------------------------------------------------------------

Cell parse_value(const ValueType& type, std::string_view word) {
    Cell cell;
    const std::string wrong = type.parse(word, cell);
    if (!wrong.empty()) throw Malformed(std::string(word) + ": " + wrong);
    return cell;
}

// NULL, NULL:5 (a NULL over a value), 5@2 (a value whose valid byte or has_value is 2), 5
Cell parse_argument(const ValueType& type, std::string_view word) {
    if (word == "NULL") {
        Cell cell;
        cell.has = 0;
        cell.filled = false;
        return cell;
    }
    uint32_t has = 1;
    if (word.substr(0, 5) == "NULL:") {
        word.remove_prefix(5);
        has = 0;
    } else if (const size_t at = find_outside_quotes(word, '@'); at != std::string_view::npos) {
        has = to_number<uint32_t>(word.substr(at + 1), "a number behind @");
        word = word.substr(0, at);
    }
    Cell cell = parse_value(type, word);
    cell.has = has;
    return cell;
}

int32_t parse_code(std::string_view word) {
    if (word.substr(0, 3) != "EC_") {
        const auto code = to_number<int32_t>(word, "a code");
        if (code >= 0) throw Malformed("a failure's code is negative: " + std::string(word));
        return code;
    }
    constexpr int32_t kLowest = -9999;
    for (int32_t code = kLowest; code < 0; ++code) {
        if (host_error_name(code) == word) return code;
    }
    throw Malformed("unknown code: " + std::string(word));
}

// none, or names between commas. self stands for the export that is called, name:EC_X has a code of its own.
std::vector<StackEntry> parse_stack(Words& words, int32_t code) {
    std::vector<StackEntry> stack;
    if (words.take("none")) return stack;
    do {
        StackEntry entry = {code, words.next("a name of the error stack")};
        if (const size_t colon = entry.name.find(':'); colon != std::string::npos) {
            entry.code = parse_code(std::string_view(entry.name).substr(colon + 1));
            entry.name.resize(colon);
        }
        stack.push_back(std::move(entry));
    } while (words.take(","));
    return stack;
}

Tolerance parse_tolerance(const ValueType& type, std::string_view word) {
    word.remove_prefix(1);
    Tolerance tolerance;
    if (word == "value") {
        tolerance.kind = Tolerance::Kind::value;
    } else if (word.size() > 3 && word.substr(word.size() - 3) == "ulp") {
        tolerance.kind = Tolerance::Kind::ulp;
        tolerance.amount = to_number<double>(word.substr(0, word.size() - 3), "a count of ulp");
    } else {
        tolerance.kind = Tolerance::Kind::relative;
        tolerance.amount = to_number<double>(word, "a tolerance");
    }
    if (!type.knows(tolerance.kind)) throw Malformed("type " + type.name() + " has no tolerance of that kind");
    return tolerance;
}

void parse_error(Words& words, const ValueType& result, Outcome& outcome) {
    outcome.code = parse_code(words.next("a code"));
    bool has_stack = false;
    while (true) {
        if (words.take("stack")) {
            outcome.stack = parse_stack(words, outcome.code);
            has_stack = true;
        } else if (outcome.kind == Outcome::Kind::error && words.take("row")) {
            if (words.take("NULL")) {
                outcome.failed_row = Outcome::Row::null;
            } else if (words.take("kept")) {
                outcome.failed_row = Outcome::Row::kept;
            } else {
                outcome.failed_row = Outcome::Row::value;
                outcome.failed_value = parse_value(result, words.next("the row's value"));
            }
        } else {
            break;
        }
    }
    if (!has_stack) throw Malformed("an error tells its stack: stack none, or the names");
}

Outcome parse_outcome(Words& words, const ValueType& result) {
    Outcome outcome;
    if (words.take("setup")) {
        if (!words.take("error")) throw Malformed("setup is followed by error");
        outcome.kind = Outcome::Kind::setup_error;
        parse_error(words, result, outcome);
    } else if (words.take("error")) {
        outcome.kind = Outcome::Kind::error;
        parse_error(words, result, outcome);
    } else if (words.take("all")) {
        if (!words.take("NULL")) throw Malformed("all is followed by NULL");
        outcome.kind = Outcome::Kind::all_null;
    } else if (words.take("NULL")) {
        outcome.kind = Outcome::Kind::null;
    } else if (words.take("NULL:kept")) {
        outcome.kind = Outcome::Kind::null;
        outcome.null_row = Outcome::Row::kept;
    } else if (words.peek().substr(0, 5) == "NULL:") {
        outcome.kind = Outcome::Kind::null;
        outcome.null_row = Outcome::Row::value;
        outcome.value = parse_value(result, std::string_view(words.next("a value")).substr(5));
    } else {
        outcome.value = parse_value(result, words.next("an outcome"));
    }
    if (words.peek().substr(0, 1) == "~") outcome.tolerance = parse_tolerance(result, words.next("a tolerance"));
    return outcome;
}

// ---- Rules ------------------------------------------------------------------------------------------------------------------

using Change = void (*)(Rules&);
struct RuleWord {
    const char* rule;
    const char* word;
    Change change;
};

const RuleWord kRuleWords[] = {
    {"flag", "combine", [](Rules& r) { r.flag = Rules::Flag::combine; }},
    {"flag", "any", [](Rules& r) { r.flag = Rules::Flag::any; }},
    {"flag", "one", [](Rules& r) { r.flag = Rules::Flag::one; }},
    {"flag", "kept", [](Rules& r) { r.flag = Rules::Flag::kept; }},
    {"flag", "lowered", [](Rules& r) { r.flag_lowered = true; }},
    {"constants", "flag",
     [](Rules& r) {
         r.flag_reads_constants = true;
         r.constants = Rules::Constants::ignored;
     }},
    {"constants", "ignored",
     [](Rules& r) {
         r.flag_reads_constants = false;
         r.constants = Rules::Constants::ignored;
     }},
    {"constants", "rows",
     [](Rules& r) {
         r.flag_reads_constants = false;
         r.constants = Rules::Constants::rows;
     }},
    {"constants", "once",
     [](Rules& r) {
         r.flag_reads_constants = false;
         r.constants = Rules::Constants::once;
     }},
    {"constants", "own",
     [](Rules& r) {
         r.flag_reads_constants = false;
         r.constants = Rules::Constants::own;
     }},
    {"constants", "own+flag",
     [](Rules& r) {
         r.flag_reads_constants = true;
         r.constants = Rules::Constants::own;
     }},
    {"valid", "set", [](Rules& r) { r.valid = Rules::Valid::set; }},
    {"valid", "kept", [](Rules& r) { r.valid = Rules::Valid::kept; }},
    {"valid", "taken", [](Rules& r) { r.valid = Rules::Valid::taken; }},
    {"valid", "any", [](Rules& r) { r.valid = Rules::Valid::any; }},
    {"failure", "numeric", [](Rules& r) { r.failure = Rules::Failure::numeric; }},
    {"failure", "string", [](Rules& r) { r.failure = Rules::Failure::string; }},
    {"failure", "first", [](Rules& r) { r.failure = Rules::Failure::first; }},
    {"null", "propagated", [](Rules& r) { r.null_evaluated = false; }},
    {"null", "evaluated", [](Rules& r) { r.null_evaluated = true; }},
    {"bytes", "any", [](Rules& r) { r.bytes_plain = false; }},
    {"bytes", "plain", [](Rules& r) { r.bytes_plain = true; }},
    {"exhaustion", "memory", [](Rules& r) { r.exhaustion = Rules::Exhaustion::memory; }},
    {"exhaustion", "any", [](Rules& r) { r.exhaustion = Rules::Exhaustion::any; }},
    {"exhaustion", "unchecked", [](Rules& r) { r.exhaustion = Rules::Exhaustion::unchecked; }},
    {"inputs", "kept", [](Rules& r) { r.inputs_changed = false; }},
    {"inputs", "changed", [](Rules& r) { r.inputs_changed = true; }},
};

void parse_copied_argument(Words& words, const std::vector<CaseForm*>& forms) {
    const auto argument = to_number<uint32_t>(words.next("the number of an argument"), "the number of an argument");
    for (CaseForm* form : forms) {
        if (argument < 1 || argument > form->form.size()) throw Malformed("there is no argument " + std::to_string(argument));
        form->rules.flag = Rules::Flag::copy;
        form->rules.copied_argument = argument;
    }
}

// "pushes none or f_process, self": the stacks that an exhausted call may leave.
void parse_pushes(Words& words, const std::vector<CaseForm*>& forms) {
    std::vector<std::vector<StackEntry>> stacks;
    do {
        stacks.push_back(parse_stack(words, EC_OUT_OF_MEMORY));
    } while (words.take("or"));
    for (CaseForm* form : forms) form->rules.pushes = stacks;
}

// One rule, "flag copy 2 lowered" or "valid kept", for each of the forms.
void parse_rule(Words& words, const std::vector<CaseForm*>& forms) {
    const std::string rule = words.next("a rule");
    if (rule == "pushes") return parse_pushes(words, forms);
    const auto is_rule = [](const std::string& word) {
        return std::any_of(std::begin(kRuleWords), std::end(kRuleWords),
                           [&](const RuleWord& known) { return word == known.rule; });
    };
    if (!is_rule(rule)) throw Malformed("unknown rule: " + rule);
    size_t taken = 0;
    const size_t most = rule == "flag" ? 2 : 1;  // flag combine lowered
    while (!words.done() && taken < most) {
        const std::string word = words.peek();
        if (rule == "flag" && word == "copy") {
            words.next("copy");
            parse_copied_argument(words, forms);
        } else {
            const auto* known = std::find_if(std::begin(kRuleWords), std::end(kRuleWords),
                                             [&](const RuleWord& entry) { return entry.rule == rule && entry.word == word; });
            if (known == std::end(kRuleWords)) break;
            words.next("a word of the rule");
            for (CaseForm* form : forms) known->change(form->rules);
        }
        ++taken;
    }
    if (taken == 0) throw Malformed("rule " + rule + " does not know: " + (words.done() ? "(nothing)" : words.peek()));
}

// ---- Settings ---------------------------------------------------------------------------------------------------------------

constexpr std::array<std::pair<std::string_view, uint32_t>, 11> kParameters = {{
    {"LOB_SEARCH_READ_KB", LOB_SEARCH_READ_KB},
    {"COMPAT_MODE_PARAM", COMPAT_MODE_PARAM},
    {"JSON_MODE", JSON_MODE},
    {"TIME_TEXT_FRACTION", TIME_TEXT_FRACTION},
    {"BASE64_CRLF", BASE64_CRLF},
    {"SERVER_CHARSET", SERVER_CHARSET},
    {"DEFAULT_TIME_ZONE", DEFAULT_TIME_ZONE},
    {"TIME_TEXT_NANOSECONDS", TIME_TEXT_NANOSECONDS},
    {"CLOB_TRIM_MAX_BYTES", CLOB_TRIM_MAX_BYTES},
    {"STRING_OVERFLOW_FLAGS", STRING_OVERFLOW_FLAGS},
    {"FLOAT_SPECIALS_ALLOWED", FLOAT_SPECIALS_ALLOWED},
}};

void parse_parameter(Words& words, Settings& settings) {
    const std::string name = words.next("the name of a parameter");
    const auto* known =
        std::find_if(kParameters.begin(), kParameters.end(), [&](const auto& entry) { return entry.first == name; });
    if (known == kParameters.end()) throw Malformed("unknown parameter: " + name);
    const auto value = to_number<uint32_t>(words.next("a value"), "a value of a parameter");
    auto& parameters = settings.parameters;
    const auto set =
        std::find_if(parameters.begin(), parameters.end(), [&](const auto& entry) { return entry.first == known->second; });
    if (set != parameters.end()) {
        set->second = value;
    } else {
        parameters.emplace_back(known->second, value);
    }
}

void parse_setting(Words& words, Settings& settings) {
    const std::string word = words.next("a setting");
    const auto number = [&] { return to_number<uint32_t>(words.next("a number"), "a number"); };
    if (word == "compat_mode") {
        settings.compat_mode = number();
    } else if (word == "charset") {
        settings.charset = number();
    } else if (word == "case_sensitive") {
        settings.case_sensitive = number();
    } else if (word == "oracle_date_format") {
        settings.oracle_date_format = number() != 0;
    } else if (word == "parameter") {
        parse_parameter(words, settings);
    } else if (word == "session") {
        settings.session = true;
    } else if (word == "time_zone") {
        settings.session = true;
        settings.time_zone = to_number<int16_t>(words.next("minutes"), "minutes");
    } else if (word == "language") {
        settings.session = true;
        settings.language = number();
        settings.date_language = number();
    } else {
        throw Malformed("unknown setting: " + word);
    }
}

// ---- Lines ------------------------------------------------------------------------------------------------------------------

class Reader {
  public:
    explicit Reader(CaseFile& file) : file_(file) {}

    void read(int number, std::string_view text) {
        Words words(split(text));
        if (words.done()) return;
        if (words.take("function")) return read_function(number, words);
        if (file_.functions.empty()) throw Malformed("a function comes first");
        if (words.take("forms")) return read_forms(words);
        if (words.take("rules")) return read_rules(words);
        if (words.take("with")) return read_settings(words);
        if (words.take("without")) {
            settings_ = Settings();
            return words.expect_end();
        }
        read_line(number, text, words);
    }

  private:
    CaseFunction& function() { return file_.functions.back(); }

    static const ValueType* take_type(Words& words, std::string word) {
        if (word.empty()) word = words.next("a type");
        const ValueType* type = find_value_type(word);
        if (type == nullptr) throw Malformed("unknown type: " + word);
        return type;
    }

    // function greatest(double, double) -> double  aa=name av=name ... and rules
    void read_function(int number, Words& words) {
        CaseFunction function;
        function.line = number;
        std::string word = words.next("the function's name");
        const size_t open = word.find('(');
        if (open == std::string::npos || open == 0) throw Malformed("a function is written name(type, ...)");
        function.name = word.substr(0, open);
        word.erase(0, open + 1);
        for (bool last = false; !last;) {
            if (word.empty()) word = words.next("a type");
            last = word.back() == ')';
            if (last) word.pop_back();
            function.arguments.push_back(take_type(words, word));
            word.clear();
            if (!last && words.take(")")) last = true;
            if (!last && !words.take(",")) throw Malformed("types stand between commas");
        }
        function.result = words.take("->") ? take_type(words, "") : function.arguments[0];
        settings_ = Settings();
        file_.functions.push_back(std::move(function));
        read_forms(words);
    }

    // Forms, and behind them rules that hold for all forms of the function.
    void read_forms(Words& words) {
        if (!function().lines.empty()) throw Malformed("forms stand in front of the first case");
        while (words.peek().find('=') != std::string::npos) {
            const std::string word = words.next("a form");
            const size_t equals = word.find('=');
            CaseForm form;
            form.form = word.substr(0, equals);
            form.exported = word.substr(equals + 1);
            if (const size_t colon = form.form.find(':'); colon != std::string::npos) {
                form.extra = to_number<int32_t>(std::string_view(form.form).substr(colon + 1), "a number behind the form");
                form.form.resize(colon);
            }
            if (!fits(form.form)) throw Malformed("form does not fit the arguments: " + word);
            if (form.exported.empty()) throw Malformed("form without an export: " + word);
            function().forms.push_back(std::move(form));
        }
        while (!words.done()) parse_rule(words, all_forms());
    }

    bool fits(const std::string& form) {
        const std::vector<const ValueType*>& arguments = function().arguments;
        if (form.size() != arguments.size() || form.find('a') == std::string::npos) return false;
        for (size_t j = 0; j < form.size(); ++j) {
            const bool by_value = form[j] == 'i' && arguments[j]->name() == "int";
            if (form[j] != 'a' && form[j] != 'v' && !by_value) return false;
        }
        return true;
    }

    std::vector<CaseForm*> all_forms() {
        std::vector<CaseForm*> forms;
        for (CaseForm& form : function().forms) forms.push_back(&form);
        return forms;
    }

    // rules [for av va] flag copy 1 constants rows ...
    void read_rules(Words& words) {
        if (!function().lines.empty()) throw Malformed("rules stand in front of the first case");
        std::vector<CaseForm*> forms;
        if (words.take("for")) {
            while (words.peek().find_first_not_of("avi") == std::string::npos && !words.done()) {
                const std::string wanted = words.next("a form");
                const size_t before = forms.size();
                for (CaseForm* form : all_forms()) {
                    if (form->form == wanted) forms.push_back(form);
                }
                if (forms.size() == before) throw Malformed("the function has no form " + wanted);
            }
        } else {
            forms = all_forms();
        }
        if (words.done()) throw Malformed("rules without a rule");
        while (!words.done()) parse_rule(words, forms);
    }

    void read_settings(Words& words) {
        if (words.done()) throw Malformed("with is followed by a setting");
        while (!words.done()) parse_setting(words, settings_);
    }

    void read_line(int number, std::string_view text, Words& words) {
        CaseLine line;
        line.line = number;
        line.text = std::string(text);
        line.settings = settings_;
        for (const ValueType* type : function().arguments) {
            const std::string word = words.next("an argument");
            if (word == "->") throw Malformed("fewer arguments than the function has");
            line.arguments.push_back(parse_argument(*type, word));
        }
        if (!words.take("->")) throw Malformed("-> should stand behind the arguments, not: " + words.peek());
        line.outcome = parse_outcome(words, *function().result);
        if (words.take("in")) {
            if (words.done()) throw Malformed("in is followed by forms");
            while (!words.done()) {
                line.only_forms.push_back(words.next("a form"));
                const auto& forms = function().forms;
                const std::string& wanted = line.only_forms.back();
                if (std::none_of(forms.begin(), forms.end(), [&](const CaseForm& form) { return form.form == wanted; })) {
                    throw Malformed("the function has no form " + wanted);
                }
            }
        }
        words.expect_end();
        function().lines.push_back(std::move(line));
    }

    CaseFile& file_;
    Settings settings_;
};

}  // namespace

CaseFile parse_cases(std::string_view text, const std::string& path) {
    CaseFile file;
    file.path = path;
    Reader reader(file);
    int number = 0;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        ++number;
        try {
            reader.read(number, text.substr(0, end));
        } catch (const Malformed& malformed) {
            file.errors.push_back({number, malformed.what()});
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    for (const CaseFunction& function : file.functions) {
        if (function.forms.empty()) file.errors.push_back({function.line, "function " + function.name + " has no forms"});
        if (function.lines.empty()) file.errors.push_back({function.line, "function " + function.name + " has no cases"});
    }
    if (file.functions.empty() && file.errors.empty()) file.errors.push_back({1, "the file has no functions"});
    return file;
}

CaseFile read_cases(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return CaseFile{path, {}, {{0, "cannot be read"}}};
    std::ostringstream text;
    text << in.rdbuf();
    return parse_cases(text.str(), path);
}

}  // namespace support
