// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_api_core.h"
#include "toodledo/td_list_parsers.h"

namespace toodledo {

namespace {

constexpr bool keyAsHeld = false;

constexpr Operation list{"getNotes", "notes", {operationFailed, Wording::NotAuthenticated, "getting notes."},
    {connectionFailed}, {operationFailed, Wording::BadResult, "getting notes."}};
constexpr Operation add{"addNote", "added", {operationFailed, Wording::NotAuthenticated, "adding note."},
    {connectionFailed}, {operationFailed, Wording::BadResult, "adding note."}, keyAsHeld};
// The service edits a note when `addNote` brings an id.
constexpr Operation edit{"addNote", "success", {operationFailed, Wording::NotAuthenticated, "editing note."},
    {connectionFailed}, {operationFailed, Wording::BadResult, "editing note."}, keyAsHeld};
constexpr Operation remove{"deleteNote", "success", {operationFailed, Wording::NotAuthenticated, "deleting note."},
    {connectionFailed}, {operationFailed, Wording::BadResult, "deleting note."}};

bool isUsable(const GtdNote &note)
{
    return canBeSent(note.uid) && note.text && note.title && note.folder != -1;
}

void appendContents(Parameters &parameters, const GtdNote &note)
{
    parameters.emplace_back("title", *note.title);
    parameters.emplace_back("text", *note.text);
    parameters.emplace_back("folder", decimalText(note.folder));
    parameters.emplace_back("private", flagText(note.isPrivate));
}

} // namespace

std::optional<std::vector<GtdNote>> TDApi::getNotes(TDError *error)
{
    return performForList(list, {}, TDNotesParser(), error);
}

std::int64_t TDApi::addNote(const GtdNote &note, TDError *error)
{
    if (!isUsable(note)) {
        complain({.code = unusableItem}, error);
        return -1;
    }
    Parameters parameters;
    appendContents(parameters, note);
    const auto id = performForValue(add, "added", parameters, error);
    return id ? integerOf(*id) : -1;
}

bool TDApi::editNote(const GtdNote &note, TDError *error)
{
    if (!isUsable(note)) {
        complain({.code = unusableItem}, error);
        return false;
    }
    Parameters parameters{{"id", decimalText(note.uid)}};
    appendContents(parameters, note);
    return performForValue(edit, "success", parameters, error).has_value();
}

bool TDApi::deleteNote(const GtdNote &note, TDError *error)
{
    if (!isUsable(note)) {
        complain({.code = unusableItem}, error);
        return false;
    }
    return performForValue(remove, "success", {{"id", decimalText(note.uid)}}, error).has_value();
}

} // namespace toodledo
