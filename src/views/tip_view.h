// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/settings.h"
#include "viewcontrollers/source_item.h"

#include <QWidget>

class QLabel;
class QToolButton;

namespace views {

/// What stands in place of an empty task list: a picture and a few words on this kind of list. Each kind can be closed
/// for good; the place then stays empty.
class TipPlaceHolderView final : public QWidget
{
    Q_OBJECT

public:
    /// `settings` must outlive the view.
    explicit TipPlaceHolderView(foundation::Settings &settings, QWidget *parent = nullptr);

    void setTipType(viewcontrollers::TipType type);
    /// Words that stand there whatever the kind of list, such as that a search found nothing.
    void setMessage(const QString &iconName, const QString &text);

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void closeButtonClicked();
    void fill(const QString &iconName, const QString &text);

    foundation::Settings &m_settings;
    std::string m_defaultsKey;
    QWidget *m_content = nullptr;
    QLabel *m_icon = nullptr;
    QLabel *m_explanatoryText = nullptr;
    QToolButton *m_closeButton = nullptr;
};

/// The text of a tip by its key; a key without one gets a general sentence.
[[nodiscard]] QString textForTipName(const QString &name);

} // namespace views
