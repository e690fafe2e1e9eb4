// The minimum cost of a window like the main one: eight rows with a check box, a label and a progress bar.

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>

int main(int count, char** arguments)
{
    const QApplication application(count, arguments);
    QWidget window;
    QGridLayout grid(&window);
    for (int row = 0; row < 8; ++row) {
        grid.addWidget(new QCheckBox(QString("Cleaner %1").arg(row)), row, 0);
        grid.addWidget(new QLabel("a quiet line"), row, 1);
        grid.addWidget(new QProgressBar, row, 2);
    }
    window.show();
    return QApplication::exec();
}
