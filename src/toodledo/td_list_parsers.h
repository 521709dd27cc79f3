// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/gtd_context.h"
#include "toodledo/gtd_folder.h"
#include "toodledo/gtd_note.h"
#include "toodledo/td_parser.h"

namespace toodledo {

/// Reads the reply to `getFolders`.
class TDFoldersParser final : public TDListParser<GtdFolder>
{
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;

    std::optional<GtdFolder> m_current;
};

/// Reads the reply to `getContexts`.
class TDContextsParser final : public TDListParser<GtdContext>
{
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;

    std::optional<GtdContext> m_current;
};

/// Reads the reply to `getNotes`.
class TDNotesParser final : public TDListParser<GtdNote>
{
    void didStartElement(std::string_view name, const Attributes &attributes) override;
    void didEndElement(std::string_view name, std::string_view text) override;

    std::optional<GtdNote> m_current;
};

} // namespace toodledo
