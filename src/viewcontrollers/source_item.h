// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <array>

namespace viewcontrollers {

/// What a row of the source list stands for.
enum class SourceKind {
    Today,
    Inbox,
    Location,
    Trash,
    FoldersGroup,
    ContextsGroup,
    SmartFoldersGroup,
    ArchivedFoldersGroup,
    Folder,
    Context,
    SmartFolder,
    ArchivedFolder,
    None
};

/// The placeholders for an empty task list, one for each kind of list.
enum class TipType { Today, Inbox, Location, Trash, Folder, Context, SmartFolder };

/// One of the eight rows that are always there. Its index is its place at the top level.
struct TopLevelItem {
    SourceKind kind;
    const char *key; ///< the text in English, which is also the key of its translation
    const char *icon;
    SourceKind childKind; ///< `None` for a row without children
    TipType tip;
};

inline constexpr std::array<TopLevelItem, 8> topLevelItems{{
    {SourceKind::Today, QT_TRANSLATE_NOOP("SourceList", "Today"), "today", SourceKind::None, TipType::Today},
    {SourceKind::Inbox, QT_TRANSLATE_NOOP("SourceList", "Inbox"), "inbox", SourceKind::None, TipType::Inbox},
    {SourceKind::Location, QT_TRANSLATE_NOOP("SourceList", "Location"), "location", SourceKind::None,
        TipType::Location},
    {SourceKind::Trash, QT_TRANSLATE_NOOP("SourceList", "Trash"), "trash", SourceKind::None, TipType::Trash},
    {SourceKind::FoldersGroup, QT_TRANSLATE_NOOP("SourceList", "FOLDERS"), "", SourceKind::Folder, TipType::Folder},
    {SourceKind::ContextsGroup, QT_TRANSLATE_NOOP("SourceList", "CONTEXTS"), "", SourceKind::Context, TipType::Context},
    {SourceKind::SmartFoldersGroup, QT_TRANSLATE_NOOP("SourceList", "SMART FOLDERS"), "", SourceKind::SmartFolder,
        TipType::SmartFolder},
    {SourceKind::ArchivedFoldersGroup, QT_TRANSLATE_NOOP("SourceList", "ARCHIVED FOLDERS"), "",
        SourceKind::ArchivedFolder, TipType::Folder},
}};

/// What the records below the groups have in common, by kind.
struct RecordKind {
    SourceKind kind;
    const char *entity;
    const char *predicate; ///< which of them are shown
    const char *icon;
    TipType tip;
};

inline constexpr std::array<RecordKind, 4> recordKinds{{
    {SourceKind::Folder, "Folders", "markedForDeletion=NO && archived=NO", "folder", TipType::Folder},
    {SourceKind::Context, "Contexts", "markedForDeletion=NO", "context", TipType::Context},
    {SourceKind::SmartFolder, "SmartFolder", "TRUEPREDICATE", "smartfolder", TipType::SmartFolder},
    {SourceKind::ArchivedFolder, "Folders", "markedForDeletion=NO && archived=YES", "folder", TipType::Folder},
}};

[[nodiscard]] constexpr const RecordKind &recordKind(SourceKind kind)
{
    for (const RecordKind &candidate : recordKinds) {
        if (candidate.kind == kind)
            return candidate;
    }
    return recordKinds.front();
}

} // namespace viewcontrollers
