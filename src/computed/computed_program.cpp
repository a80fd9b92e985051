#include "computed/computed_program.h"

#include <algorithm>
#include <set>

#include "computed/functions.h"
#include "computed/quoted.h"
#include "graph/values/missing_value.h"

namespace wavo::computed {

namespace {

bool IsReserved(const std::string& name) {
    return FindFunction(name) != nullptr || name == kPiName || name == kDerivativeName ||
           name == kPreviousName;
}

/// What is wrong with a name, whatever others there are.
std::string WrongName(const std::string& name) {
    if (name.empty()) {
        return "The name is missing";
    }
    if (name.size() > kLongestComputedName) {
        return "The name is too long";
    }
    if (!IsPlainName(name)) {
        return R"(A name has letters, digits, "_" and ".", and begins with a letter)";
    }
    if (IsReserved(name)) {
        return Quoted(name) + " is the name of a function or number";
    }
    return {};
}

}  // namespace

ComputedProgram::ComputedProgram(std::span<const ComputedAxis> definitions,
                                 std::span<const std::string> source_names)
    : m_findings(definitions.size()) {
    TakeNames(definitions, source_names);
    Connect(source_names);
    FindOrder();
}

void ComputedProgram::TakeNames(std::span<const ComputedAxis> definitions,
                                std::span<const std::string> source_names) {
    const std::set<std::string> of_source(source_names.begin(), source_names.end());
    std::set<std::string> taken;
    for (std::size_t i = 0; i < definitions.size(); ++i) {
        const ComputedAxis& definition = definitions[i];
        Finding& finding = m_findings[i];
        finding.text = WrongName(definition.name);
        if (finding.text.empty() && taken.contains(definition.name)) {
            finding.text = "Another computed axis has the name " + Quoted(definition.name);
        }
        if (finding.text.empty() && taken.size() == kMostComputedAxes) {
            finding.text = "There are too many computed axes";
        }
        finding.kind = finding.text.empty() ? Finding::Kind::kNone : Finding::Kind::kName;
        if (finding.text.empty() && of_source.contains(definition.name)) {
            finding = {Finding::Kind::kTaken,
                       "The machine has an axis with the name " + Quoted(definition.name), 0};
        }
        if (finding.kind == Finding::Kind::kNone) {
            taken.insert(definition.name);
            m_names.push_back(definition.name);
            m_axes.push_back({definition, i, std::nullopt, {}});
        }
    }
}

void ComputedProgram::Connect(std::span<const std::string> source_names) {
    for (Axis& axis : m_axes) {
        Finding& finding = m_findings[axis.number];
        auto expression = Expression::Compile(axis.definition.expression);
        if (!expression) {
            finding = {Finding::Kind::kExpression, expression.Why().text,
                       static_cast<std::size_t>(expression.Why().code)};
            continue;
        }
        for (const Reference& reference : expression->References()) {
            const auto of_source = std::ranges::find(source_names, reference.name);
            if (of_source != source_names.end()) {
                axis.inputs.push_back({Input::From::kSource,
                                       static_cast<std::size_t>(of_source - source_names.begin())});
            } else if (const std::optional<std::size_t> other = Find(reference.name)) {
                axis.inputs.push_back({Input::From::kComputed, *other});
            } else {
                axis.inputs.push_back({});
                finding = {Finding::Kind::kUnknown,
                           "There is no axis " + Quoted(reference.name) +
                               ": the values are missing until there is",
                           0};
            }
        }
        axis.expression = std::move(*expression);
    }
}

void ComputedProgram::FindOrder() {
    std::vector<bool> is_done(m_axes.size());
    std::vector<std::size_t> path;
    for (std::size_t i = 0; i < m_axes.size(); ++i) {
        Visit(i, path, is_done);
    }
}

// As deep as there are axes at most, of which the number has an end.
void ComputedProgram::Visit(std::size_t axis, std::vector<std::size_t>& path,
                            std::vector<bool>& is_done) {
    if (is_done[axis]) {
        return;
    }
    if (const auto before = std::ranges::find(path, axis); before != path.end()) {
        RefuseCycle({before, path.end()});
        return;
    }
    path.push_back(axis);
    for (const Input& input : m_axes[axis].inputs) {
        if (input.from == Input::From::kComputed) {
            Visit(input.index, path, is_done);
        }
    }
    path.pop_back();
    is_done[axis] = true;
    m_order.push_back(axis);
}

void ComputedProgram::RefuseCycle(std::span<const std::size_t> cycle) {
    for (std::size_t i = 0; i < cycle.size(); ++i) {
        std::string text = Quoted(m_names[cycle[i]]) + " is computed of itself";
        if (cycle.size() > 1) {
            text += ", through " + Quoted(m_names[cycle[(i + 1) % cycle.size()]]);
        }
        Axis& axis = m_axes[cycle[i]];
        m_findings[axis.number] = {Finding::Kind::kExpression, text, 0};
        axis.expression.reset();
    }
}

std::optional<std::size_t> ComputedProgram::Find(const std::string& name) const {
    const auto found = std::ranges::find(m_names, name);
    return found == m_names.end()
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(found - m_names.begin()));
}

std::set<std::pair<std::string, std::string>> ComputedProgram::MeaningOf(std::size_t axis) const {
    std::set<std::pair<std::string, std::string>> meaning;
    const Needs needs = NeedsOf(axis);
    for (const std::size_t each : needs.order) {
        meaning.emplace(m_names[each],
                        m_axes[each].expression ? m_axes[each].definition.expression : "");
    }
    for (const std::size_t of_source : needs.source) {
        meaning.emplace("", std::to_string(of_source));
    }
    return meaning;
}

bool ComputedProgram::IsSame(std::size_t axis, const ComputedProgram& other) const {
    const std::optional<std::size_t> there = other.Find(m_names[axis]);
    return there && MeaningOf(axis) == other.MeaningOf(*there);
}

ComputedProgram::Needs ComputedProgram::NeedsOf(std::size_t axis) const {
    std::vector<std::size_t> before(m_axes.size());  // lines before those that `axis` is computed
    std::vector<bool> is_needed(m_axes.size());
    std::set<std::size_t> source;
    is_needed[axis] = true;
    Needs needs;
    // From those that are computed last: whoever needs an axis was looked at before it is.
    const std::vector<std::size_t> last_first(m_order.rbegin(), m_order.rend());
    for (const std::size_t computed : last_first) {
        const Axis& each = m_axes[computed];
        if (!is_needed[computed]) {
            continue;
        }
        needs.order.push_back(computed);
        for (std::size_t i = 0; each.expression && i < each.inputs.size(); ++i) {
            const Input& input = each.inputs[i];
            const std::size_t looks_back =
                each.expression->References()[i].use == Use::kValue ? 0 : 1;
            const std::size_t lines = before[computed] + looks_back;
            needs.lines_before = std::max(needs.lines_before, lines);
            if (input.from == Input::From::kSource) {
                source.insert(input.index);
            } else if (input.from == Input::From::kComputed) {
                is_needed[input.index] = true;
                before[input.index] = std::max(before[input.index], lines);
            }
        }
    }
    std::ranges::reverse(needs.order);
    needs.source.assign(source.begin(), source.end());
    return needs;
}

void ComputedProgram::Compute(std::size_t axis, std::span<const Column> source,
                              std::span<const Column> computed, double cycle_time,
                              std::size_t count, double* out, std::size_t stride) {
    static constexpr double kNothing = kNoValue;
    Axis& wanted = m_axes[axis];
    if (!wanted.expression) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i * stride] = kNoValue;
        }
        return;
    }
    m_columns.clear();
    for (const Input& input : wanted.inputs) {
        m_columns.push_back(input.from == Input::From::kSource ? source[input.index]
                            : input.from == Input::From::kComputed
                                ? computed[input.index]
                                : Column{&kNothing, 0, kNoValue});
    }
    wanted.expression->Compute(m_columns, cycle_time, count, out, stride);
}

}  // namespace wavo::computed
