#include "ui/sheets/TWVolumesSheet.h"

#include "TWUITestSupport.h"
#include "ui/parts/ImageAndTextCell.h"

#include <QAbstractButton>
#include <QTableView>

using namespace TWUITest;

namespace {

class TWVolumesSheetTest : public testing::Test {
protected:
    enum Column { Active, Name, Path, State };

    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole)
    {
        return table->model()->index(row, column).data(role);
    }
    void press(Qt::Key key)
    {
        table->setFocus();
        QTest::keyClick(table, key);
    }

    Editors world;
    TWVolumesWindowController& controller = world.editors.get<TWVolumesWindowController>();
    TWVolumesSheet sheet{ controller, nullptr };
    QTableView* table = child<QTableView>(sheet, "volumesTableView");
};

TEST_F(TWVolumesSheetTest, TheSelectionStaysWithItsVolumeWhileTheTableFollowsTheMounts)
{
    world.volumes.mount("/media/one");
    world.volumes.mount("/media/two", "/dev/sdc1");
    world.volumes.uses["/media/two"] = { { "player (7)", "editor (8)" }, true };
    world.volumes.space["/media/two"] = 2'000'000;
    open();
    EXPECT_EQ(table->currentIndex(), table->model()->index(0, Active));
    table->selectRow(1);
    press(Qt::Key_Space);
    EXPECT_EQ(cell(1, Active, Qt::AccessibleTextRole), "two is on");
    EXPECT_NE(world.root.read("home/.local/share/Tidewell/Volumes.plist").find("/media/two"), std::string::npos);
    const QString state = "in use by player (7), editor (8), 2.0 MB free, /dev/sdc1";
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(1, State) == state; })) << cell(1, State).toString().toStdString();
    EXPECT_EQ(child<QLabel>(sheet, "noteLabel")->text(), "Warning: " + state);
    world.volumes.mount("/media/three");
    controller.updateVolumesList();
    EXPECT_EQ(table->model()->rowCount(), 3);
    EXPECT_EQ(cell(0, Name), "two");
    EXPECT_EQ(table->currentIndex().row(), 0) << "the checked one comes first";
    world.volumes.unmount("/media/two");
    controller.updateVolumesList();
    EXPECT_EQ(cell(0, State), "No volume there now");
    EXPECT_TRUE(cell(0, Name, ImageAndTextCell::GreyedRole).toBool());
    press(Qt::Key_Return);
    EXPECT_EQ(cell(0, Active, Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_TRUE(sheet.isVisible());
    child<QAbstractButton>(sheet, "okPushButton")->click();
    EXPECT_FALSE(sheet.isVisible());
}

TEST_F(TWVolumesSheetTest, SaysWhatIsWrongAndNothingElse)
{
    const auto message = [&] { return child<QLabel>(sheet, "messageBarLabel")->text(); };
    open();
    EXPECT_EQ(table->accessibleDescription(),
        "No volume is mounted that could be unmounted. Connect one, and it appears here.");
    world.volumes.readable = false;
    controller.updateVolumesList();
    EXPECT_EQ(message(), "The mounted volumes could not be listed.");
    EXPECT_EQ(table->accessibleDescription(), message()) << "nobody knows that none is mounted";
    world.volumes.readable = true;
    world.volumes.mount("/media/stick");
    world.root.write("home/.local/share/Tidewell/Volumes.plist", "damaged");
    world.editors.awakeFromNib(TWLaunchKind::Command);
    EXPECT_TRUE(message().contains("Volumes.plist") && message().contains("\".damaged\"")) << message().toStdString();
    table->selectRow(0);
    press(Qt::Key_Space);
    EXPECT_EQ(message().toStdString(), "");
    EXPECT_FALSE(child<QLabel>(sheet, "unsavedLabel")->isVisible());
}

}
