// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "objectstore/managed_object.h"
#include "objectstore/predicate.h"
#include "objectstore/row_test.h"

#include <memory>
#include <optional>

namespace objectstore {

/// A predicate made ready to be asked of many objects of one entity: key paths are resolved and fixed texts folded
/// once. Belongs to the thread of the objects; a key path that the entity does not have reads as nothing.
class PredicateEvaluator
{
public:
    PredicateEvaluator(const Predicate &predicate, const EntityDescription &entity);
    ~PredicateEvaluator();

    [[nodiscard]] bool matches(const ManagedObject &object) const;
    /// Those of many objects that answer, in their order; quicker than one question after another.
    [[nodiscard]] std::vector<ManagedObject *> matching(std::span<ManagedObject *const> objects) const;

private:
    struct Node;
    struct Operand;
    static std::unique_ptr<Node> prepare(const PredicateNode &node, const EntityDescription &entity);

    std::shared_ptr<const PredicateNode> m_predicate; ///< the prepared nodes point into it
    std::unique_ptr<Node> m_root;
    std::optional<RowTest> m_rowTest; ///< where the predicate asks only columns: the quicker way
};

} // namespace objectstore
