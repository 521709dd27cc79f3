// SPDX-License-Identifier: GPL-3.0-or-later
#include "toodledo/td_api_core.h"
#include "toodledo/td_list_parsers.h"

namespace toodledo {

namespace {

constexpr int notAdded = 510;
constexpr int notDeleted = 520;
constexpr int notEdited = 530;

constexpr Operation list{"getContexts", "contexts", {operationFailed, Wording::NotAuthenticated, "getting contexts."},
    {connectionFailed}, {operationFailed, Wording::BadResult, "getting contexts."}};
constexpr Operation add{"addContext", "added", {operationFailed, Wording::NotAuthenticated, "adding context."},
    {operationFailed, Wording::BadResult, "adding context."}, {notAdded}};
constexpr Operation edit{"editContext", "success", {operationFailed}, {operationFailed}, {notEdited}};
constexpr Operation remove{"deleteContext", "success",
    {operationFailed, Wording::NotAuthenticated, "deleting context."},
    {operationFailed, Wording::BadResult, "deleting context."}, {notDeleted}};

} // namespace

std::optional<std::vector<GtdContext>> TDApi::getContexts(TDError *error)
{
    return performForList(list, {}, TDContextsParser(), error);
}

std::int64_t TDApi::addContext(const GtdContext &context, TDError *error)
{
    if (!context.title) {
        complain({.code = unusableItem}, error);
        return -1;
    }
    const auto id = performForValue(add, "added", {{"title", *context.title}}, error);
    return id ? integerOf(*id) : -1;
}

bool TDApi::editContext(const GtdContext &context, TDError *error)
{
    if (!canBeSent(context.contextId) || !context.title) {
        complain({.code = unusableItem}, error);
        return false;
    }
    const Parameters parameters{{"id", decimalText(context.contextId)}, {"title", *context.title}};
    return performForValue(edit, "success", parameters, error).has_value();
}

bool TDApi::deleteContext(const GtdContext &context, TDError *error)
{
    if (!canBeSent(context.contextId)) {
        complain({.code = unusableItem}, error);
        return false;
    }
    return performForValue(remove, "success", {{"id", decimalText(context.contextId)}}, error).has_value();
}

} // namespace toodledo
