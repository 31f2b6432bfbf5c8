#include "engine/errors.h"

#include <fmt/format.h>

#include "qzhost/control.h"

namespace qzengine {
namespace {

std::string describe(const Failure& failure) {
    std::string text = failure.place.empty() ? "" : failure.place + ": ";
    text += fmt::format("{} failed: {} ({}, {})", failure.call, host_error_text(failure.code), host_error_name(failure.code),
                        failure.code);
    if (failure.operation != failure.call) text += fmt::format("\n  in {}", failure.operation);
    for (const std::string& argument : failure.arguments) text += fmt::format("\n  with {}", argument);
    for (const Failure::StackEntry& entry : failure.stack)
        text += fmt::format("\n  reported by {} ({})", entry.name, entry.code);
    return text;
}

}  // namespace

EvaluationError::EvaluationError(Failure failure) : std::runtime_error(describe(failure)), failure_(std::move(failure)) {}

}  // namespace qzengine
