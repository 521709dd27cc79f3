// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>
#include <QStringList>
#include <QWidget>
#include <functional>

class QStringListModel;

namespace views {

/// Words as small pills that are typed one after the other; what is typed is completed from what there is. A comma or
/// Return makes a pill of the text, Backspace in the empty field takes the last one back.
class TokenField final : public QWidget
{
    Q_OBJECT

public:
    /// Words that begin with the text.
    using Completions = std::function<QStringList(const QString &)>;

    explicit TokenField(QWidget *parent = nullptr);

    void setCompletions(Completions completions) { m_completions = std::move(completions); }
    [[nodiscard]] const QStringList &tokens() const { return m_tokens; }
    void setTokens(const QStringList &tokens);
    /// Makes a pill of what is being typed.
    void commit();
    [[nodiscard]] QLineEdit *edit() const { return m_edit; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void tokensEdited(const QStringList &tokens);

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void rebuild();
    int arrange(int width, bool isMoving) const;
    void remove(const QString &token);
    void complete(const QString &text);

    Completions m_completions;
    QStringList m_tokens;
    QList<QWidget *> m_pills;
    QLineEdit *m_edit = nullptr;
    QStringListModel *m_words = nullptr;
};

} // namespace views
