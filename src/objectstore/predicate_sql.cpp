// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectstore/connection.h"
#include "objectstore/predicate_node.h"

#include <algorithm>

namespace objectstore {

namespace {

struct Refusal {
    std::string sentence;
};

constexpr std::array<std::string_view, 6> comparisonSymbols{" IS ", " IS NOT ", " < ", " <= ", " > ", " >= "};

/// Builds a condition that is true of exactly the rows of which the tree is true in memory. SQL's NULL, which is
/// neither true nor false, is turned into false wherever a condition is turned round; elsewhere it may stand, so that
/// indexes serve.
class Compiler
{
public:
    Compiler(const EntityDescription &entity, SqlCondition &condition) : m_entity(entity), m_condition(condition) { }

    std::string compileRoot(const PredicateNode &node, const std::string &alias)
    {
        m_narrow = isNarrow(node);
        return compile(node, alias, false);
    }

private:
    std::string compile(const PredicateNode &node, const std::string &alias, bool strict)
    {
        switch (node.kind) {
        case PredicateNode::Kind::True:
            return "1";
        case PredicateNode::Kind::False:
            return "0";
        case PredicateNode::Kind::Not:
            return "NOT " + compile(*node.children[0], alias, true);
        case PredicateNode::Kind::And:
        case PredicateNode::Kind::Or:
            return chain(node.children, node.kind == PredicateNode::Kind::And ? " AND " : " OR ", alias, strict);
        case PredicateNode::Kind::Comparison:
            return comparison(node, alias, strict);
        }
        return "0";
    }

    /// Whether an index leads to the rows by the value of one column that is no flag, such as a folder's tasks.
    [[nodiscard]] bool isNarrow(const PredicateNode &node) const
    {
        if (node.kind == PredicateNode::Kind::And)
            return std::any_of(
                node.children.begin(), node.children.end(), [this](const auto &child) { return isNarrow(*child); });
        if (node.kind != PredicateNode::Kind::Comparison || node.test != Operator::Equal || !node.right.isConstant())
            return false;
        const Property *column = m_entity.property(node.left.name);
        const auto &indexes = m_entity.indexes();
        return node.left.kind == Expression::Kind::KeyPath && column
            && !(column->isAttribute() && column->type == AttributeType::Boolean)
            && std::any_of(
                indexes.begin(), indexes.end(), [&](const auto &index) { return index.front() == column->name; });
    }

    /// Most flags of most rows are off. SQLite takes any equality for a narrow choice and would walk through nearly the
    /// whole table by the flag's index; the sign in front of the column leaves the choice to the other conditions.
    /// Where these are narrow, the flag may help them as a further column of their index.
    [[nodiscard]] bool isFlagThatIsOff(const PredicateNode &node, const ResolvedPath &left) const
    {
        if (m_narrow || node.test != Operator::Equal || left.steps.size() != 1 || !node.right.isConstant())
            return false;
        const Property &property = *left.steps.front();
        return property.isAttribute() && property.type == AttributeType::Boolean
            && sameValue(node.right.constantValue(), false);
    }

    /// Halves in parentheses rather than one long row, which SQLite would nest as deep as it is long.
    std::string chain(
        std::span<const PredicateNode::Pointer> children, std::string_view word, const std::string &alias, bool strict)
    {
        if (children.size() == 1)
            return compile(*children[0], alias, strict);
        const std::size_t half = (children.size() + 1) / 2;
        std::string sql = "(" + chain(children.first(half), word, alias, strict);
        sql += word;
        return sql + chain(children.subspan(half), word, alias, strict) + ")";
    }

    std::string comparison(const PredicateNode &node, const std::string &alias, bool strict)
    {
        const ResolvedPath left = pathOf(node.left);
        const ResolvedPath right = pathOf(node.right);
        m_plainKeys = isNumber(node.left) && isNumber(node.right);
        if (left.isMany() && right.isMany())
            throw Refusal{"\"" + node.left.name + "\" and \"" + node.right.name + "\" both stand for several values."};
        if (!left.isMany() && !right.isMany()) {
            const std::string a = (isFlagThatIsOff(node, left) ? "+" : "") + value(node.left, alias);
            return test(node, a, strict, [&] { return value(node.right, alias); });
        }
        const bool all = node.modifier == PredicateNode::Modifier::All;
        const bool leftMany = left.isMany();
        // the parameters of the outer value come first where it stands first in the text, so it is compiled in place
        const std::string exists = along(leftMany ? left : right, 0, alias, [&](const std::string &leaf) {
            const std::string a = leftMany ? leaf : value(node.left, alias);
            const std::string condition
                = test(node, a, strict || all, [&] { return leftMany ? value(node.right, alias) : leaf; });
            return all ? "NOT " + condition : condition;
        });
        return all ? "NOT " + exists : exists;
    }

    template <typename Right>
    std::string test(const PredicateNode &node, const std::string &a, bool strict, const Right &right)
    {
        const auto safe = [strict](std::string sql) { return strict ? "ifnull(" + sql + ", 0)" : "(" + sql + ")"; };
        const int options = node.options.bits();
        const auto fold = [options](const std::string &sql) {
            return options == 0 ? sql : "text_fold(" + sql + ", " + std::to_string(options) + ")";
        };
        switch (node.test) {
        case Operator::Equal:
        case Operator::NotEqual:
            return "(" + fold(a) + std::string(comparisonSymbols[static_cast<std::size_t>(node.test)]) + fold(right())
                + ")";
        case Operator::Less:
        case Operator::LessOrEqual:
        case Operator::Greater:
        case Operator::GreaterOrEqual:
            return safe(fold(a) + std::string(comparisonSymbols[static_cast<std::size_t>(node.test)]) + fold(right()));
        case Operator::In:
            return membership(node, fold(a), fold);
        case Operator::Between:
            return between(node, fold(a), fold, safe);
        default:
            return "text_test(" + a + ", " + right() + ", " + std::to_string(static_cast<int>(node.test)) + ", "
                + std::to_string(options) + ")";
        }
    }

    template <typename Fold> std::string membership(const PredicateNode &node, const std::string &a, const Fold &fold)
    {
        requireList(node.right);
        std::string items;
        bool nothing = false;
        for (const Expression &part : node.right.parts) {
            if (isNil(part.constantValue()))
                nothing = true;
            else
                items += (items.empty() ? "" : ", ") + fold(parameter(part));
        }
        if (items.empty())
            return "(" + a + (nothing ? " IS NULL)" : " IN ())");
        if (!nothing)
            return "ifnull(" + a + " IN (" + items + "), 0)";
        // what was compiled for `a` may hold parameters and so can stand only once
        return "ifnull(" + a + " IN (" + items + "), 1)";
    }

    template <typename Fold, typename Safe>
    std::string between(const PredicateNode &node, const std::string &a, const Fold &fold, const Safe &safe)
    {
        requireList(node.right);
        if (node.right.parts.size() != 2)
            throw Refusal{"BETWEEN needs two values."};
        const std::string low = fold(parameter(node.right.parts[0]));
        const std::string high = fold(parameter(node.right.parts[1]));
        return safe(a + " BETWEEN " + low + " AND " + high);
    }

    static void requireList(const Expression &expression)
    {
        if (expression.kind == Expression::Kind::Variable)
            throw Refusal{"The variable $" + expression.name + " has no value."};
    }

    ResolvedPath pathOf(const Expression &expression)
    {
        if (expression.kind != Expression::Kind::KeyPath)
            return {};
        ResolvedPath path = resolve(expression.name, m_entity);
        if (!path.problem.empty())
            throw Refusal{path.problem};
        return path;
    }

    /// A value as SQL without affinity, so that nothing is converted before it is compared.
    std::string value(const Expression &expression, const std::string &alias)
    {
        switch (expression.kind) {
        case Expression::Kind::KeyPath: {
            const ResolvedPath path = pathOf(expression);
            if (path.isMany())
                throw Refusal{"\"" + expression.name + "\" stands for several values and cannot be calculated with."};
            return single(path, 0, alias);
        }
        case Expression::Kind::Self:
            return key(alias);
        case Expression::Kind::Variable:
            throw Refusal{"The variable $" + expression.name + " has no value."};
        case Expression::Kind::List:
            throw Refusal{"A list can stand only after IN or BETWEEN."};
        case Expression::Kind::Arithmetic:
            return calculation(expression, alias);
        default:
            return parameter(expression);
        }
    }

    std::string parameter(const Expression &expression)
    {
        m_condition.parameters.push_back(copy(expression.constantValue()));
        return "?";
    }

    std::string calculation(const Expression &expression, const std::string &alias)
    {
        const std::string left = operand(expression.parts[0], alias);
        const std::string right = operand(expression.parts[1], alias);
        return "(" + left + " " + expression.arithmetic + " " + right + ")";
    }

    /// An operand as a real number, or NULL where it is no number.
    std::string operand(const Expression &expression, const std::string &alias)
    {
        if (expression.kind == Expression::Kind::Arithmetic)
            return calculation(expression, alias);
        if (expression.kind == Expression::Kind::KeyPath) {
            const ResolvedPath path = pathOf(expression);
            const Property &last = *path.steps.back();
            const bool number = path.count || last.isToOne()
                || (last.isAttribute() && last.type != AttributeType::Text && last.type != AttributeType::Binary);
            return number ? "+CAST(" + value(expression, alias) + " AS REAL)" : "NULL";
        }
        if (expression.kind == Expression::Kind::Self)
            return "+CAST(" + value(expression, alias) + " AS REAL)";
        if (!expression.isConstant())
            return value(expression, alias);
        const ValueView constant = expression.constantValue();
        if (isNil(constant) || std::holds_alternative<std::string_view>(constant)
            || std::holds_alternative<std::span<const std::byte>>(constant))
            return "NULL";
        m_condition.parameters.emplace_back(toDouble(constant));
        return "?";
    }

    /// Whether an expression never stands for text.
    bool isNumber(const Expression &expression)
    {
        switch (expression.kind) {
        case Expression::Kind::KeyPath: {
            const ResolvedPath path = pathOf(expression);
            const Property &last = *path.steps.back();
            return path.count || !last.isAttribute()
                || (last.type != AttributeType::Text && last.type != AttributeType::Binary);
        }
        case Expression::Kind::List:
            return std::all_of(expression.parts.begin(), expression.parts.end(),
                [this](const Expression &part) { return isNumber(part); });
        default:
            return !std::holds_alternative<std::string_view>(expression.constantValue());
        }
    }

    /// A table's key. It alone has an affinity, which would turn text that it is compared with into a number; where
    /// that can be, a plus sign takes the affinity away, and with it the use of the index.
    [[nodiscard]] std::string key(const std::string &alias) const { return (m_plainKeys ? "" : "+") + alias + "._key"; }

    /// A table's key, to be compared with a column that points at it. Such a column has no affinity: next to a key,
    /// which has one, it would be converted first, and SQLite would read all of it for each row instead of asking its
    /// index.
    static std::string target(const std::string &alias) { return "+" + alias + "._key"; }

    std::string newAlias() { return "x" + std::to_string(++m_aliases); }

    /// A path through to-one relationships as one value; NULL where it meets nothing.
    std::string single(const ResolvedPath &path, std::size_t step, const std::string &alias)
    {
        const Property &property = *path.steps[step];
        if (step + 1 == path.steps.size())
            return path.count ? memberCount(property, alias) : alias + "." + identifier(property.name);
        const std::string inner = newAlias();
        const std::string value = single(path, step + 1, inner);
        return "(SELECT " + value + " FROM " + identifier(property.destination->name()) + " " + inner + " WHERE "
            + inner + "._key = " + alias + "." + identifier(property.name) + ")";
    }

    std::string memberCount(const Property &property, const std::string &alias)
    {
        if (!property.joinTable.empty()) {
            const std::string inner = newAlias();
            return "(SELECT count(*) FROM " + identifier(property.joinTable) + " " + inner + " WHERE " + inner + "."
                + property.joinOwner + " = " + target(alias) + ")";
        }
        const std::string inner = newAlias();
        return "(SELECT count(*) FROM " + identifier(property.destination->name()) + " " + inner + " WHERE " + inner
            + "." + identifier(property.inverse->name) + " = " + target(alias) + ")";
    }

    /// "EXISTS" over every value that the path leads to, of which `leaf` makes the condition.
    template <typename Leaf>
    std::string along(const ResolvedPath &path, std::size_t step, const std::string &alias, const Leaf &leaf)
    {
        const Property &property = *path.steps[step];
        const bool last = step + 1 == path.steps.size();
        if (last && path.count)
            return leaf(memberCount(property, alias));
        if (last && !property.isToMany())
            return leaf(alias + "." + identifier(property.name));
        const std::string inner = newAlias();
        std::string from = identifier(property.destination->name()) + " " + inner;
        std::string link = inner + "._key = " + alias + "." + identifier(property.name);
        if (property.isToMany() && !property.joinTable.empty()) {
            const std::string join = newAlias();
            from = identifier(property.joinTable) + " " + join + " JOIN " + from + " ON " + inner + "._key = " + join
                + "." + property.joinMember;
            link = join + "." + property.joinOwner + " = " + target(alias);
        } else if (property.isToMany()) {
            link = inner + "." + identifier(property.inverse->name) + " = " + target(alias);
        }
        const std::string condition = last ? leaf(key(inner)) : along(path, step + 1, inner, leaf);
        return "EXISTS (SELECT 1 FROM " + from + " WHERE " + link + " AND " + condition + ")";
    }

    const EntityDescription &m_entity;
    SqlCondition &m_condition;
    int m_aliases = 0;
    bool m_plainKeys = true;
    bool m_narrow = false;
};

/// Whether SQLite's parser, which up to version 3.45 keeps at most a hundred things open, may give up on `sql`.
bool isTooDeep(std::string_view sql)
{
    constexpr int capacity = 80; // some are left for the statement around the condition
    std::vector<int> open;
    int depth = 0;
    for (std::size_t i = 0; i < sql.size(); ++i) {
        if (sql[i] == '(') {
            // a query holds its clauses open, a function its name, and any parenthesis the operator before it
            open.push_back(sql.substr(i + 1).starts_with("SELECT") ? 10 : 4);
            depth += open.back();
        } else if (sql[i] == ')') {
            depth -= open.back();
            open.pop_back();
        }
        if (depth > capacity)
            return true;
    }
    return false;
}

} // namespace

foundation::Result<SqlCondition> compileToSql(
    const Predicate &predicate, const EntityDescription &entity, std::string_view alias)
{
    SqlCondition condition;
    try {
        condition.sql = Compiler(entity, condition).compileRoot(predicate.root(), std::string(alias));
    } catch (const Refusal &refusal) {
        return foundation::Failure({"ObjectStoreErrorDomain", static_cast<int>(StoreErrorCode::BadRequest),
            refusal.sentence, predicate.text()});
    }
    condition.tooDeep = isTooDeep(condition.sql);
    return condition;
}

} // namespace objectstore
