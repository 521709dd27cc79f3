// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/method.h"

#include <string_view>
#include <utility>
#include <vector>

namespace service {

/// How a task's parameter is read, checked and kept.
enum class FieldKind { Title, Text, Integer, Flag, Date, Time, Folder, Context, Parent };

/// A parameter of `addTask` and `editTask`. Its name is the column's as well.
struct TaskField {
    std::string_view name;
    FieldKind kind;
    std::size_t longest = 0; ///< bytes of a text
};

constexpr std::array<TaskField, 19> taskFields{{
    {"title", FieldKind::Title},
    {"tag", FieldKind::Text, 16'384},
    {"folder", FieldKind::Folder},
    {"context", FieldKind::Context},
    {"goal", FieldKind::Integer},
    {"parent", FieldKind::Parent},
    {"startdate", FieldKind::Date},
    {"starttime", FieldKind::Time},
    {"duedate", FieldKind::Date},
    {"duetime", FieldKind::Time},
    {"reminder", FieldKind::Integer},
    {"repeat", FieldKind::Integer},
    {"rep_advanced", FieldKind::Text, 1024},
    {"status", FieldKind::Integer},
    {"star", FieldKind::Flag},
    {"priority", FieldKind::Integer},
    {"length", FieldKind::Integer},
    {"timer", FieldKind::Integer},
    {"note", FieldKind::Text, 512 * 1024},
}};

/// Columns of a task with the values that they are to get.
using TaskValues = std::vector<std::pair<std::string_view, Value>>;

/// The fields that the request brings. Throws Refusal where a value cannot be read.
[[nodiscard]] TaskValues taskValuesOf(Call &call);

} // namespace service
