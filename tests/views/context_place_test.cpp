// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/test_application.h"
#include "views/context_place_view.h"

#include "objectstore/undo_manager.h"

#include <QTest>

using location::Coordinate;

namespace {

class ContextPlace : public testing::Test
{
protected:
    ContextPlace()
    {
        home.setUseLocation(true);
        home.setCoordinate({52.5, 13.4});
        application.moc().processPendingChanges();
        view.setContext(&home);
        view.show();
    }
    QLineEdit &field() { return *view.findChild<QLineEdit *>(); }
    void enter(const char *text)
    {
        field().selectAll();
        QTest::keyClicks(&field(), QString::fromUtf8(text));
        QTest::keyClick(&field(), Qt::Key_Return);
        application.moc().processPendingChanges();
    }
    void pressUsePosition()
    {
        view.findChild<QPushButton *>()->click();
        application.moc().processPendingChanges();
    }
    /// What the view says, and whether as a problem.
    std::pair<std::string, bool> said()
    {
        const auto *label = view.findChild<QLabel *>();
        return {label->text().toStdString(), label->objectName() == QLatin1String("problem")};
    }

    support::TestApplication application;
    model::Contexts &home = application.addRecord<model::Contexts>("Home");
    views::ContextPlaceView view{application.delegate()};
};

} // namespace

TEST_F(ContextPlace, takesACoordinateAsOneUndoableStepAndRefusesNonsenseWithASentence)
{
    enter("33° 51' 24\" S, 151° 12' 54\" E");
    EXPECT_NEAR(home.latitude(), -33.856667, 1e-6);
    EXPECT_EQ(field().text(), QStringLiteral("-33.856667, 151.215")) << "shown as it is kept";
    application.moc().undoManager()->undo();
    application.moc().processPendingChanges();
    EXPECT_EQ(home.coordinate(), (Coordinate{52.5, 13.4}));
    EXPECT_EQ(field().text(), QStringLiteral("52.5, 13.4"));
    enter("52.5, 181");
    EXPECT_EQ(said(), std::pair(std::string("The longitude lies between 180° west and 180° east."), true));
    EXPECT_EQ(field().text(), QStringLiteral("52.5, 181"));
    EXPECT_EQ(home.coordinate(), (Coordinate{52.5, 13.4}));
    enter("52.5, 18.1");
    EXPECT_FALSE(said().second);
    EXPECT_EQ(home.longitude(), 18.1);
}

TEST_F(ContextPlace, takesTheUsersPositionOnceItIsKnownAndSaysWhyNotBefore)
{
    pressUsePosition();
    EXPECT_TRUE(said().second);
    EXPECT_EQ(home.coordinate(), (Coordinate{52.5, 13.4}));
    application.settings.set(model::keys::UseLocation, true);
    application.delegate().locationController().applySettings();
    application.location.moveTo({52.509, 13.4});
    EXPECT_EQ(said(), std::pair(std::string("1.0 km from you."), false));
    pressUsePosition();
    EXPECT_EQ(home.coordinate(), (Coordinate{52.509, 13.4}));
    EXPECT_EQ(said(), std::pair(std::string("0 m from you."), false));
}

TEST_F(ContextPlace, anotherContextTakesNothingOfWhatWasTypedForThisOne)
{
    auto &office = application.addRecord<model::Contexts>("Office");
    field().selectAll();
    QTest::keyClicks(&field(), QStringLiteral("48.1, 11.5"));
    view.setContext(&office);
    EXPECT_EQ(home.coordinate(), (Coordinate{48.1, 11.5}));
    EXPECT_EQ(office.coordinate(), Coordinate());
    EXPECT_FALSE(field().isEnabled()) << "it belongs to no place";
}
