// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/log.h"
#include "toodledo/td_api_core.h"
#include "toodledo/td_list_parsers.h"

#include <exception>
#include <typeinfo>

namespace toodledo {

namespace {

constexpr int notDeleted = 310;
constexpr int notEdited = 410;

constexpr Operation list{"getFolders", "folders", {operationFailed, Wording::NotAuthenticated, "getting folders."},
    {connectionFailed}, {operationFailed, Wording::BadResultAndError, "getting folders."}};
constexpr Operation add{"addFolder", "added", {operationFailed, Wording::NotAuthenticated, "adding folder."},
    {operationFailed, Wording::BadResultAndError, "adding folder."}, {}};
constexpr Operation edit{"editFolder", "success", {operationFailed}, {operationFailed}, {notEdited}};
constexpr Operation remove{"deleteFolder", "success", {operationFailed, Wording::NotAuthenticated, "deleting folder."},
    {operationFailed, Wording::BadResult, "deleting folder."}, {notDeleted}};

} // namespace

std::optional<std::vector<GtdFolder>> TDApi::getFolders(TDError *error)
{
    TDFoldersParser parser;
    auto folders = performForList(list, {}, parser, error);
    // A bare refusal is nothing, without an error; `lastReplyWasRefused` tells it.
    if (folders && folders->empty() && !parser.errorTexts().empty()) {
        foundation::logLine("Result from Toodledo: " + parser.errorTexts().front());
        return std::nullopt;
    }
    return folders;
}

std::int64_t TDApi::addFolder(const GtdFolder &folder, TDError *error)
{
    if (!folder.title) {
        complain({.code = unusableItem}, error);
        return -1;
    }
    try {
        Parameters parameters{{"title", *folder.title}};
        if (folder.isPrivate)
            parameters.emplace_back("private", flagText(true));
        if (folder.archived)
            parameters.emplace_back("archived", flagText(true));
        static_cast<void>(performForValue(add, "added", parameters, error));
    } catch (const std::exception &exception) {
        foundation::logLine("Exception caught adding a folder on Toodledo: " + std::string(typeid(exception).name())
            + ". Reason: " + exception.what() + ".");
    }
    return -1;
}

bool TDApi::editFolder(const GtdFolder &folder, TDError *error)
{
    if (!canBeSent(folder.folderId) || !folder.title) {
        complain({.code = unusableItem}, error);
        return false;
    }
    const Parameters parameters{{"id", decimalText(folder.folderId)}, {"title", *folder.title},
        {"private", flagText(folder.isPrivate)}, {"archived", flagText(folder.archived)}};
    return performForValue(edit, "success", parameters, error).has_value();
}

bool TDApi::deleteFolder(const GtdFolder &folder, TDError *error)
{
    if (!canBeSent(folder.folderId)) {
        complain({.code = unusableItem}, error);
        return false;
    }
    return performForValue(remove, "success", {{"id", decimalText(folder.folderId)}}, error).has_value();
}

} // namespace toodledo
