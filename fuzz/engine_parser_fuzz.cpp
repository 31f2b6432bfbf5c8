// Expressions of any bytes: a tree whose places lie in the text, or an error that does. What parses is planned too, over
// columns of every type.
#include <vector>

#include "engine/catalog/catalog.h"
#include "engine/parser.h"
#include "engine/plan.h"
#include "fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qzengine;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::vector<Column> columns{
        {"i", ValueType::kInt},      {"b", ValueType::kBigint},     {"d", ValueType::kDecimal},
        {"f", ValueType::kDouble},   {"r", ValueType::kFloat},      {"s", ValueType::kString},
        {"t", ValueType::kDatetime}, {"y", ValueType::kIntervalYm}, {"x", ValueType::kBinary},
    };
    try {
        const Query query = parse_query(text);
        for (const Selected& selected : query.selected) {
            require(selected.expression.begin < selected.expression.end && selected.expression.end <= size);
        }
        const Plan plan = make_plan(query, columns, builtin_catalog());
        require(plan.outputs.size() == query.selected.size());
        for (NodeId id = 0; id < plan.nodes.size(); ++id) {
            for (NodeId argument : plan.nodes[id].arguments) require(argument < id);
        }
        require(!explain(plan).empty());
    } catch (const QueryError& error) {
        require(error.position() <= size);
    } catch (const EvaluationError& error) {
        require(error.failure().code < 0);
    }
    return 0;
}
