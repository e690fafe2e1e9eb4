#include "ui/sheets/TWApplicationsSheet.h"

#include "TWUITestSupport.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDropEvent>
#include <QListView>
#include <QMimeData>
#include <QTableView>

using namespace TWUITest;

namespace {

class TWApplicationsSheetTest : public testing::Test {
protected:
    enum Column { Application, File, Note };

    TWApplicationsSheetTest()
    {
        for (const std::string name : { "Browser", "Editor", "Viewer" }) {
            const auto file = world.root.write("home/" + name + ".desktop", "");
            world.applications.applications.push_back({ name, name, name, name, "/no/such/icon", file, "" });
        }
    }
    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }
    void press(const char* button) { child<QAbstractButton>(sheet, button)->click(); }
    std::string names()
    {
        std::string names;
        for (const auto& record : controller.applicationsArray())
            names += record.name + ' ';
        return names;
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole)
    {
        return table->model()->index(row, column).data(role);
    }
    QString time() { return child<QComboBox>(sheet, "timeoutPopUpButton")->currentText(); }

    Editors world;
    TWApplicationsWindowController& controller = world.editors.get<TWApplicationsWindowController>();
    TWApplicationsSheet sheet{ controller, nullptr };
    QTableView* table = child<QTableView>(sheet, "applicationsTableView");
};

TEST_F(TWApplicationsSheetTest, SeveralApplicationsAreChosenAtOnceDroppedRemovedAndBroughtBack)
{
    open();
    EXPECT_FALSE(sheet.findChild<QAbstractButton*>("restoreDefaultsPushButton"));
    press("addToolButton");
    auto* list = child<QListView>(sheet, "applicationListView");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list->model()->rowCount() == 3; }));
    EXPECT_TRUE(list->window()->windowTitle().startsWith("Select one or more application(s)"));
    list->setCurrentIndex(list->model()->index(1, 0));
    QTest::keyClick(list, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(child<QAbstractButton>(sheet, "chooseButton")->text(), "Add");
    press("chooseButton");
    EXPECT_TRUE(QTest::qWaitFor([&] { return names() == "Editor Viewer "; }));
    QMimeData data;
    for (const auto* file : { "/Viewer.desktop", "/no program", "/Browser.desktop" })
        data.setUrls(data.urls() << QUrl::fromLocalFile(QString::fromStdString(world.places.home + file)));
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table->viewport(), &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table->viewport(), &drop);
    EXPECT_TRUE(QTest::qWaitFor([&] { return names() == "Editor Viewer Viewer Browser "; }));
    EXPECT_EQ(world.alerts.alerts.size(), 1U);
    EXPECT_EQ(table->currentIndex().row(), 3);
    EXPECT_EQ(cell(1, Note), "In the list twice");
    EXPECT_TRUE(cell(1, Application, Qt::ToolTipRole).toString().contains("/Viewer.desktop"));
    table->selectRow(1);
    press("removeToolButton");
    EXPECT_EQ(names(), "Editor Viewer Browser ");
    press("undoBarButton");
    EXPECT_EQ(names(), "Editor Viewer Viewer Browser ");
    EXPECT_TRUE(child<QLabel>(sheet, "unsavedLabel")->isVisible());
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible() || controller.hasUnsavedEdits());
}

TEST_F(TWApplicationsSheetTest, WhatIsGoneIsGreyAndDoesNotKeepTheListFromBeingSaved)
{
    std::filesystem::remove(world.places.home + "/Editor.desktop");
    world.applications.applications.erase(world.applications.applications.begin() + 1);
    controller.insertEntry(0, { "~/Editor.desktop", "Editor" });
    EXPECT_EQ(controller.write(), "");
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note) == "Not installed any more"; }));
    EXPECT_EQ(cell(0, Application, Qt::AccessibleTextRole), "Editor");
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible());
}

TEST_F(TWApplicationsSheetTest, SettingsAreSavedAtOnceAndFollowACommand)
{
    world.settings.set(TWKey::ApplicationsTimeout, 45);
    open();
    auto* force = child<QAbstractButton>(sheet, "forceQuitButton");
    auto* times = child<QComboBox>(sheet, "timeoutPopUpButton");
    EXPECT_EQ(time(), "45 seconds");
    EXPECT_EQ(times->count(), 7);
    QTest::keyClick(times, Qt::Key_Down);
    EXPECT_EQ(time(), "1 minute");
    EXPECT_EQ(controller.settings().timeout, 60);
    world.settings.set(TWKey::ApplicationsTimeout, 5);
    world.settings.set(TWKey::ApplicationsForceQuit, true);
    sheet.refresh();
    EXPECT_TRUE(force->isChecked());
    EXPECT_EQ(time(), "5 seconds");
    EXPECT_EQ(times->count(), 6);
    world.userDefaults.writeProblem = "The settings cannot be saved.";
    force->click();
    EXPECT_FALSE(controller.settings().forceQuit);
    EXPECT_EQ(child<QLabel>(sheet, "messageBarLabel")->text(), "The settings cannot be saved.");
}

}
