#pragma once

#include "ui/windows/TWResultsFilter.h"

#include <QWidget>

class QComboBox;
class QLineEdit;
class QPushButton;
class TWResultsWindowController;

// The controls above the results: what to show of them, and the way to the failures.
class TWResultsFilterBar final : public QWidget {
    Q_OBJECT

public:
    // The controller must outlive the bar.
    TWResultsFilterBar(const TWResultsWindowController&, const QString& iconFolder);

    TWResultsFilter::Wanted wanted() const;

    // Shows how many lines and failures there are by now.
    void refresh();

    // Lets everything be shown.
    void clear();

    void focusText();

signals:
    // The user wants to see other lines.
    void changed();

    void nextFailureRequested();

private:
    void createCleaners();
    void listCleaners();
    QString titleOf(int cleaner) const;

    const TWResultsWindowController& controller_;
    QLineEdit* text_;
    QComboBox* kinds_;
    QComboBox* cleaners_; // the data of an item is the cleaner's position
    QPushButton* failures_;
};
