// Opens the preview of the home's Trash in its window and works in it. For each step prints its name, the milliseconds
// that it took until the rows were there, and those of the longest turn of the event loop.
//
// "first rows" is the time until the first ones are painted, "plan" that until all items are known, and "all rows" the
// time from then until all of them are in the table.

#include "turns.h"
#include "ui/parts/TWSpinner.h"
#include "ui/windows/TWPreviewWindow.h"
#include "window_world.h"

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>

#include <cstdio>

namespace {

using Clock = TWRunLoop::Clock;

class Measurement final {
public:
    Measurement()
    {
        world_.delegate.settings().set(TWKey::TrashCleaner, true);
        window_ = std::make_unique<TWPreviewWindow>(world_.delegate);
        table_ = window_->findChild<QTableView*>("itemsTableView");
        window_->resize(1000, 600);
    }

    void measure()
    {
        open();
        auto& header = *table_->horizontalHeader();
        step("sort by path", [&] { header.setSortIndicator(0, Qt::AscendingOrder); });
        step("sort by size", [&] { header.setSortIndicator(1, Qt::DescendingOrder); });
        step("sort by age", [&] { header.setSortIndicator(2, Qt::AscendingOrder); });
        step("filter", [&] { window_->findChild<QLineEdit*>("filterLineEdit")->setText("12"); });
        step("all again", [&] { window_->findChild<QLineEdit*>("filterLineEdit")->clear(); });
        step("scroll", [&] { scroll(); });
        step("untick all", [&] {
            table_->selectAll();
            window_->findChild<QAction*>("toggleAction")->trigger();
        });
    }

private:
    template <typename Condition>
    void until(Condition condition)
    {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    // The plan is known when sizes are being found.
    void open()
    {
        const auto start = Clock::now();
        auto turns = std::make_unique<Turns>(world_.runLoop);
        window_->show();
        auto* sentence = window_->findChild<QLabel*>("sentenceLabel");
        until([&] { return table_->model()->rowCount() > 0; });
        QCoreApplication::processEvents(); // paints
        print("first rows", Clock::now() - start, turns->longest());
        const int first = table_->model()->rowCount();
        until([&] { return sentence->text().contains(" measured") || !isBusy(); });
        const auto planned = Clock::now();
        print("plan", planned - start, turns->longest());
        turns = std::make_unique<Turns>(world_.runLoop);
        until([&] { return table_->model()->rowCount() > first || !isBusy(); });
        const auto taken = Clock::now() - planned;
        until([&] { return !isBusy(); });
        print("all rows", taken, turns->longest());
    }

    template <typename Action>
    void step(const char* name, Action action)
    {
        const Turns turns(world_.runLoop);
        const auto start = Clock::now();
        action();
        until([&] { return !isBusy(); });
        const auto taken = Clock::now() - start;
        const auto later = start + taken + std::chrono::milliseconds(500); // what is counted after it belongs to it
        until([&] { return Clock::now() > later; });
        print(name, taken, turns.longest());
    }

    void scroll()
    {
        auto* bar = table_->verticalScrollBar();
        for (int part = 0; part <= 200; ++part) {
            bar->setValue(static_cast<int>(std::int64_t(bar->maximum()) * part / 200));
            QCoreApplication::processEvents();
        }
    }

    bool isBusy() const { return window_->findChild<TWSpinner*>()->turning(); }

    static void print(const char* name, Clock::duration taken, double turn)
    {
        std::printf("%s\t%.1f\t%.1f\n", name, std::chrono::duration<double, std::milli>(taken).count(), turn);
    }

    WindowWorld world_{ TWLinuxPlaces() };
    std::unique_ptr<TWPreviewWindow> window_;
    QTableView* table_ = nullptr;
};

}

int main(int count, char** arguments)
{
    const QApplication application(count, arguments);
    Measurement().measure();
}
