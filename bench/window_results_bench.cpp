// Shows 100,000 results lines. window_results_bench MODE prints the seconds and the longest turn in milliseconds.
//   widget    a QTableWidget that scrolls to each line, 100 lines per turn
//   turns     our results window, 100 lines per turn
//   burst     our results window, all lines in one turn
//   memory    our results window; prints the bytes per line beyond its text instead

#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/qt/TWQtFileManager.h"
#include "platform/qt/TWQtRunLoop.h"
#include "ui/windows/TWResultsWindow.h"

#include <QApplication>
#include <QHeaderView>
#include <QTableWidget>
#include <QTimer>

#include <cstdio>
#include <malloc.h>

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int Lines = 100'000;

std::string line(int number)
{
    return "Delete /home/someone/.cache/thumbnails/normal/picture " + std::to_string(number) + ".png ...";
}

// One of the two ways to show lines.
class Shown {
public:
    virtual ~Shown() = default;
    virtual void add(int number) = 0;
    virtual const QTableView& table() const = 0;
};

class Widget final : public Shown {
public:
    Widget()
        : table_(0, 1)
    {
        // Without unnecessary costs, because the scrolling is to be measured.
        table_.horizontalHeader()->hide();
        table_.horizontalHeader()->setStretchLastSection(true);
        table_.verticalHeader()->hide();
        table_.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table_.resize(720, 420);
        table_.show();
    }

    void add(int number) override
    {
        const int row = table_.rowCount();
        table_.insertRow(row);
        auto* item = new QTableWidgetItem(QString::fromStdString(line(number)));
        item->setBackground(QColor(Qt::white));
        table_.setItem(row, 0, item);
        table_.scrollToBottom();
    }

    const QTableView& table() const override { return table_; }

private:
    QTableWidget table_;
};

class Ours final : public Shown {
public:
    Ours()
        : controller_(runLoop_)
        , window_(controller_, { runLoop_, fileSystem_, places_, fileManager_, {} },
              QString::fromStdString(places_.resources + "/icons"), "/")
    {
        window_.show();
    }

    void add(int number) override { controller_.addMessage({ line(number), TWMessageType::Information }); }
    const QTableView& table() const override { return *window_.findChild<QTableView*>(); }

private:
    TWQtRunLoop runLoop_;
    const TWLinuxFileSystem fileSystem_;
    const TWPlaces places_ = TWLinuxPlaces();
    TWQtFileManager fileManager_{ {} };
    TWResultsWindowController controller_;
    TWResultsWindow window_;
};

// Adds lines in each turn until the last one is visible.
void measure(Shown& shown, int perTurn)
{
    QCoreApplication::processEvents();
    const QTableView& table = shown.table();
    double longest = 0;
    int added = 0;
    const auto start = TWRunLoop::Clock::now();
    auto last = start;
    QTimer everyTurn;
    QObject::connect(&everyTurn, &QTimer::timeout, [&] {
        const auto now = TWRunLoop::Clock::now();
        longest = std::max(longest, Milliseconds(now - last).count());
        last = now;
        for (int number = 0; number < perTurn && added < Lines; ++number)
            shown.add(added++);
        if (added == Lines && table.rowAt(table.viewport()->height() - 2) == Lines - 1)
            QCoreApplication::exit();
    });
    everyTurn.start(0);
    QCoreApplication::exec();
    std::printf("%.6f %.3f\n", Milliseconds(TWRunLoop::Clock::now() - start).count() / 1000, longest);
}

std::size_t usedMemory()
{
    const auto memory = mallinfo2();
    return memory.uordblks + memory.hblkhd;
}

void measureMemory(Ours& shown)
{
    QCoreApplication::processEvents();
    const auto before = usedMemory();
    std::size_t text = 0;
    for (int number = 0; number < 2 * Lines; ++number) {
        shown.add(number);
        text += line(number).size();
    }
    while (shown.table().model()->rowCount() < 2 * Lines)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
    std::printf("%.1f\n", static_cast<double>(usedMemory() - before - text) / (2.0 * Lines));
}

}

int main(int count, char** arguments)
{
    const std::string_view mode = count == 2 ? arguments[1] : "";
    const QApplication application(count, arguments);
    if (mode == "widget") {
        Widget widget;
        measure(widget, 100);
        return 0;
    }
    Ours ours;
    if (mode == "turns")
        measure(ours, 100);
    else if (mode == "burst")
        measure(ours, Lines);
    else if (mode == "memory")
        measureMemory(ours);
    else
        return 2;
}
