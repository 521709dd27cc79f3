// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/instant.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace objectstore {

class EntityDescription;
using foundation::Instant;

/// Names one object for ever: its entity and its key. A key is chosen when the object is inserted and never changes;
/// keys grow with time, so key order is the order of insertion.
struct ObjectID {
    const EntityDescription *entity = nullptr;
    std::int64_t key = 0;

    explicit operator bool() const { return key != 0; }
    friend bool operator==(const ObjectID &, const ObjectID &) = default;
};

using Bytes = std::vector<std::byte>;

/// One value of an attribute or of a predicate: nothing, a number, an instant, UTF-8 text, bytes or a record.
using Value = std::variant<std::monostate, bool, std::int64_t, double, Instant, std::string, Bytes, ObjectID>;

/// A value that is looked at where it lies; it holds as long as its object is neither changed nor let go.
using ValueView = std::variant<std::monostate, bool, std::int64_t, double, Instant, std::string_view,
    std::span<const std::byte>, ObjectID>;

[[nodiscard]] inline bool isNil(const ValueView &value)
{
    return value.index() == 0;
}
[[nodiscard]] inline bool isNil(const Value &value)
{
    return value.index() == 0;
}

[[nodiscard]] ValueView view(const Value &value);
[[nodiscard]] Value copy(const ValueView &value);

/// Conversions that read an absent value as 0, NO or "", a number as any number type and anything else as absent.
[[nodiscard]] std::int64_t toInteger(const ValueView &value);
[[nodiscard]] double toDouble(const ValueView &value);
[[nodiscard]] bool toBoolean(const ValueView &value);
[[nodiscard]] std::string_view toText(const ValueView &value);

/// The same kind of value with the same content; a boolean equals the number 0 or 1.
[[nodiscard]] bool sameValue(const ValueView &left, const ValueView &right);

} // namespace objectstore

template <> struct std::hash<objectstore::ObjectID> {
    std::size_t operator()(const objectstore::ObjectID &id) const noexcept
    {
        return static_cast<std::size_t>(id.key) * 0x9e3779b97f4a7c15ULL ^ reinterpret_cast<std::size_t>(id.entity);
    }
};
