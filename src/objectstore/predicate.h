// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"
#include "objectstore/value.h"

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

class EntityDescription;
class ManagedObject;
struct PredicateNode;

/// Why text is not a predicate: a sentence, and where in the text (in bytes).
struct ParseError {
    std::string message;
    std::size_t position = 0;
};

/// A constant that a predicate compares with: a value, or a list of values for IN and BETWEEN.
using Argument = std::variant<Value, std::vector<Value>>;
using Variables = std::map<std::string, Argument, std::less<>>;

/// A question about objects: one immutable tree that evaluates in memory, compiles to SQL, prints back to text and
/// archives.
///
/// Copies share the tree, so a Predicate is as cheap to pass as a pointer. Any thread may use it. Both evaluators give
/// the same answers: nil equals only nil; an ordering or a text test with nil is false; text compares byte by byte, or
/// by Unicode case folding under `[c]`; a key path through a to-many relationship asks for any member unless ALL is
/// written. A tree that is read is at most 64 deep and has at most 4,096 nodes; one that is joined from such trees may
/// be larger, and one beyond eight times that throws std::length_error.
class Predicate
{
public:
    /// The predicate that is true of every object.
    Predicate();

    /// Reads format text such as "(title contains [c] %@) && complete == NO"; each `%@`, `%i`, `%d` takes the next
    /// argument, `%K` the next argument as a key path, `$NAME` stays a variable.
    [[nodiscard]] static tl::expected<Predicate, ParseError> parse(
        std::string_view format, std::span<const Argument> arguments = {});
    [[nodiscard]] static tl::expected<Predicate, ParseError> parse(
        std::string_view format, std::initializer_list<Argument> arguments);

    /// The same for a text of the program's own that is known to be right; a mistake in it throws std::logic_error.
    [[nodiscard]] static Predicate format(std::string_view format, std::initializer_list<Argument> arguments = {});

    [[nodiscard]] static Predicate conjunction(std::vector<Predicate> parts);
    [[nodiscard]] static Predicate disjunction(std::vector<Predicate> parts);
    [[nodiscard]] static Predicate negation(Predicate part);

    /// The predicate with its variables replaced; one that is not in `variables` stays.
    [[nodiscard]] Predicate withVariables(const Variables &variables) const;

    [[nodiscard]] bool isAlwaysTrue() const;

    /// Whether `object`, which is not deleted, answers.
    [[nodiscard]] bool matches(const ManagedObject &object) const;

    /// Text that `parse` reads back as the same tree; records are printed as `OBJECT("Entity", key)`.
    [[nodiscard]] std::string text() const;

    /// Whether some key path leads through a relationship to another record's properties, or through a to-many one, so
    /// that the answer may hang on changes of other objects.
    [[nodiscard]] bool followsRelationships(const EntityDescription &entity) const;

    /// The first key path of the tree that `entity` does not have, as a sentence; nothing when all resolve.
    [[nodiscard]] std::optional<std::string> problemWith(const EntityDescription &entity) const;

    friend bool operator==(const Predicate &left, const Predicate &right);

    [[nodiscard]] const PredicateNode &root() const { return *m_root; }
    [[nodiscard]] const std::shared_ptr<const PredicateNode> &shared() const { return m_root; }
    explicit Predicate(std::shared_ptr<const PredicateNode> root);

private:
    std::shared_ptr<const PredicateNode> m_root;
};

/// A predicate as a condition for a WHERE clause over the table of an entity, and the values of its parameters in
/// order.
struct SqlCondition {
    std::string sql;
    std::vector<Value> parameters;
    bool tooDeep = false; ///< SQLite's parser would give up on it; the predicate has to be asked in memory
};

/// Compiles `predicate` for `entity`, whose table is known as `alias` in the statement. The functions that the
/// condition may call are those that `installPredicateFunctions` gives a connection. Fails where a key path is unknown.
[[nodiscard]] foundation::Result<SqlCondition> compileToSql(
    const Predicate &predicate, const EntityDescription &entity, std::string_view alias = "t");

/// `predicate` in a form that later versions read; `fromArchive` refuses what it does not know, whatever the bytes.
[[nodiscard]] Bytes archive(const Predicate &predicate);
[[nodiscard]] foundation::Result<Predicate> fromArchive(std::span<const std::byte> bytes);

} // namespace objectstore

struct sqlite3;

namespace objectstore {

/// Gives a connection the functions (text folding and matching) that compiled conditions call.
void installPredicateFunctions(sqlite3 *connection);

} // namespace objectstore
