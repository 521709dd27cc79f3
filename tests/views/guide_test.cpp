// SPDX-License-Identifier: GPL-3.0-or-later
// The guide in docs/guide says what the program does.
#include "views/command_set.h"

#include <QDir>
#include <QRegularExpression>
#include <QWidget>
#include <gtest/gtest.h>

namespace {

const QDir guide(QStringLiteral(QUELVIN_GUIDE));

QString page(const QString &name)
{
    QFile file(guide.filePath(name));
    EXPECT_TRUE(file.open(QFile::ReadOnly)) << name.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// What a heading is called in a link, as the readers of Markdown make it.
QString anchorOf(const QString &heading)
{
    QString anchor = heading.toLower();
    anchor.remove(QRegularExpression(QStringLiteral("[^\\w\\s-]")));
    return anchor.replace(QLatin1Char(' '), QLatin1Char('-'));
}

QStringList anchors(const QString &text)
{
    static const QRegularExpression heading(QStringLiteral("^#+ (.*)$"), QRegularExpression::MultilineOption);
    QStringList found;
    for (auto match = heading.globalMatch(text); match.hasNext();)
        found.append(anchorOf(match.next().captured(1)));
    return found;
}

} // namespace

TEST(Guide, listsEachCommandWithItsMenuAndKeysOfWhichNoneIsThereTwice)
{
    QWidget window;
    const views::CommandSet commands(&window);
    QStringList wanted;
    QStringList allKeys;
    for (const auto &description : views::CommandSet::descriptions()) {
        QStringList keys;
        for (const QKeySequence &sequence : commands.action(description.command)->shortcuts())
            keys.append(sequence.toString(QKeySequence::PortableText));
        wanted.append(QStringLiteral("%1: %2 [%3]")
                          .arg(views::CommandSet::menuTitle(description.menu), views::CommandSet::name(description),
                              keys.join(QStringLiteral(", "))));
        allKeys.append(keys);
    }
    EXPECT_EQ(allKeys.removeDuplicates(), 0) << allKeys.join(QLatin1Char(' ')).toStdString();
    QStringList written;
    QString menu;
    for (const QString &line : page(QStringLiteral("shortcuts.md")).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("## ")))
            menu = line.mid(3);
        const QStringList cells = line.split(QLatin1Char('|'));
        if (cells.size() == 5 && cells[1] != QLatin1String(" Command ") && !cells[1].startsWith(QLatin1Char('-')))
            written.append(QStringLiteral("%1: %2 [%3]").arg(menu, cells[1].trimmed(), cells[2].trimmed()));
    }
    EXPECT_EQ(written.join(QLatin1Char('\n')).toStdString(), wanted.join(QLatin1Char('\n')).toStdString());
}

TEST(Guide, hasNoLinkOrPictureThatLeadsNowhereAndNoPageThatIsNotFound)
{
    static const QRegularExpression link(QStringLiteral("\\]\\(([^)#]*)(?:#([^)]*))?\\)"));
    QStringList reached;
    const QStringList pages = guide.entryList({QStringLiteral("*.md")});
    for (const QString &name : pages) {
        for (auto match = link.globalMatch(page(name)); match.hasNext();) {
            const auto found = match.next();
            const QString target = found.captured(1).isEmpty() ? name : found.captured(1);
            reached.append(target);
            ASSERT_TRUE(guide.exists(target)) << name.toStdString() << ": " << target.toStdString();
            const QString place = found.captured(2);
            EXPECT_TRUE(place.isEmpty() || anchors(page(target)).contains(place))
                << name.toStdString() << ": " << target.toStdString() << '#' << place.toStdString();
        }
    }
    for (const QString &name : pages)
        EXPECT_TRUE(name == QLatin1String("README.md") || reached.contains(name)) << name.toStdString();
    for (const QString &picture : QDir(guide.filePath(QStringLiteral("pictures"))).entryList(QDir::Files))
        EXPECT_TRUE(reached.contains(QStringLiteral("pictures/") + picture)) << picture.toStdString();
}
